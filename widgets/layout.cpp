#include "widgets/layout.h"

#include <algorithm>

namespace rdv {
namespace {

// Of so many rows, with the header and a horizontal scroll bar.
constexpr Twips GridHeight(int rows) {
  return kGridHeaderHeight + rows * kGridRowHeight + 285;
}

constexpr Twips kMargin = 120;
constexpr Twips kFrameTop = 240;  // room for a frame's caption
// Beside the columns.
constexpr Twips kVerticalScrollBar = 320;
constexpr int kLeastRows = 3;
constexpr Twips kButtonWidth = 1215;
constexpr Twips kButtonHeight = 375;
constexpr Twips kDefaultsFrameHeight = 735;
constexpr Twips kUnitTypeWidth = 3000;  // that of its dropped-down list
constexpr Twips kUnitTypeHeight = 315;
constexpr Twips kRestoreWidth = 1575;

constexpr Twips HeightAround(Twips grid) {
  return grid + kFrameTop + kDefaultsFrameHeight + kButtonHeight + 5 * kMargin;
}

}  // namespace

Size DesignSize(const GridContent& content) {
  return {content.width + kVerticalScrollBar + 4 * kMargin, HeightAround(GridHeight(content.rows))};
}

FormLayout LayOut(Size size, const GridContent& content) {
  const Twips width = std::max(size.width, DesignSize(content).width);
  const Twips height = std::max(size.height, HeightAround(GridHeight(kLeastRows)));

  FormLayout layout;
  const Twips button_top = height - kMargin - kButtonHeight;
  const auto button = [&](int from_right) {
    return Rectangle{width - from_right * (kButtonWidth + kMargin), button_top, kButtonWidth,
                     kButtonHeight};
  };
  layout.cmdOK = button(3);
  layout.cmdCancel = button(2);
  layout.cmdApply = button(1);

  const Twips defaults_top = button_top - kMargin - kDefaultsFrameHeight;
  layout.fraDefault = {kMargin, defaults_top, width - 2 * kMargin, kDefaultsFrameHeight};
  layout.cmbRDVType = {kMargin, kFrameTop + 45, kUnitTypeWidth, kUnitTypeHeight};
  layout.cmdShowDefaults = {2 * kMargin + kUnitTypeWidth, kFrameTop + 15, kRestoreWidth,
                            kButtonHeight};

  layout.fraConfiguration = {kMargin, kMargin, width - 2 * kMargin, defaults_top - 2 * kMargin};
  layout.grid = {kMargin, kFrameTop, layout.fraConfiguration.width - 2 * kMargin,
                 layout.fraConfiguration.height - kFrameTop - kMargin};
  return layout;
}

}  // namespace rdv
