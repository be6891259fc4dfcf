// Where the widgets of the form lie at a given size of the control. All in twips.
#pragma once

#include "widgets/widget.h"

namespace rdv {

struct Rectangle {
  Twips left = 0;
  Twips top = 0;
  Twips width = 0;
  Twips height = 0;
};

struct Size {
  Twips width = 0;
  Twips height = 0;
};

// What the grid shows without scrolling at the design size.
struct GridContent {
  Twips width = 0;  // of all columns
  int rows = 0;
};

Size DesignSize(const GridContent& content);

// What the texts of the form need in its font. Nothing is made smaller than the design has it.
struct TextSizes {
  Twips line = 0;      // the height of a line
  Twips captions = 0;  // the width of the longest caption of the three buttons below
  Twips restore = 0;   // that of cmdShowDefaults

  Twips EditorHeight() const;
  Twips GridRowHeight() const;
  Twips GridHeaderHeight() const;

  bool operator==(const TextSizes&) const = default;
};

// Frames and grid grow with the control; the buttons keep their size and stay at the right edge
// below the frames. In a lower control than that of the design size the grid shows fewer rows and
// scrolls; less than three rows, or a part of its columns, it never has: then the layout is cut
// off. Editors are placed over cells by the control; their height is that of the font. The grid's
// rectangle and the editors share one coordinate system, that of fraConfiguration's content; the
// widgets of fraDefault are likewise relative to it.
struct FormLayout {
  Rectangle fraConfiguration;
  Rectangle grid;  // within fraConfiguration
  Rectangle fraDefault;
  Rectangle cmbRDVType;       // within fraDefault
  Rectangle cmdShowDefaults;  // within fraDefault
  Rectangle cmdOK;
  Rectangle cmdCancel;
  Rectangle cmdApply;
};

FormLayout LayOut(Size size, const GridContent& content, const TextSizes& texts = {});

// As the design has them; in a larger font they grow (TextSizes).
inline constexpr Twips kEditorHeight = 315;
inline constexpr Twips kGridHeaderHeight = 360;
inline constexpr Twips kGridRowHeight = 375;
// How far below the top of its row an editor is placed.
inline constexpr Twips kEditorTopOffset = 50;
// An open editor hides nothing of the row below.
static_assert(kEditorTopOffset + kEditorHeight <= kGridRowHeight);
inline constexpr Twips kTwipsPerPixel = 15;  // at 96 dots per inch

}  // namespace rdv
