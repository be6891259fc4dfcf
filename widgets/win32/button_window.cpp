#include "widgets/win32/button_window.h"

#include "runtime/text.h"
#include "widgets/win32/accessible_name.h"

namespace rdv::win32 {

// What the button paints it does not ask itself for: the letter is underlined all the same.
LRESULT CALLBACK ButtonWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto* button = static_cast<const ButtonWindow*>(TargetOf(window));
  if (message == WM_GETTEXTLENGTH) return static_cast<LRESULT>(button->text_.size());
  if (message == WM_GETTEXT) {
    if (wparam == 0) return 0;
    auto* to = reinterpret_cast<wchar_t*>(lparam);
    const size_t copied = button->text_.copy(to, wparam - 1);
    to[copied] = L'\0';
    return static_cast<LRESULT>(copied);
  }
  return CallWindowProcW(button->platform_procedure_, window, message, wparam, lparam);
}

ButtonWindow::ButtonWindow(HWND parent, int id, const wchar_t* caption) : text_(caption) {
  Create(parent, {.window_class = L"BUTTON",
                  .text = caption,
                  .style = WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON | BS_NOTIFY,
                  .id = id});
  if (const size_t mark = text_.find(L'&'); mark != std::wstring::npos) {
    text_.erase(mark, 1);
    mnemonic_ = static_cast<wchar_t>(UpperCase(static_cast<char16_t>(text_[mark])));
    SetAccessibleShortcut(Handle(), (L"Alt+" + std::wstring(1, mnemonic_)).c_str());
  }
  platform_procedure_ = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure)));
}

ButtonWindow::~ButtonWindow() {
  SetWindowLongPtrW(Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(platform_procedure_));
}

}  // namespace rdv::win32
