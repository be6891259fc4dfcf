#include "widgets/win32/font.h"

#include <cmath>

namespace rdv::win32 {
namespace {

constexpr double kPointsPerInch = 72;

}  // namespace

Font MakeFont(const FontDescription& description, Scale scale) {
  LOGFONTW font = {};
  font.lfHeight =
      -static_cast<LONG>(std::lround(description.points * scale.DotsPerInch() / kPointsPerInch));
  font.lfWeight = description.weight;
  font.lfItalic = description.italic;
  font.lfCharSet = description.character_set;
  description.face.copy(font.lfFaceName, LF_FACESIZE - 1);
  return Font(CreateFontIndirectW(&font));
}

Font MakeSystemFont(Scale scale) {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) {
    return MakeFont({.face = L"MS Shell Dlg", .points = 8}, scale);
  }
  // The metrics are in pixels of the system's resolution, which need not be the window's.
  const HDC screen = GetDC(nullptr);
  const int system_resolution = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  LOGFONTW& font = metrics.lfMessageFont;
  // A screen that nothing is painted on reports no resolution; its metrics are the window's then.
  if (system_resolution > 0) {
    font.lfHeight = MulDiv(font.lfHeight, scale.DotsPerInch(), system_resolution);
  }
  return Font(CreateFontIndirectW(&font));
}

SIZE TextExtent(HFONT font, std::wstring_view text) {
  SIZE extent = {};
  const HDC screen = GetDC(nullptr);
  const HGDIOBJ before = SelectObject(screen, font);
  GetTextExtentPoint32W(screen, text.data(), static_cast<int>(text.size()), &extent);
  SelectObject(screen, before);
  ReleaseDC(nullptr, screen);
  return extent;
}

}  // namespace rdv::win32
