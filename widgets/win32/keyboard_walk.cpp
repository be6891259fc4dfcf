#include "widgets/win32/keyboard_walk.h"

#include <algorithm>

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {
namespace {

// A frame is disabled while lines are loaded, the form in a form designer.
bool CanTakeFocus(HWND window) {
  if (!IsWindowVisible(window)) return false;
  for (HWND each = window; each; each = GetAncestor(each, GA_PARENT)) {
    if (!IsWindowEnabled(each)) return false;
    if ((GetWindowLongW(each, GWL_STYLE) & WS_CHILD) == 0) break;
  }
  return true;
}

bool MovesWithin(WPARAM key) {
  switch (key) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_HOME:
    case VK_END:
    case VK_F2:
    case VK_F4:
      return true;
    default:
      return false;
  }
}

bool ToWindow(const MSG& message) {
  TranslateMessage(&message);
  DispatchMessageW(&message);
  return true;
}

bool IsDroppedDown(HWND focus) {
  const HWND list = GetDlgCtrlID(GetParent(focus)) != 0 ? GetParent(focus) : focus;
  return SendMessageW(focus, CB_GETDROPPEDSTATE, 0, 0) != 0 ||
         SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

}  // namespace

KeyboardWalk::KeyboardWalk(const Form& form, const LineGrid& grid, std::span<const Stop> stops)
    : form_(form), grid_(grid) {
  std::copy_n(stops.begin(), stops_.size(), stops_.begin());
}

bool KeyboardWalk::Translate(const MSG& message) {
  if (message.message == WM_SYSCHAR) return PressMnemonic(static_cast<wchar_t>(message.wParam));
  if (message.message != WM_KEYDOWN) return false;
  const bool shift = GetKeyState(VK_SHIFT) < 0;
  if (IsDroppedDown(message.hwnd) && message.wParam != VK_TAB) {
    const bool closes = message.wParam == VK_RETURN || message.wParam == VK_ESCAPE;
    return (closes || MovesWithin(message.wParam)) && ToWindow(message);
  }
  return Editing() ? TranslateEditorKey(message, shift) : TranslateKey(message, shift);
}

bool KeyboardWalk::TranslateKey(const MSG& message, bool shift) {
  if (message.wParam == VK_TAB) return GetKeyState(VK_CONTROL) >= 0 && StepToStop(shift);
  if (message.wParam == VK_RETURN) {
    const auto stop = std::find_if(stops_.begin(), stops_.end(),
                                   [](const Stop& each) { return HasFocus(each.window); });
    if (stop == stops_.end() || stop->mnemonic == 0) return false;
    SendMessageW(stop->window, BM_CLICK, 0, 0);
    return true;
  }
  return MovesWithin(message.wParam) && ToWindow(message);
}

bool KeyboardWalk::TranslateEditorKey(const MSG& message, bool shift) {
  switch (message.wParam) {
    case VK_TAB:
      Notify(grid_.on_edit_next, shift);
      return true;
    case VK_RETURN:
    case VK_ESCAPE:
      Notify(grid_.on_edit_end);
      return true;
    default:
      return MovesWithin(message.wParam) && ToWindow(message);
  }
}

bool KeyboardWalk::PressMnemonic(wchar_t key) {
  const auto upper = static_cast<wchar_t>(UpperCase(static_cast<char16_t>(key)));
  for (const Stop& stop : stops_) {
    if (stop.mnemonic == 0 || stop.mnemonic != upper || !CanTakeFocus(stop.window)) continue;
    SendMessageW(stop.window, BM_CLICK, 0, 0);
    return true;
  }
  return false;
}

void KeyboardWalk::Enter(bool at_the_end) {
  const auto enter = [](const auto& stops) {
    for (const Stop& stop : stops) {
      if (!CanTakeFocus(stop.window)) continue;
      ::SetFocus(stop.window);
      return;
    }
  };
  if (at_the_end) {
    std::array<Stop, 6> backward = stops_;
    std::reverse(backward.begin(), backward.end());
    enter(backward);
  } else {
    enter(stops_);
  }
}

// False at the end: the focus then leaves the control.
bool KeyboardWalk::StepToStop(bool backward) {
  const int step = backward ? -1 : 1;
  const int count = static_cast<int>(stops_.size());
  int index = 0;
  while (index < count && !HasFocus(stops_[static_cast<size_t>(index)].window)) ++index;
  if (index == count) index = backward ? count : -1;
  for (index += step; index >= 0 && index < count; index += step) {
    const HWND window = stops_[static_cast<size_t>(index)].window;
    if (!CanTakeFocus(window)) continue;
    ::SetFocus(window);
    // Whoever walks by keyboard sees where: the container may have hidden that so far.
    SendMessageW(window, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    return true;
  }
  return false;
}

bool KeyboardWalk::Editing() const {
  const auto editors = form_.Editors();
  return std::any_of(editors.begin(), editors.end(),
                     [](const Editor* editor) { return editor->Visible() && editor->Focused(); });
}

}  // namespace rdv::win32
