// The command button on a push button.
#pragma once

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

class ButtonWindow : public WindowWidget<Button> {
 public:
  ButtonWindow(HWND parent, int id, const wchar_t* caption) {
    Create(parent, {.window_class = L"BUTTON",
                    .text = caption,
                    .style = WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON | BS_NOTIFY,
                    .id = id});
  }

  void OnCommand(WORD code) override {
    if (code == BN_CLICKED && on_click) on_click();
  }
};

}  // namespace rdv::win32
