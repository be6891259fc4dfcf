#include "widgets/win32/button_window.h"

#include <utility>

#include "runtime/text.h"
#include "widgets/win32/accessible_name.h"

namespace rdv::win32 {

namespace {

// At these the platform's button paints itself, and may ask itself for its text.
bool Paints(UINT message) {
  switch (message) {
    case WM_PAINT:
    case WM_PRINTCLIENT:
    case WM_ENABLE:
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case BM_SETSTATE:
    case BM_SETSTYLE:
      return true;
    default:
      return false;
  }
}

LRESULT CopyText(const std::wstring& text, WPARAM capacity, LPARAM buffer) {
  if (capacity == 0) return 0;
  auto* to = reinterpret_cast<wchar_t*>(buffer);
  const size_t copied = text.copy(to, capacity - 1);
  to[copied] = L'\0';
  return static_cast<LRESULT>(copied);
}

}  // namespace

LRESULT CALLBACK ButtonWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* button = static_cast<ButtonWindow*>(TargetOf(window));
  const std::wstring& text = button->painting_ ? button->caption_ : button->text_;
  if (message == WM_GETTEXTLENGTH) return static_cast<LRESULT>(text.size());
  if (message == WM_GETTEXT) return CopyText(text, wparam, lparam);
  const bool painted_before =
      std::exchange(button->painting_, button->painting_ || Paints(message));
  const LRESULT result =
      CallWindowProcW(button->platform_procedure_, window, message, wparam, lparam);
  // A click may have ended the form.
  button = static_cast<ButtonWindow*>(TargetOf(window));
  if (button) button->painting_ = painted_before;
  return result;
}

ButtonWindow::ButtonWindow(HWND parent, int id, const wchar_t* caption)
    : caption_(caption), text_(caption) {
  Create(parent, {.window_class = L"BUTTON",
                  .text = caption,
                  .style = WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON | BS_NOTIFY,
                  .id = id});
  if (const size_t mark = text_.find(L'&'); mark != std::wstring::npos) {
    text_.erase(mark, 1);
    mnemonic_ = static_cast<wchar_t>(UpperCase(static_cast<char16_t>(text_[mark])));
  }
  ButtonWindow::OnMade();
}

void ButtonWindow::OnMade() {
  if (mnemonic_ != 0) {
    SetAccessibleShortcut(Handle(), (L"Alt+" + std::wstring(1, mnemonic_)).c_str());
  }
  platform_procedure_ = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure)));
}

ButtonWindow::~ButtonWindow() {
  SetWindowLongPtrW(Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(platform_procedure_));
}

}  // namespace rdv::win32
