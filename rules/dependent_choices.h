// What a choice in an in-place editor does to the selected rows and to the other editors. Every
// handler first marks the control as changed. A choice that a row's line type does not allow leaves
// that row as it was, without a word.
#pragma once

#include <cstdint>

#include "rules/editors.h"
#include "rules/grid_rows.h"
#include "rules/line_templates.h"
#include "widgets/form.h"

namespace rdv {

// The handlers run whenever an entry is selected or the text changes, whoever did it; a selection
// made by one handler runs another's inside it. cmbModeType_Click and
// cmbStartingNodeName_Click end silently on an error; the others let it out, and the row that it
// struck keeps what was not yet written.
class DependentChoices {
 public:
  // All outlive the object.
  DependentChoices(const Form& form, ControlState& state, LineTemplates& templates)
      : form_(form), state_(state), templates_(templates) {}

  void cmbLineType_Click();
  void cmbPartition_Click();
  void cmbStartingNodeName_Click();
  void cmbStartingNodeNumber_Click();
  void cmbStartingNodeNumber_Change();
  void cmbVolume_Click();
  void cmbModeType_Click();
  void cmbModeNumber_Click();
  void cmbModeNumber_Change();
  void cmbNISOption_Click();
  void cmbImpedance_Click();
  void cmbSoftStop_Click();

 private:
  // The frame of most handlers: calls rule(row, choice) for every selected row whose line type is
  // not refused. Raises 381 when nothing is selected in the editor.
  template <typename Rule>
  void Choose(const ComboBox& editor, LineTypes refused, Rule&& rule);
  void Write(int row, int code_column, int caption_column, const Choice& choice);
  void FilterTypedNumber(ComboBox& editor);
  void ShowModeNumberFor(Code mode_type);
  void OfferNodeNumbersFor(Code node_type);
  void SelectNodeNumber();

  const Form& form_;
  ControlState& state_;
  LineTemplates& templates_;
};

}  // namespace rdv
