// The text box on an edit control.
#pragma once

#include "widgets/win32/editor_window.h"

namespace rdv::win32 {

class TextBoxWindow : public EditorWindow<TextBox> {
 public:
  TextBoxWindow(HWND parent, int id);

  rdv::Text Text() const override;
  void SetText(TextView text) override;
  size_t Caret() const override;
  void SetCaret(size_t position) override;

  void OnCommand(WORD code) override;
  FocusCodes CodesOfFocus() const override { return {EN_SETFOCUS, EN_KILLFOCUS}; }
  void SetFocus() override;
  void MakeAnew(HWND parent) override;

 private:
  rdv::Text known_text_;  // the text that the last on_change told of
  bool setting_ = false;  // the change comes from SetText, which tells of it itself
};

}  // namespace rdv::win32
