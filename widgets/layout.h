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

// Frames and grid grow with the control; the buttons keep their size and stay at the right edge
// below the frames. In a lower control than that of the design size the grid shows fewer rows and
// scrolls; less than three rows, or a part of its columns, it never has: then the layout is cut
// off. Editors are placed over cells by the control; only their height is fixed. The grid's
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

FormLayout LayOut(Size size, const GridContent& content);

inline constexpr Twips kEditorHeight = 315;
// How far below the top of its row an editor is placed.
inline constexpr Twips kEditorTopOffset = 50;
inline constexpr Twips kGridHeaderHeight = 360;
// An open editor hides nothing of the row below.
inline constexpr Twips kGridRowHeight = 375;
static_assert(kEditorTopOffset + kEditorHeight <= kGridRowHeight);
inline constexpr Twips kTwipsPerPixel = 15;  // at 96 dots per inch

}  // namespace rdv
