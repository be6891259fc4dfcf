#include "data/ansi_text.h"

#ifdef _WIN32

#include <windows.h>

namespace rdv {

Text FromAnsi(std::string_view bytes) {
  const auto size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
  Text text(static_cast<size_t>(length), u'\0');
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()),
                      length);
  return text;
}

std::string ToAnsi(TextView text) {
  const auto* units = reinterpret_cast<const wchar_t*>(text.data());
  const auto size = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_ACP, 0, units, size, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, 0, units, size, bytes.data(), length, nullptr, nullptr);
  return bytes;
}

}  // namespace rdv

#endif
