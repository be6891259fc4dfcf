// The two editors that take free text: the EWT option and the label. Each change of a text, typed
// or set, cleans it and copies it into the selected rows; but what a cell shows that is opened by
// keyboard is left as it is.
#pragma once

#include "rules/control_state.h"
#include "rules/label_validator.h"
#include "widgets/form.h"

namespace rdv {

class TextFields {
 public:
  // Form and state outlive the rules; the factory is called for each change of the label.
  TextFields(const Form& form, const ControlState& state,
             LabelValidatorFactory make_label_validator);

  // Keeps the digits. Raises 6 for a number beyond 32 bits.
  void txtEWTOption_Change();

  // Takes out what the validator rejects. Its failures end it silently.
  void txtLabel_Change();

 private:
  void RejectLabel();

  const Form& form_;
  const ControlState& state_;
  LabelValidatorFactory make_label_validator_;
};

// The label without what is not allowed in it: every double quote goes, a run of single quotes
// shrinks to one, and double quotes do not interrupt a run.
Text CleanLabel(TextView label);

}  // namespace rdv
