// The control by keyboard: tab stops, the keys that edit, and mnemonics.
#pragma once

#include <array>
#include <span>

#include "widgets/form.h"
#include "widgets/win32/platform.h"

namespace rdv::win32 {

// While an editor is open, Tab, Shift+Tab, Enter, Esc and the arrow keys stay in the grid, which is
// told to go on with the next cell (Tab) or to end editing (Enter and Esc). Otherwise Tab walks the
// tab stops and leaves the control at either end.
class KeyboardWalk {
 public:
  struct Stop {
    HWND window;
    wchar_t mnemonic;  // with Alt: presses a button; 0 for none
  };

  // `form` and `grid` outlive the walk. `stops` are the tab stops in their order.
  KeyboardWalk(const Form& form, const LineGrid& grid, std::span<const Stop> stops);

  // True when the key was for the control and has been acted on.
  bool Translate(const MSG& message);

  // Presses the button of the mnemonic; false when there is none.
  bool PressMnemonic(wchar_t key);
  std::span<const Stop> Stops() const { return stops_; }

  // An in-place editor has the keyboard: Enter and Esc are the control's then.
  bool Editing() const;

  // At the first tab stop, or the last.
  void Enter(bool at_the_end);

 private:
  bool TranslateKey(const MSG& message, bool shift);
  bool TranslateEditorKey(const MSG& message, bool shift);
  bool StepToStop(bool backward);

  const Form& form_;
  const LineGrid& grid_;
  std::array<Stop, 6> stops_;
};

}  // namespace rdv::win32
