// The console of Windows. It is given UTF-16, which it shows as it is; what is written to it in
// bytes it would take for text in its code page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rdv::tools {

// How many bytes of UTF-8 are whole characters: all but a last one whose end is still to come.
size_t WholeCharacters(std::string_view text);

#ifdef _WIN32

// One of the places that a process writes to. One thread.
class Console {
 public:
  // `handle` is one of the system's, as GetStdHandle gives it; not owned.
  explicit Console(void* handle);

  // Whether it is a console at all: no file, no pipe, no device.
  bool IsThere() const { return is_there_; }
  // UTF-8, cut where it may be. False when the console takes no more; GetLastError says why.
  bool Write(std::string_view text);

 private:
  void* const handle_;
  const bool is_there_;
  std::string unfinished_;  // the beginning of a character
};

#endif

}  // namespace rdv::tools
