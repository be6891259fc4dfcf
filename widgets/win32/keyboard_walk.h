// The control by keyboard: tab stops, the keys that edit, and mnemonics.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "widgets/form.h"
#include "widgets/win32/platform.h"

namespace rdv::win32 {

// While an editor is open, Tab, Shift+Tab, Enter, Esc and the arrow keys stay in the grid, which is
// told to go on with the next cell (Tab) or to end editing (Enter, and Esc, which undoes it); so do
// the keys that edit a text. Otherwise Tab walks the tab stops and leaves the control at either
// end, and Enter opens a cell of the grid. Tab takes the entry that an open list highlights. Keys
// of other windows, and those that with Ctrl walk through a host's own windows, are left alone.
class KeyboardWalk {
 public:
  struct Stop {
    HWND window;
    wchar_t mnemonic;  // with Alt: presses a button; 0 for none
  };

  // `form` and `grid` outlive the walk.
  KeyboardWalk(const Form& form, const LineGrid& grid);

  // The tab stops in their order.
  void SetStops(std::vector<Stop> stops) { stops_ = std::move(stops); }

  // True when the key was for the control and has been acted on.
  bool Translate(const MSG& message);

  // Presses the button of the mnemonic; false when there is none.
  bool PressMnemonic(wchar_t key);
  std::span<const Stop> Stops() const { return stops_; }

  // An in-place editor has the keyboard: Enter and Esc are the control's then.
  bool Editing() const;

  // At the first tab stop, or the last.
  void Enter(bool at_the_end);
  // At the window of the form that had the focus last, else at the first tab stop; nowhere while
  // the lines are being loaded.
  void Resume();
  // False where the window is none of the form's, or cannot take the focus.
  bool GoTo(HWND window);
  // The focus is in this window of the form now.
  void Note(HWND focus) { last_focus_ = focus; }

 private:
  bool TranslateKey(const MSG& message, bool shift);
  bool TranslateEditorKey(const MSG& message, bool shift);
  bool StepToStop(bool backward);

  const Form& form_;
  const LineGrid& grid_;
  std::vector<Stop> stops_;
  HWND last_focus_ = nullptr;
};

}  // namespace rdv::win32
