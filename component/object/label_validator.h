// The label check through the suite's own component.
#pragma once

#include "rules/label_validator.h"

namespace rdv {

// The registered outside component where there is one with a method to ask, otherwise the check
// that is built in.
std::unique_ptr<LabelValidator> MakeLabelValidator();

}  // namespace rdv
