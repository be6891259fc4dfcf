// The command button on a push button.
#pragma once

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

class ButtonWindow : public WindowWidget<Button> {
 public:
  // The letter after the caption's ampersand is underlined and, with Alt, presses the button.
  ButtonWindow(HWND parent, int id, const wchar_t* caption);

  // In upper case; 0 where the caption has none.
  wchar_t Mnemonic() const { return mnemonic_; }

  void OnCommand(WORD code) override {
    if (code == BN_CLICKED) Notify(on_click);
  }
  FocusCodes CodesOfFocus() const override { return {BN_SETFOCUS, BN_KILLFOCUS}; }

 private:
  void OnMade() override;

  const wchar_t mnemonic_;
};

}  // namespace rdv::win32
