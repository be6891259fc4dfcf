#include "rules/editors.h"

namespace rdv {

void ShowEditors(const Form& form, bool Visible) {
  for (Editor* editor : form.Editors()) {
    editor->SetVisible(Visible && editor != &form.cmbLineType);
  }
}

void SelectByCode(ComboBox& list, double code) {
  for (int index = 0; index < list.ListCount(); ++index) {
    if (list.ItemData(index) == code) {
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
