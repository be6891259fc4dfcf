// Sets the line grid up and fills it with the stored lines of the configuration.
#pragma once

#include <cstdint>
#include <set>

#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "rules/line_templates.h"
#include "widgets/form.h"

namespace rdv {

class DataBase;
class Recordset;

// Both procedures are true when no error occurred; an error stops them, and its block is in
// LoadErrorText.
class GridLoading {
 public:
  // All outlive the object.
  GridLoading(const Form& form, ControlState& state, LineTemplates& templates)
      : form_(form), state_(state), templates_(templates) {}

  bool FormatLVControl();

  // Expects a grid without rows. A unit of which nothing is stored is given its default lines,
  // which are written to the database at once, together with its card.
  bool LoadData();

 private:
  // How far the walk over the stored lines has come.
  struct Progress {
    int LineCounter = 1;  // number of the next row, and its key
    // The one in force: a line of unknown type keeps that of the line before.
    Code line_type{0};
    std::set<int16_t> stored_lines;  // shown or not
  };

  void ShowStoredLine(const Recordset& line, Progress& progress);
  void CreateDefaultUnit(DataBase& database, Progress& progress);
  void ReplaceCard(DataBase& database) const;
  void FillWithNotInstalledLines(const Progress& progress);

  const Form& form_;
  ControlState& state_;
  LineTemplates& templates_;
};

}  // namespace rdv
