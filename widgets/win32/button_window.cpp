#include "widgets/win32/button_window.h"

#include <string>
#include <string_view>

#include "runtime/text.h"
#include "widgets/win32/accessible_name.h"

namespace rdv::win32 {
namespace {

wchar_t MnemonicOf(std::wstring_view caption) {
  const size_t mark = caption.find(L'&');
  if (mark == std::wstring_view::npos) return 0;
  return static_cast<wchar_t>(UpperCase(static_cast<char16_t>(caption.at(mark + 1))));
}

}  // namespace

ButtonWindow::ButtonWindow(HWND parent, int id, const wchar_t* caption)
    : mnemonic_(MnemonicOf(caption)) {
  Create(parent, {.window_class = L"BUTTON",
                  .text = caption,
                  .style = WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON | BS_NOTIFY,
                  .id = id});
  ButtonWindow::OnMade();
}

void ButtonWindow::OnMade() {
  if (mnemonic_ == 0) return;
  SetAccessibleShortcut(Handle(), (L"Alt+" + std::wstring(1, mnemonic_)).c_str());
}

}  // namespace rdv::win32
