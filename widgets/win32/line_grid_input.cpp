// What the user does to the grid: presses, keys, scrolling and the column headers.

#include <algorithm>
#include <array>
#include <bit>

#include "widgets/win32/form_messages.h"
#include "widgets/win32/line_grid_window.h"
#include "widgets/win32/platform.h"

namespace rdv::win32 {
namespace {

struct MouseButton {
  UINT down;
  UINT again;  // the second press of a double click
  UINT up;
  WPARAM held;  // in what mouse messages tell of the buttons
  int key;
};

constexpr std::array<MouseButton, 5> kButtons = {{
    {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_LBUTTONUP, MK_LBUTTON, VK_LBUTTON},
    {WM_RBUTTONDOWN, WM_RBUTTONDBLCLK, WM_RBUTTONUP, MK_RBUTTON, VK_RBUTTON},
    {WM_MBUTTONDOWN, WM_MBUTTONDBLCLK, WM_MBUTTONUP, MK_MBUTTON, VK_MBUTTON},
    {WM_XBUTTONDOWN, WM_XBUTTONDBLCLK, WM_XBUTTONUP, MK_XBUTTON1, VK_XBUTTON1},
    {WM_XBUTTONDOWN, WM_XBUTTONDBLCLK, WM_XBUTTONUP, MK_XBUTTON2, VK_XBUTTON2},
}};

constexpr WPARAM kAnyButton = MK_LBUTTON | MK_RBUTTON | MK_MBUTTON | MK_XBUTTON1 | MK_XBUTTON2;

bool IsPress(UINT message) {
  return std::any_of(kButtons.begin(), kButtons.end(), [=](const MouseButton& button) {
    return message == button.down || message == button.again;
  });
}

bool IsRelease(UINT message) {
  return std::any_of(kButtons.begin(), kButtons.end(),
                     [=](const MouseButton& button) { return message == button.up; });
}

// As of the message that is being handled, or of one that a message box has handled meanwhile.
bool IsAnyButtonDown() {
  return std::any_of(kButtons.begin(), kButtons.end(),
                     [](const MouseButton& button) { return GetKeyState(button.key) < 0; });
}

// What a press or a release answers.
LRESULT Handled(UINT message) {
  const bool further =
      message == WM_XBUTTONDOWN || message == WM_XBUTTONDBLCLK || message == WM_XBUTTONUP;
  return further ? TRUE : 0;
}

bool MovesGrid(UINT message) {
  return message == WM_HSCROLL || message == WM_VSCROLL || message == WM_PARENTNOTIFY ||
         message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
}

POINT PointOf(LPARAM lparam) {
  return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
}

}  // namespace

std::optional<LRESULT> LineGridWindow::Before(const HookedMessage& message) {
  if (message.window == hooked_header_) return BeforeHeader(message);
  return BeforeGrid(message.message, message.wparam, message.lparam);
}

std::optional<LRESULT> LineGridWindow::BeforeGrid(UINT message, WPARAM wparam, LPARAM lparam) {
  const auto hold = HoldForm(Handle());
  if (MovesGrid(message)) {
    Notify(on_before_move);
    return std::nullopt;
  }
  if (IsPress(message)) {
    Press(PointOf(lparam), wparam);
    return Handled(message);
  }
  if (IsRelease(message)) {
    Release(PointOf(lparam));
    return Handled(message);
  }
  switch (message) {
    case WM_MOUSEMOVE:
      if ((wparam & kAnyButton) == 0) ReleaseWherePressed();
      return std::nullopt;
    case WM_CAPTURECHANGED:
      pressed_.reset();
      return std::nullopt;
    case WM_KEYDOWN:
      if (wparam == VK_F2 || wparam == VK_RETURN) {
        Notify(on_edit);
        return 0;
      }
      if (IsKeptFromList(wparam)) return 0;
      return std::nullopt;
    case WM_CHAR:
      Notify(on_key_press, static_cast<char16_t>(wparam));
      // The list would search for a row by what is typed, and Enter is a blank to it.
      if (wparam >= L' ' || wparam == L'\r') return 0;
      return std::nullopt;
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
        header_tips_.Outdate();
      }
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void LineGridWindow::Press(POINT point, WPARAM keys) {
  const bool ctrl = (keys & MK_CONTROL) != 0;
  const bool shift = (keys & MK_SHIFT) != 0;
  const bool alone = std::popcount(keys & kAnyButton) <= 1;
  if (alone) ReleaseWherePressed();
  const bool is_held = IsAnyButtonDown();
  pressed_ = point;
  Notify(on_mouse_down, scale_.ToTwips(point.x), scale_.ToTwips(point.y));
  SetFocus();
  // The system tells the parents only of presses that the mouse itself has made.
  ReflectPress(Handle());
  if (const auto row = RowAt(point)) {
    if (SelectPressed(*row, ctrl, shift)) Notify(on_item_click, *row);
  } else if (!ctrl && !shift) {
    for (int other = 1; other <= RowCount(); ++other) SetSelected(other, false);
  }
  // Not held any more, although no release has come: a message box has swallowed it.
  if (is_held && !IsAnyButtonDown()) ReleaseWherePressed();
  if (pressed_) SetCapture(Handle());
}

void LineGridWindow::Release(POINT point) {
  if (!pressed_) return;
  pressed_.reset();
  if (GetCapture() == Handle()) ReleaseCapture();
  Notify(on_mouse_up, scale_.ToTwips(point.x), scale_.ToTwips(point.y));
}

// For a release that never came. The pointer is elsewhere by now.
void LineGridWindow::ReleaseWherePressed() {
  if (pressed_) Release(*pressed_);
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

// A blank would select a row, ctrl with plus would show the hidden columns.
bool LineGridWindow::IsKeptFromList(WPARAM key) const {
  const bool ctrl = GetKeyState(VK_CONTROL) < 0;
  return (key == VK_SPACE && !ctrl) || (key == VK_ADD && ctrl);
}

void LineGridWindow::ShowCell(int row, int column) {
  CheckRow(row);
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
}

void LineGridWindow::GoToRow(int row) {
  if (!Selected(row)) SelectPressed(row, false, false);
  FocusRow(row);
}

void LineGridWindow::HookHeader() {
  const HWND header = Header();
  if (!header || header == hooked_header_) return;
  UnhookHeader();
  hooked_header_ = header;
  header_hook_ = std::make_unique<WindowHook>(header, static_cast<WindowWatcher&>(*this));
  header_tips_.Adopt(header);
}

void LineGridWindow::UnhookHeader() {
  if (!hooked_header_) return;
  header_tips_.Close();
  header_hook_.reset();
  hooked_header_ = nullptr;
}

LRESULT LineGridWindow::BeforeHeader(const HookedMessage& message) {
  const auto hold = HoldForm(message.window);
  // The platform tells the grid of a press on its header only when it comes from the mouse itself.
  if (IsPress(message.message)) Notify(on_before_move);
  header_tips_.Relay(message);
  const LRESULT result = message.PassOn();
  if (message.message == HDM_LAYOUT && result) {
    // The list view asks its header how much of the grid it takes.
    const auto& layout = *reinterpret_cast<const HDLAYOUT*>(message.lparam);
    const int higher = scale_.Pixels(texts_.GridHeaderHeight()) - layout.pwpos->cy;
    layout.pwpos->cy += higher;
    layout.prc->top += higher;
  }
  return result;
}

}  // namespace rdv::win32
