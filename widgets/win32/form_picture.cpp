#include "widgets/win32/form_picture.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "widgets/layout.h"
#include "widgets/win32/wide.h"

namespace rdv::win32 {
namespace {

constexpr double kTwipsPerHimetric = 1440.0 / 2540.0;
constexpr double kTwipsPerPoint = 20;
constexpr double kDefaultPoints = 8;
constexpr Twips kCaptionIndent = 120;

COLORREF Now(const std::optional<WishedColor>& wished, int system_element) {
  return wished ? wished->Now() : GetSysColor(system_element);
}

const wchar_t* Caption(std::string_view widget) {
  return WideLiteral(EntryOf(widget).text);
}

class Picture {
 public:
  Picture(HDC context, const RECT& area, Size size, const Appearance& appearance)
      : context_(context),
        area_(area),
        horizontal_((area.right - area.left) / size.width),
        vertical_((area.bottom - area.top) / size.height),
        text_color_(Now(appearance.text_color, COLOR_BTNTEXT)) {
    saved_ = SaveDC(context_);
    IntersectClipRect(context_, area.left, area.top, area.right, area.bottom);
    FontDescription font = appearance.font.value_or(
        FontDescription{.face = L"MS Shell Dlg", .points = kDefaultPoints});
    // A resolution at which a point is as high as it is in this picture.
    font.points *= kTwipsPerPoint * std::abs(vertical_);
    font_ = MakeFont(font, Scale(72));
    SelectObject(context_, font_.get());
    SetBkMode(context_, TRANSPARENT);
  }
  ~Picture() { RestoreDC(context_, saved_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  TextSizes Texts() const {
    const auto width = [this](std::wstring_view text) {
      return Extent(text).cx / std::abs(horizontal_);
    };
    return {.line = Extent(L"X").cy / std::abs(vertical_),
            .captions = std::max(
                {width(Caption("cmdOK")), width(Caption("cmdCancel")), width(Caption("cmdApply"))}),
            .restore = width(Caption("cmdShowDefaults"))};
  }

  void Fill(const Rectangle& place, COLORREF color) {
    const RECT pixels = Pixels(place);
    const HBRUSH brush = CreateSolidBrush(color);
    FillRect(context_, &pixels, brush);
    DeleteObject(brush);
  }

  void Outline(const Rectangle& place) {
    const RECT pixels = Pixels(place);
    SelectObject(context_, GetStockObject(DC_PEN));
    SelectObject(context_, GetStockObject(NULL_BRUSH));
    SetDCPenColor(context_, GetSysColor(COLOR_3DSHADOW));
    ::Rectangle(context_, pixels.left, pixels.top, pixels.right, pixels.bottom);
  }

  void Write(const Rectangle& place, std::wstring_view text, UINT format) {
    RECT pixels = Pixels(place);
    SetTextColor(context_, text_color_);
    DrawTextW(context_, text.data(), static_cast<int>(text.size()), &pixels,
              format | DT_SINGLELINE | DT_VCENTER);
  }

  void Frame(const Rectangle& place, const wchar_t* caption, COLORREF background) {
    const std::wstring_view text = caption;
    const SIZE extent = Extent(text);
    const Twips half = std::max(kCaptionIndent, extent.cy / std::abs(vertical_) / 2);
    Outline({place.left, place.top + half, place.width, place.height - half});
    const Twips width = extent.cx / std::abs(horizontal_);
    const Rectangle label = {place.left + kCaptionIndent, place.top, width, 2 * half};
    Fill(label, background);
    Write(label, text, DT_LEFT | DT_NOPREFIX);
  }

  void Button(const Rectangle& place, const wchar_t* caption) {
    Fill(place, GetSysColor(COLOR_BTNFACE));
    Outline(place);
    Write(place, caption, DT_CENTER);
  }

 private:
  SIZE Extent(std::wstring_view text) const {
    SIZE extent = {};
    GetTextExtentPoint32W(context_, text.data(), static_cast<int>(text.size()), &extent);
    return extent;
  }

  RECT Pixels(const Rectangle& place) const {
    const auto x = [&](Twips at) { return area_.left + std::lround(at * horizontal_); };
    const auto y = [&](Twips at) { return area_.top + std::lround(at * vertical_); };
    return {x(place.left), y(place.top), x(place.left + place.width), y(place.top + place.height)};
  }

  const HDC context_;
  const RECT area_;
  const double horizontal_;  // pixels of a twip
  const double vertical_;
  const COLORREF text_color_;
  int saved_ = 0;
  Font font_;
};

Rectangle Inside(const Rectangle& outer, const Rectangle& inner) {
  return {outer.left + inner.left, outer.top + inner.top, inner.width, inner.height};
}

}  // namespace

void DrawForm(HDC context, const RECT& area, SIZEL extent, const Appearance& appearance,
              const GridContent& content) {
  const Size size = {std::max(1.0, static_cast<double>(extent.cx) * kTwipsPerHimetric),
                     std::max(1.0, static_cast<double>(extent.cy) * kTwipsPerHimetric)};
  const COLORREF background = Now(appearance.background, COLOR_BTNFACE);
  Picture picture(context, area, size, appearance);
  const TextSizes texts = picture.Texts();
  const FormLayout layout = LayOut(size, content, texts);
  picture.Fill({0, 0, size.width, size.height}, background);

  picture.Frame(layout.fraConfiguration, Caption("fraConfiguration"), background);
  const Rectangle grid = Inside(layout.fraConfiguration, layout.grid);
  picture.Fill(grid, GetSysColor(COLOR_WINDOW));
  picture.Fill({grid.left, grid.top, grid.width, texts.GridHeaderHeight()},
               GetSysColor(COLOR_BTNFACE));
  picture.Outline(grid);

  picture.Frame(layout.fraDefault, Caption("fraDefault"), background);
  const Rectangle unit_type = Inside(layout.fraDefault, layout.cmbRDVType);
  picture.Fill(unit_type, GetSysColor(COLOR_WINDOW));
  picture.Outline(unit_type);
  picture.Button(Inside(layout.fraDefault, layout.cmdShowDefaults), Caption("cmdShowDefaults"));

  picture.Button(layout.cmdOK, Caption("cmdOK"));
  picture.Button(layout.cmdCancel, Caption("cmdCancel"));
  picture.Button(layout.cmdApply, Caption("cmdApply"));
}

}  // namespace rdv::win32
