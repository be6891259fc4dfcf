// The buttons of a message box, as a user knows them: by the answer that the box then gives.
#pragma once

#include <windows.h>

#include <vector>

namespace rdv::play {

// Of a dialog window, in their order.
inline std::vector<HWND> PushButtons(HWND box) {
  std::vector<HWND> buttons;
  for (HWND child = nullptr; (child = FindWindowExW(box, child, L"Button", nullptr)) != nullptr;) {
    const auto kind = GetWindowLongW(child, GWL_STYLE) & BS_TYPEMASK;
    if (kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON) buttons.push_back(child);
  }
  return buttons;
}

// Presses the button that answers so (IDOK, IDYES...), and does not wait. Which identifier the only
// button of a box has is nowhere said, and it is not the answer's everywhere: it is pressed
// whatever it is.
inline void PressInBox(HWND box, int answer) {
  const std::vector<HWND> buttons = PushButtons(box);
  HWND pressed = GetDlgItem(box, answer);
  if (buttons.size() == 1) pressed = buttons.front();
  const int id = pressed ? GetDlgCtrlID(pressed) : answer;
  PostMessageW(box, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(pressed));
}

}  // namespace rdv::play
