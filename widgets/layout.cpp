#include "widgets/layout.h"

#include <algorithm>

namespace rdv {
namespace {

constexpr Twips kMargin = 120;
constexpr Twips kFrameTop = 240;  // room for a frame's caption
// Beside the columns.
constexpr Twips kVerticalScrollBar = 320;
constexpr Twips kScrollBar = 285;
constexpr int kLeastRows = 3;
constexpr Twips kButtonWidth = 1215;
constexpr Twips kButtonHeight = 375;
constexpr Twips kDefaultsFrameHeight = 735;
constexpr Twips kUnitTypeWidth = 3000;  // that of its dropped-down list
constexpr Twips kRestoreWidth = 1575;
// What lies between a text and the edges of its widget, both sides together.
constexpr Twips kAroundEditorText = 90;
constexpr Twips kAroundHeaderText = 120;
constexpr Twips kAroundButtonText = 150;
constexpr Twips kBesideButtonText = 240;

// The heights and widths of one font.
struct Measures {
  explicit Measures(const TextSizes& texts)
      : frame_top(std::max(kFrameTop, texts.line)),
        button_width(std::max(kButtonWidth, texts.captions + kBesideButtonText)),
        button_height(std::max(kButtonHeight, texts.line + kAroundButtonText)),
        restore_width(std::max(kRestoreWidth, texts.restore + kBesideButtonText)),
        editor_height(texts.EditorHeight()),
        defaults_height(kDefaultsFrameHeight + (frame_top - kFrameTop) +
                        std::max(button_height - kButtonHeight, editor_height - kEditorHeight)),
        header_height(texts.GridHeaderHeight()),
        row_height(texts.GridRowHeight()) {}

  // Of so many rows, with the header and a horizontal scroll bar.
  Twips GridHeight(int rows) const { return header_height + rows * row_height + kScrollBar; }

  Twips HeightAround(Twips grid) const {
    return grid + frame_top + defaults_height + button_height + 5 * kMargin;
  }

  Twips frame_top;
  Twips button_width;
  Twips button_height;
  Twips restore_width;
  Twips editor_height;
  Twips defaults_height;
  Twips header_height;
  Twips row_height;
};

}  // namespace

Twips TextSizes::EditorHeight() const {
  return std::max(kEditorHeight, line + kAroundEditorText);
}

Twips TextSizes::GridRowHeight() const {
  return kGridRowHeight + EditorHeight() - kEditorHeight;
}

Twips TextSizes::GridHeaderHeight() const {
  return std::max(kGridHeaderHeight, line + kAroundHeaderText);
}

Size DesignSize(const GridContent& content) {
  const Measures measures({});
  return {content.width + kVerticalScrollBar + 4 * kMargin,
          measures.HeightAround(measures.GridHeight(content.rows))};
}

FormLayout LayOut(Size size, const GridContent& content, const TextSizes& texts) {
  const Measures measures(texts);
  const Twips width = std::max(size.width, DesignSize(content).width);
  const Twips height =
      std::max(size.height, measures.HeightAround(measures.GridHeight(kLeastRows)));

  FormLayout layout;
  const Twips button_top = height - kMargin - measures.button_height;
  const auto button = [&](int from_right) {
    return Rectangle{width - from_right * (measures.button_width + kMargin), button_top,
                     measures.button_width, measures.button_height};
  };
  layout.cmdOK = button(3);
  layout.cmdCancel = button(2);
  layout.cmdApply = button(1);

  const Twips defaults_top = button_top - kMargin - measures.defaults_height;
  layout.fraDefault = {kMargin, defaults_top, width - 2 * kMargin, measures.defaults_height};
  // A list and a button beside it, on one line.
  const Twips list_top = measures.frame_top + 45;
  const Twips restore_top = list_top + (measures.editor_height - measures.button_height) / 2;
  layout.cmbRDVType = {kMargin, list_top, kUnitTypeWidth, measures.editor_height};
  layout.cmdShowDefaults = {2 * kMargin + kUnitTypeWidth, restore_top, measures.restore_width,
                            measures.button_height};

  layout.fraConfiguration = {kMargin, kMargin, width - 2 * kMargin, defaults_top - 2 * kMargin};
  layout.grid = {kMargin, measures.frame_top, layout.fraConfiguration.width - 2 * kMargin,
                 layout.fraConfiguration.height - measures.frame_top - kMargin};
  return layout;
}

}  // namespace rdv
