// The three buttons that end an editing pass. Whether there is anything to save is told by cmdApply
// alone: it is enabled while there is.
#pragma once

#include <functional>

#include "data/database.h"
#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "widgets/form.h"

namespace rdv {

class Saving {
 public:
  // All outlive the object. `raise_RemoveME` may come back with the form gone; nothing of it is
  // touched after the call.
  Saving(const Form& form, ControlState& state, std::function<void()> raise_RemoveME);

  // Writes every row of the grid. An error ends it and is shown with the values of the line that it
  // struck; rows written before stay written and cmdApply stays enabled.
  void cmdApply_Click();

  // RemoveME follows only when the saving came to its end.
  void cmdOK_Click();

  // Answered with Yes, RemoveME comes twice after a successful saving and once after a failed one.
  void cmdCancel_Click();

 private:
  void WriteLines(LineArguments& current);
  void WriteLine(DataBase& database, int row, LineArguments& current);
  bool IsStored(DataBase& database, TextView line) const;
  void InsertMohPair(DataBase& database, int16_t first_line) const;
  Text AcdOptionOf(TextView line) const;

  const Form& form_;
  ControlState& state_;
  std::function<void()> raise_RemoveME_;
};

}  // namespace rdv
