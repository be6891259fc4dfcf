// The twelve in-place editors as a whole.
#pragma once

#include "widgets/form.h"

namespace rdv {

// Shows or hides all of them, but for the line type's, which always stays hidden: the line type of
// a row is never edited in place.
void ShowEditors(const Form& form, bool Visible);

// Selects the first entry whose item data is `code`; without one the selection stays as it is.
void SelectByCode(ComboBox& list, double code);

// The same by caption; without such an entry the text is set all the same.
void SelectByText(ComboBox& list, TextView caption);

}  // namespace rdv
