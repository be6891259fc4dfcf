#include "runtime/system_error.h"

#ifdef _WIN32
#include <windows.h>

#include <iterator>
#else
#include <system_error>
#endif

namespace rdv {
namespace {

// Texts of the system end in a stop and a line break, or in neither.
TextView WithoutEnd(TextView text) {
  const size_t last = text.find_last_not_of(u" .\r\n");
  return last == TextView::npos ? TextView() : text.substr(0, last + 1);
}

#ifdef _WIN32

Text TextOf(uint32_t error) {
  wchar_t text[512] = {};
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  return Text(text, text + length);
}

#else

Text TextOf(uint32_t error) {
  return FromUtf8(std::generic_category().message(static_cast<int>(error)));
}

#endif

}  // namespace

Text SystemErrorText(uint32_t error) {
  const Text text = TextOf(error);
  const TextView trimmed = WithoutEnd(text);
  return trimmed.empty() ? u"error " + Decimal(error) : Text(trimmed);
}

}  // namespace rdv
