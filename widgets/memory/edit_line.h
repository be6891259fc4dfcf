// The one line of text in an editor that the user types into.
#pragma once

#include "runtime/text.h"

namespace rdv::memory {

// Characters go in at the caret, in place of the selected stretch that the caret stands at the end
// of. What changes the text tells so.
class EditLine {
 public:
  const rdv::Text& Text() const { return text_; }
  size_t Caret() const { return caret_; }

  // The caret goes to the start.
  void Set(TextView text);
  // Nothing is selected afterwards. Beyond the text counts as its end.
  void SetCaret(size_t position);
  void SelectAll();

  // A backspace takes the selected stretch or else the character before the caret away; other
  // control characters do nothing.
  bool Type(char16_t unit);
  // Up to the first line break: there is one line only. The caret goes behind what was pasted.
  bool Paste(TextView text);

 private:
  bool Replace(size_t begin, size_t end, TextView with);

  rdv::Text text_;
  size_t selection_ = 0;  // where the selected stretch begins; it ends at the caret
  size_t caret_ = 0;
};

}  // namespace rdv::memory
