#include "widgets/win32/scale.h"

#include <cmath>

namespace rdv::win32 {
namespace {

// A screen that nothing is painted on reports none.
constexpr int kUsualDotsPerInch = 96;

// Asking the window is possible from Windows 10 on; before, all have the resolution of the screen.
int DotsPerInchOf(HWND window) {
  using Function = UINT(WINAPI*)(HWND);
  static const auto get_dpi_for_window = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  if (get_dpi_for_window) {
    if (const UINT dots = get_dpi_for_window(window)) return static_cast<int>(dots);
  }
  const HDC screen = GetDC(nullptr);
  const int dots = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return dots > 0 ? dots : kUsualDotsPerInch;
}

}  // namespace

Scale Scale::Of(HWND window) {
  return Scale(DotsPerInchOf(window));
}

int Scale::Pixels(Twips length) const {
  return static_cast<int>(std::lround(length * dots_per_inch_ / kTwipsPerInch));
}

RECT Scale::Pixels(const Rectangle& rectangle) const {
  return {Pixels(rectangle.left), Pixels(rectangle.top), Pixels(rectangle.left + rectangle.width),
          Pixels(rectangle.top + rectangle.height)};
}

}  // namespace rdv::win32
