// What the user does to the grid: presses, keys, scrolling and the column headers.

#include <algorithm>

#include "widgets/win32/form_messages.h"
#include "widgets/win32/line_grid_window.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

// Runs a handler, if there is one. One that fails ends there; what comes after it still happens.
template <class Handler, class... Arguments>
void Tell(const Handler& handler, Arguments... arguments) noexcept {
  try {
    if (handler) handler(arguments...);
  } catch (...) {
    // No one to report to: the handlers that report do so themselves.
  }
}

// A window's user data would not do: what a header tells its list view reaches the form too, where
// that of a child is its widget.
WindowMap<const LineGridWindow> grids_of_headers;

bool IsPress(UINT message) {
  return message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK || message == WM_RBUTTONDOWN ||
         message == WM_RBUTTONDBLCLK;
}

bool MovesGrid(UINT message) {
  return message == WM_HSCROLL || message == WM_VSCROLL || message == WM_PARENTNOTIFY ||
         message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
}

POINT PointOf(LPARAM lparam) {
  return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
}

}  // namespace

std::optional<LRESULT> LineGridWindow::BeforeGrid(UINT message, WPARAM wparam, LPARAM lparam) {
  const auto hold = HoldForm(Handle());
  if (MovesGrid(message)) {
    Tell(on_before_move);
    return std::nullopt;
  }
  if (IsPress(message)) {
    Press(PointOf(lparam), wparam);
    return 0;
  }
  switch (message) {
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
      Release(PointOf(lparam));
      return 0;
    case WM_MOUSEMOVE:
      // A message box during the press has swallowed the release.
      if (pressed_ && (wparam & (MK_LBUTTON | MK_RBUTTON)) == 0) Release(PointOf(lparam));
      return std::nullopt;
    case WM_CAPTURECHANGED:
      pressed_ = false;
      return std::nullopt;
    case WM_KEYDOWN:
      if (wparam == VK_F2) Tell(on_edit_request);
      if (ListHandlesKey(wparam)) return std::nullopt;
      return 0;
    case WM_CHAR:
      Tell(on_key_press, static_cast<char16_t>(wparam));
      return 0;
    case WM_NOTIFY: {
      const auto& header = *reinterpret_cast<const NMHDR*>(lparam);
      if (header.hwndFrom != Header()) return std::nullopt;
      return BeforeHeaderNotification(reinterpret_cast<const NMHEADERW&>(header));
    }
    default:
      return std::nullopt;
  }
}

std::optional<LRESULT> LineGridWindow::BeforeHeaderNotification(const NMHEADERW& notification) {
  const auto index = static_cast<size_t>(notification.iItem);
  if (notification.iItem < 0 || index >= columns_.size()) return std::nullopt;
  Column& column = columns_[index];
  switch (notification.hdr.code) {
    case HDN_BEGINTRACKW:
    case HDN_BEGINTRACKA:
    case HDN_DIVIDERDBLCLICKW:
    case HDN_DIVIDERDBLCLICKA:
      if (column.hidden) return TRUE;
      return std::nullopt;
    case HDN_ITEMCHANGEDW:
    case HDN_ITEMCHANGEDA:
      if (!resizing_columns_ && notification.pitem && (notification.pitem->mask & HDI_WIDTH) != 0) {
        column.width = scale_.ToTwips(notification.pitem->cxy);
      }
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void LineGridWindow::Press(POINT point, WPARAM keys) {
  const bool ctrl = (keys & MK_CONTROL) != 0;
  const bool shift = (keys & MK_SHIFT) != 0;
  pressed_ = true;
  Tell(on_mouse_down, scale_.ToTwips(point.x), scale_.ToTwips(point.y));
  SetFocus();
  // The system tells the parents only of presses that the mouse itself has made.
  ReflectPress(Handle());
  if (const auto row = RowAt(point)) {
    if (SelectPressed(*row, ctrl, shift)) Tell(on_item_click, *row);
  } else if (!ctrl && !shift) {
    for (int other = 1; other <= RowCount(); ++other) SetSelected(other, false);
  }
  if (pressed_) SetCapture(Handle());
}

void LineGridWindow::Release(POINT point) {
  if (!pressed_) return;
  pressed_ = false;
  if (GetCapture() == Handle()) ReleaseCapture();
  Tell(on_mouse_up, scale_.ToTwips(point.x), scale_.ToTwips(point.y));
}

// Some list views scroll the row that gets the focus wholly into sight. The editor that the press
// has just placed must stay over its cell.
void LineGridWindow::FocusRow(int row) {
  const LONG top = RowRectangle(row).top;
  SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
  const LONG moved = RowRectangle(row).top - top;
  if (moved != 0) Send(LVM_SCROLL, 0, moved);
}

// True when the row is selected afterwards.
bool LineGridWindow::SelectPressed(int row, bool ctrl, bool shift) {
  const auto mark = static_cast<int>(Send(LVM_GETSELECTIONMARK)) + 1;
  const int anchor = shift && mark >= 1 && mark <= RowCount() ? mark : row;
  const int first = std::min(anchor, row);
  const int last = std::max(anchor, row);
  const bool toggles = ctrl && !shift;
  const bool selected = !toggles || !Selected(row);
  for (int other = 1; other <= RowCount(); ++other) {
    const bool in_range = other >= first && other <= last;
    if (in_range) {
      SetSelected(other, selected);
    } else if (!ctrl) {
      SetSelected(other, false);
    }
  }
  FocusRow(row);
  Send(LVM_SETSELECTIONMARK, 0, anchor - 1);
  return selected;
}

// Printable keys would search the list by typing, ctrl with plus would show the hidden columns.
bool LineGridWindow::ListHandlesKey(WPARAM key) const {
  switch (key) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_HOME:
    case VK_END:
      return true;
    case VK_SPACE:
      return GetKeyState(VK_CONTROL) < 0;
    default:
      return false;
  }
}

void LineGridWindow::AimAtCell(int row, int column) {
  Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(row - 1), FALSE);
  RECT client = {};
  GetClientRect(Handle(), &client);
  const int scroll = RowRectangle(row).left;
  const int left = scale_.Pixels(ColumnLeft(column)) + scroll;
  const int right = scale_.Pixels(ColumnLeft(column) + ColumnWidth(column)) + scroll;
  if (left < 0) {
    Send(LVM_SCROLL, static_cast<WPARAM>(left));
  } else if (right > client.right) {
    Send(LVM_SCROLL, static_cast<WPARAM>(right - client.right));
  }
  const POINT middle = MiddleOf(row, column);
  Tell(on_mouse_down, scale_.ToTwips(middle.x), scale_.ToTwips(middle.y));
}

void LineGridWindow::OpenCell(int row, int column) {
  if (!Selected(row)) SelectPressed(row, false, false);
  SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
  Tell(on_item_click, row);
  const POINT middle = MiddleOf(row, column);
  Tell(on_mouse_up, scale_.ToTwips(middle.x), scale_.ToTwips(middle.y));
}

POINT LineGridWindow::MiddleOf(int row, int column) const {
  const RECT place = RowRectangle(row);
  const Twips middle = ColumnLeft(column) + ColumnWidth(column) / 2;
  return {place.left + scale_.Pixels(middle), (place.top + place.bottom) / 2};
}

void LineGridWindow::HookHeader() {
  const HWND header = Header();
  if (!header || header == hooked_header_) return;
  UnhookHeader();
  hooked_header_ = header;
  grids_of_headers.Add(header, this);
  header_procedure_ = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(header, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&HeaderProcedure)));
}

void LineGridWindow::UnhookHeader() {
  if (!hooked_header_) return;
  SetWindowLongPtrW(hooked_header_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(header_procedure_));
  grids_of_headers.Remove(hooked_header_);
  hooked_header_ = nullptr;
}

LRESULT CALLBACK LineGridWindow::HeaderProcedure(HWND header, UINT message, WPARAM wparam,
                                                 LPARAM lparam) {
  const auto hold = HoldForm(header);
  const LineGridWindow* grid = grids_of_headers.Find(header);
  if (!grid) return 0;
  const LineGridWindow& self = *grid;
  // The platform tells the grid of a press on its header only when it comes from the mouse itself.
  if (IsPress(message)) Tell(self.on_before_move);
  const LRESULT result = CallWindowProcW(self.header_procedure_, header, message, wparam, lparam);
  if (message == HDM_LAYOUT && result) {
    // The list view asks its header how much of the grid it takes.
    const auto& layout = *reinterpret_cast<const HDLAYOUT*>(lparam);
    const int higher = self.scale_.Pixels(kGridHeaderHeight) - layout.pwpos->cy;
    layout.pwpos->cy += higher;
    layout.prc->top += higher;
  }
  return result;
}

}  // namespace rdv::win32
