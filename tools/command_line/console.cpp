#include "tools/command_line/console.h"

#include <algorithm>

#ifdef _WIN32
#include <windows.h>

#include "runtime/text.h"
#endif

namespace rdv::tools {

size_t WholeCharacters(std::string_view text) {
  constexpr size_t kLongest = 4;
  const auto is_continuation = [](char unit) {
    return (static_cast<unsigned char>(unit) & 0xC0) == 0x80;
  };
  for (size_t back = 1; back <= std::min(kLongest, text.size()); ++back) {
    const char first = text[text.size() - back];
    if (is_continuation(first)) continue;
    const auto lead = static_cast<unsigned char>(first);
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return length > back ? text.size() - back : text.size();
  }
  return text.size();
}

#ifdef _WIN32

namespace {

bool IsConsole(void* handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != 0;
}

}  // namespace

Console::Console(void* handle) : handle_(handle), is_there_(IsConsole(handle)) {}

bool Console::Write(std::string_view text) {
  // Larger pieces are refused by older systems.
  constexpr size_t kPiece = 8192;
  unfinished_ += text;
  const size_t whole = WholeCharacters(unfinished_);
  const Text units = FromUtf8(std::string_view(unfinished_).substr(0, whole));
  unfinished_.erase(0, whole);
  for (size_t at = 0; at < units.size();) {
    const auto size = static_cast<DWORD>(std::min(kPiece, units.size() - at));
    DWORD taken = 0;
    if (!WriteConsoleW(handle_, units.data() + at, size, &taken, nullptr)) return false;
    at += taken;
  }
  return true;
}

#endif

}  // namespace rdv::tools
