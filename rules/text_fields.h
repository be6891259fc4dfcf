// The two editors that take free text: the EWT option and the label. Each change of a text, typed
// or set, cleans it and copies it into the selected rows.
#pragma once

#include "rules/label_validator.h"
#include "widgets/form.h"

namespace rdv {

class TextFields {
 public:
  // The form outlives the rules; the factory is called for each change of the label.
  TextFields(const Form& form, LabelValidatorFactory make_label_validator);

  // Keeps the digits. Raises 6 for a number beyond 32 bits.
  void txtEWTOption_Change();

  // Takes out what the validator rejects. Its failures end it silently.
  void txtLabel_Change();

 private:
  void RejectLabel();

  const Form& form_;
  LabelValidatorFactory make_label_validator_;
};

// The label without what is not allowed in it: every double quote goes, a run of single quotes
// shrinks to one, and double quotes do not interrupt a run.
Text CleanLabel(TextView label);

}  // namespace rdv
