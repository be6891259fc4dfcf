// The command button on a push button.
#pragma once

#include <string>

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

// The letter after the caption's ampersand is underlined and, with Alt, presses the button. Who
// asks for the button's text gets it without the ampersand.
class ButtonWindow : public WindowWidget<Button> {
 public:
  ButtonWindow(HWND parent, int id, const wchar_t* caption);
  ~ButtonWindow() override;

  // In upper case; 0 where the caption has none.
  wchar_t Mnemonic() const { return mnemonic_; }

  void OnCommand(WORD code) override {
    if (code == BN_CLICKED && on_click) on_click();
  }

 private:
  void OnMade() override;
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  const std::wstring caption_;
  std::wstring text_;  // the caption without the ampersand
  wchar_t mnemonic_ = 0;
  WNDPROC platform_procedure_ = nullptr;
  bool painting_ = false;
};

}  // namespace rdv::win32
