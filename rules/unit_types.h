// The three variants in which a unit is fitted, and rebuilding the grid for one of them.
#pragma once

#include <cstdint>

#include "rules/control_state.h"
#include "rules/line_templates.h"
#include "widgets/form.h"

namespace rdv {

class UnitTypes {
 public:
  // All outlive the object.
  UnitTypes(const Form& form, ControlState& state, LineTemplates& templates)
      : form_(form), state_(state), templates_(templates) {}

  // Fills cmbRDVType and selects its first entry. Reports like the list loaders.
  bool LoadDefaultRDVType();

  // Selects the entry of cmbRDVType by the line types of lines 1 and 5; before the list is filled
  // its text is set all the same. Line types that say nothing leave it as it is.
  void AssignIndextoDefaultBox(int16_t Line1LineType, int16_t Line5LineType);

  // "Restore Default": throws the rows away and makes those of the chosen unit type. Nothing is
  // written to the database. A failing line is reported and does not stop the ones after it.
  void cmdShowDefaults_Click();

 private:
  const Form& form_;
  ControlState& state_;
  LineTemplates& templates_;
};

}  // namespace rdv
