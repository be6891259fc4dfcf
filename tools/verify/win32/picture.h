// Pictures of what is on the screen.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace rdv::verify {

struct Taken {
  std::string png;  // the file's bytes
  int colours = 0;  // how many there are, counted up to 256
};

// The window as it is seen on the screen, in the screen's own resolution. Nothing when no picture
// can be taken.
std::optional<Taken> TakePicture(HWND window);

}  // namespace rdv::verify
