// The line-configuration control, whatever its widgets are made of.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "rules/business_rules.h"
#include "rules/label_validator.h"
#include "widgets/form.h"

namespace rdv {

struct ControlOptions {
  LabelValidatorFactory make_label_validator = MakeBuiltInLabelValidator;
};

// Lives on the user-interface thread of its form. It answers the form's events from its creation to
// its destruction; a failure in answering one never leaves the control.
//
// The host may destroy the control while one of its handlers is running. The widgets must then stay
// alive until the handler has returned, with one exception: after raising RemoveME the control
// touches nothing of the form any more, so in RemoveME the host may destroy control and form alike.
class ucRDVLineConfig {
 public:
  // Takes the handlers of the form's widgets for itself. The widgets outlive the control.
  explicit ucRDVLineConfig(const Form& form, ControlOptions options = {});
  ~ucRDVLineConfig();
  ucRDVLineConfig(const ucRDVLineConfig&) = delete;
  ucRDVLineConfig& operator=(const ucRDVLineConfig&) = delete;

  // Loads the lists and the lines of a configuration and shows them. False after a failure, which
  // the user has then been told of. May be called again, for another configuration too.
  bool ShowControl(int16_t Given_ConfigID);

  // Proposes the unit type for "Restore Default" from the line types of lines 1 and 5.
  void AssignIndextoDefaultBox(int16_t Line1LineType, int16_t Line5LineType);

  Business_Rules& BusinessRules();

  // Raised when the user is finished: the host takes the control away. May come twice for one press
  // of a button, unless the first one has destroyed the control.
  std::function<void()> RemoveME;

 private:
  class Core;
  std::shared_ptr<Core> core_;
};

}  // namespace rdv
