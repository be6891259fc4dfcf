#include "rules/editors.h"

namespace rdv {

Choice SelectedEntry(const ComboBox& list) {
  const int index = list.ListIndex();
  return {Code{list.ItemData(index)}, list.List(index)};
}

void AddEntry(ComboBox& list, TextView caption, Code code) {
  list.AddItem(caption, NumberOf(code));
}

void ShowEditors(const Form& form, bool Visible) {
  for (Editor* editor : form.Editors()) {
    editor->SetVisible(Visible && editor != &form.cmbLineType);
  }
}

void SelectByCode(ComboBox& list, Code code) {
  for (int index = 0; index < list.ListCount(); ++index) {
    if (Code{list.ItemData(index)} == code) {
      list.SetListIndex(index);
      return;
    }
  }
}

void SelectByText(ComboBox& list, TextView caption) {
  for (int index = 0; index < list.ListCount(); ++index) {
    if (list.List(index) == caption) {
      list.SetListIndex(index);
      return;
    }
  }
  list.SetText(caption);
}

}  // namespace rdv
