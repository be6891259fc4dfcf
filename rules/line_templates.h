// The four templates that make a line from nothing.
#pragma once

#include <cstdint>

#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "widgets/form.h"

namespace rdv {

enum class Target {
  NewRow,       // a row at the end of the grid, its key "a" and the line number
  ExistingRow,  // every cell of the row at the position that the line number names
};
enum class Store { No, Yes };

struct LineTemplate;

// Each finds all the values of its row before it touches the grid, so that a failure leaves no half
// row; Store::Yes then also inserts the line record. A failure is shown at once and gives false.
class LineTemplates {
 public:
  // Both outlive the templates.
  LineTemplates(const Form& form, ControlState& state) : form_(form), state_(state) {}

  bool LoadDefaultNotInstalledLine(int16_t line, Target target);
  bool LoadDefaultHybrideLine(int16_t line, Target target, Store store);
  bool LoadDefaultLowImpedanceLine(int16_t line, Target target, Store store);
  bool LoadDefaultMOHLine(int16_t line, Target target, Store store);

 private:
  bool LoadDefaultLine(const LineTemplate& source, int16_t line, Target target, Store store);
  RowCells CellsFrom(const LineTemplate& source, int16_t line);
  int16_t StartingNodeNumber(const LineTemplate& source, int16_t line);

  const Form& form_;
  ControlState& state_;
};

// The row of a line that is not installed. Needs no name lists.
RowCells NotInstalledCells(TextView line);

}  // namespace rdv
