#include "widgets/win32/keyboard_walk.h"

#include <algorithm>
#include <iterator>
#include <ranges>

#include "widgets/win32/combo_box_window.h"
#include "widgets/win32/form_messages.h"
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

// The open list that the window is or is the text part of; null where there is none.
ComboBoxWindow* OpenList(HWND focus) {
  for (const HWND window : {focus, GetParent(focus)}) {
    auto* list = dynamic_cast<ComboBoxWindow*>(TargetOf(window));
    if (list && list->DroppedDown()) return list;
  }
  return nullptr;
}

bool IsHeld(int key) {
  return GetKeyState(key) < 0;
}

// A text box, or the text part of a list.
bool IsTextPart(HWND window) {
  wchar_t name[16] = L"";
  return GetClassNameW(window, name, static_cast<int>(std::size(name))) > 0 &&
         lstrcmpiW(name, L"EDIT") == 0;
}

// A host with such accelerators would take them from whoever types.
bool EditsText(WPARAM key) {
  if (key == VK_DELETE || key == VK_BACK || key == VK_INSERT) return true;
  return IsHeld(VK_CONTROL) && (key == 'A' || key == 'C' || key == 'V' || key == 'X' || key == 'Z');
}

// With Ctrl: through the host's documents and pages.
bool WalksHost(WPARAM key) {
  return IsHeld(VK_CONTROL) && (key == VK_TAB || key == VK_F4 || key == VK_PRIOR || key == VK_NEXT);
}

}  // namespace

KeyboardWalk::KeyboardWalk(const Form& form, const LineGrid& grid) : form_(form), grid_(grid) {}

bool KeyboardWalk::Translate(const MSG& message) {
  const HWND form = FormAround(stops_.front().window);
  if (message.hwnd && message.hwnd != form && !IsChild(form, message.hwnd)) return false;
  if (message.message == WM_SYSCHAR) return PressMnemonic(static_cast<wchar_t>(message.wParam));
  if (message.message != WM_KEYDOWN || WalksHost(message.wParam)) return false;
  const bool shift = IsHeld(VK_SHIFT);
  if (IsTextPart(message.hwnd) && EditsText(message.wParam)) return ToWindow(message);
  if (ComboBoxWindow* list = OpenList(message.hwnd)) {
    const bool closes = message.wParam == VK_RETURN || message.wParam == VK_ESCAPE;
    if (message.wParam != VK_TAB)
      return (closes || MovesWithin(message.wParam)) && ToWindow(message);
    list->TakeHighlighted();
  }
  return Editing() ? TranslateEditorKey(message, shift) : TranslateKey(message, shift);
}

bool KeyboardWalk::TranslateKey(const MSG& message, bool shift) {
  if (message.wParam == VK_TAB) return StepToStop(shift);
  if (message.wParam == VK_RETURN) {
    if (grid_.Focused()) return ToWindow(message);
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
      Notify(grid_.on_edit_end);
      return true;
    case VK_ESCAPE:
      Notify(grid_.on_edit_cancel);
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

void KeyboardWalk::Resume() {
  if (!form_.fraConfiguration.Enabled()) return;
  if (!GoTo(last_focus_)) Enter(false);
}

bool KeyboardWalk::GoTo(HWND window) {
  const HWND form = FormAround(stops_.front().window);
  if (!window || !IsChild(form, window) || !CanTakeFocus(window)) return false;
  ::SetFocus(window);
  return true;
}

void KeyboardWalk::Enter(bool at_the_end) {
  const auto enter = [](auto&& stops) {
    for (const Stop& stop : stops) {
      if (!CanTakeFocus(stop.window)) continue;
      ::SetFocus(stop.window);
      return;
    }
  };
  if (at_the_end) {
    enter(stops_ | std::views::reverse);
  } else {
    enter(stops_);
  }
}

// False at the end: the focus then leaves the control.
bool KeyboardWalk::StepToStop(bool backward) {
  const int step = backward ? -1 : 1;
  const auto count = static_cast<int>(stops_.size());
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
