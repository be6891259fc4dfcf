// A colour that a container wishes for: a fixed one, or whatever an element of the system's colour
// scheme has at the time.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

class WishedColor {
 public:
  static WishedColor Fixed(COLORREF color) { return {kNone, color}; }
  // COLOR_BTNFACE and the like.
  static WishedColor OfSystem(int element) { return {element, 0}; }

  COLORREF Now() const { return element_ == kNone ? color_ : GetSysColor(element_); }
  // The system's own, which follows the scheme and is not to be deleted; null for a fixed colour.
  HBRUSH SystemBrush() const { return element_ == kNone ? nullptr : GetSysColorBrush(element_); }

  bool operator==(const WishedColor&) const = default;

 private:
  static constexpr int kNone = -1;
  WishedColor(int element, COLORREF color) : element_(element), color_(color) {}

  int element_;
  COLORREF color_;
};

}  // namespace rdv::win32
