#include "tools/play/win32/grid_user.h"

// The control library's header needs the platform's before it.
#include <commctrl.h>

#include <algorithm>

#include "rules/grid_columns.h"
#include "tools/play/win32/window_text.h"

namespace rdv::play {
namespace {

constexpr ButtonMessages kRightButton = {WM_RBUTTONDOWN, WM_RBUTTONUP, MK_RBUTTON, 0};
constexpr ButtonMessages kMiddleButton = {WM_MBUTTONDOWN, WM_MBUTTONUP, MK_MBUTTON, 0};
constexpr ButtonMessages kFurtherButton = {WM_XBUTTONDOWN, WM_XBUTTONUP, MK_XBUTTON1, XBUTTON1};

const ButtonMessages& MessagesOf(MouseButton button) {
  switch (button) {
    case MouseButton::Right:
      return kRightButton;
    case MouseButton::Middle:
      return kMiddleButton;
    case MouseButton::Further:
      return kFurtherButton;
    case MouseButton::Left:
      break;
  }
  return kLeftButton;
}

}  // namespace

GridUser::GridUser(const ControlWindows& windows)
    : windows_(windows),
      grid_(windows.Grid()),
      header_(reinterpret_cast<HWND>(SendMessageW(grid_, LVM_GETHEADER, 0, 0))) {}

Refusal GridUser::ClickCell(int row, int column, MousePress press) {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  if (row < 1 || row > RowCount()) return refusal::kNoSuchRow;
  const RECT place = RowPlace(row);
  POINT middle = {place.left, (place.top + place.bottom) / 2};
  for (int before = 1; before < column; ++before) middle.x += ColumnWidth(before);
  middle.x += ColumnWidth(column) / 2;
  if (!InSight(middle)) return refusal::kOutsideGrid;
  Press(middle, press);
  return std::nullopt;
}

Refusal GridUser::ClickAt(Twips x, Twips y, MousePress press) {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  const Rectangle place = windows_.PlaceInFrame(grid_);
  if (x < 0 || x >= place.width || y < 0 || y >= place.height) return refusal::kOutsideGrid;
  Press({ToPixels(x), ToPixels(y)}, press);
  return std::nullopt;
}

Refusal GridUser::PressKey(char16_t key) {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  SetFocus(grid_);
  Send(WM_CHAR, key, 1);
  return std::nullopt;
}

Refusal GridUser::PressGridKey(GridKey key) {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  SetFocus(grid_);
  switch (key) {
    case GridKey::Edit:
      Send(WM_KEYDOWN, VK_F2, 1);
      break;
    case GridKey::Up:
      Send(WM_KEYDOWN, VK_UP, 1);
      break;
    case GridKey::Down:
      Send(WM_KEYDOWN, VK_DOWN, 1);
      break;
  }
  return std::nullopt;
}

Refusal GridUser::ClickHeader(int column) {
  if (const Refusal refused = WhyNotThatColumn(column)) return refused;
  const RECT place = HeaderItemPlace(column);
  Click(header_, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
  return std::nullopt;
}

Refusal GridUser::ResizeColumn(int column, Twips width) {
  if (const Refusal refused = WhyNotThatColumn(column)) return refused;
  const RECT place = HeaderItemPlace(column);
  const int pixels = std::max(ToPixels(width), 0);
  if (CanBeDragged(place)) {
    DragDivider(place, pixels);
  } else {
    // The divider is out of reach of the mouse, or is taken for that of another column. What is
    // left is what a press on the header and the end of the drag tell the grid.
    Send(WM_PARENTNOTIFY, WM_LBUTTONDOWN, 0);
    HDITEMW item = {};
    item.mask = HDI_WIDTH;
    item.cxy = pixels;
    SendMessageW(header_, HDM_SETITEMW, static_cast<WPARAM>(column - 1),
                 reinterpret_cast<LPARAM>(&item));
  }
  return std::nullopt;
}

bool GridUser::CanBeDragged(const RECT& column) const {
  constexpr LONG kReachOfTwoDividers = 20;
  RECT grid = {};
  GetClientRect(grid_, &grid);
  POINT divider = {column.right - 1, 0};
  MapWindowPoints(header_, grid_, &divider, 1);
  return column.right - column.left > kReachOfTwoDividers && divider.x >= 0 &&
         divider.x < grid.right;
}

void GridUser::DragDivider(const RECT& column, int width) {
  const int y = (column.top + column.bottom) / 2;
  const int from = column.right - 1;
  const int to = from + width - (column.right - column.left);
  SendMessageW(header_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(from, y));
  SendMessageW(header_, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(to, y));
  SendMessageW(header_, WM_LBUTTONUP, 0, MAKELPARAM(to, y));
}

std::vector<RowSeen> GridUser::Rows() const {
  std::vector<RowSeen> rows;
  for (int row = 1; row <= RowCount(); ++row) {
    RowSeen& seen = rows.emplace_back();
    seen.selected =
        Send(LVM_GETITEMSTATE, static_cast<WPARAM>(row - 1), LVIS_SELECTED) == LVIS_SELECTED;
    for (int column = 1; column <= ColumnCount(); ++column) {
      seen.cells.push_back(Cell(row, column));
    }
  }
  return rows;
}

GeometrySeen GridUser::Geometry() const {
  GeometrySeen seen;
  seen.grid = windows_.PlaceInFrame(grid_);
  for (int row = 1; row <= RowCount(); ++row) {
    const RECT place = RowPlace(row);
    seen.rows.push_back(
        {ToTwips(place.left), ToTwips(place.top), ToTwips(place.bottom - place.top)});
  }
  int left = 0;
  for (int column = 1; column <= ColumnCount(); ++column) {
    seen.columns.push_back({ToTwips(left), ToTwips(ColumnWidth(column))});
    left += ColumnWidth(column);
  }
  return seen;
}

int GridUser::RowCount() const {
  return static_cast<int>(Send(LVM_GETITEMCOUNT));
}

int GridUser::ColumnCount() const {
  return static_cast<int>(SendMessageW(header_, HDM_GETITEMCOUNT, 0, 0));
}

int GridUser::ColumnWidth(int column) const {
  return static_cast<int>(Send(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column - 1)));
}

RECT GridUser::RowPlace(int row) const {
  RECT place = {};
  place.left = LVIR_BOUNDS;
  Send(LVM_GETITEMRECT, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&place));
  return place;
}

RECT GridUser::HeaderItemPlace(int column) const {
  RECT place = {};
  SendMessageW(header_, HDM_GETITEMRECT, static_cast<WPARAM>(column - 1),
               reinterpret_cast<LPARAM>(&place));
  return place;
}

int GridUser::HeaderHeight() const {
  RECT place = {};
  GetWindowRect(header_, &place);
  return place.bottom - place.top;
}

bool GridUser::InSight(POINT point) const {
  const Rectangle place = windows_.PlaceInFrame(grid_);
  return point.x >= 0 && point.x < ToPixels(place.width) && point.y >= HeaderHeight() &&
         point.y < ToPixels(place.height);
}

Text GridUser::Cell(int row, int column) const {
  for (size_t capacity = 512;; capacity *= 2) {
    Text text(capacity, u'\0');
    LVITEMW item = {};
    item.iSubItem = column - 1;
    item.pszText = reinterpret_cast<wchar_t*>(text.data());
    item.cchTextMax = static_cast<int>(capacity);
    const auto length = static_cast<size_t>(
        Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&item)));
    if (length + 1 < capacity) {
      text.resize(length);
      return text;
    }
  }
}

Refusal GridUser::WhyNotThatColumn(int column) const {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  if (column > ColumnCount()) return refusal::kNoSuchColumn;
  if (column < column::kLine) return refusal::kHidden;
  return std::nullopt;
}

// The header is a window of its own on top of the grid, and scrolls along with it.
void GridUser::Press(POINT point, MousePress press) {
  const WPARAM keys = (press.ctrl ? MK_CONTROL : 0u) | (press.shift ? MK_SHIFT : 0u);
  const ButtonMessages& button = MessagesOf(press.button);
  if (point.y >= HeaderHeight()) return Click(grid_, point, keys, button);
  MapWindowPoints(grid_, header_, &point, 1);
  Click(header_, point, keys, button);
}

// A message of the scroll bar that moves nothing, then the move itself by the pixel.
Refusal GridUser::Scroll(UINT message, int right, int down) {
  if (const Refusal refused = windows_.WhyOutOfReach(grid_)) return refused;
  Send(message, SB_ENDSCROLL);
  Send(LVM_SCROLL, static_cast<WPARAM>(right), down);
  return std::nullopt;
}

}  // namespace rdv::play
