// Whether a label may be kept as it was typed. The suite has a component for this question; where
// it is not installed, the check built in here answers it by the same rule.
#pragma once

#include <functional>
#include <memory>

#include "runtime/text.h"

namespace rdv {

class LabelValidator {
 public:
  virtual ~LabelValidator() = default;
  // May raise RuntimeError.
  virtual bool IsAcceptable(TextView label) = 0;
};

// Makes the validator of one label change; it is let go at the end of the change. May raise
// RuntimeError, never gives nothing.
using LabelValidatorFactory = std::function<std::unique_ptr<LabelValidator>()>;

// Rejects any double quote and any two single quotes in a row.
std::unique_ptr<LabelValidator> MakeBuiltInLabelValidator();

}  // namespace rdv
