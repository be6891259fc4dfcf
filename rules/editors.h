// The twelve in-place editors as a whole, and the entries of their lists.
#pragma once

#include "rules/line_codes.h"
#include "widgets/form.h"

namespace rdv {

// An entry of a list: its item data and its caption.
struct Choice {
  Code code;
  Text caption;
};

// Raises 381 when nothing is selected.
Choice SelectedEntry(const ComboBox& list);

void AddEntry(ComboBox& list, TextView caption, Code code);

// Shows or hides all of them, but for the line type's, which always stays hidden: the line type of
// a row is never edited in place.
void ShowEditors(const Form& form, bool Visible);

// Selects the first entry whose item data is `code`; without one the selection stays as it is.
void SelectByCode(ComboBox& list, Code code);

// The same by caption; without such an entry the text is set all the same.
void SelectByText(ComboBox& list, TextView caption);

}  // namespace rdv
