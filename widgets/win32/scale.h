// Twips to pixels and back at the resolution of a window's screen.
#pragma once

#include "widgets/layout.h"
#include "widgets/win32/platform.h"

namespace rdv::win32 {

inline constexpr double kTwipsPerInch = 1440;

class Scale {
 public:
  explicit Scale(int dots_per_inch) : dots_per_inch_(dots_per_inch) {}
  static Scale Of(HWND window);

  int DotsPerInch() const { return dots_per_inch_; }
  int Pixels(Twips length) const;
  Twips ToTwips(int pixels) const { return pixels * kTwipsPerInch / dots_per_inch_; }

  // Rounds the edges, not the sizes: rectangles that touch in twips touch on the screen.
  RECT Pixels(const Rectangle& rectangle) const;

  bool operator==(const Scale&) const = default;

 private:
  int dots_per_inch_;
};

}  // namespace rdv::win32
