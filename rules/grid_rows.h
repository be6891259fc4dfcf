// Whole rows of the line grid, and walking the rows that the user has selected.
#pragma once

#include <array>
#include <span>

#include "rules/control_state.h"
#include "rules/grid_columns.h"
#include "rules/line_codes.h"
#include "runtime/conversion.h"
#include "widgets/form.h"

namespace rdv {

// The twenty texts of a row by column.
class RowCells {
 public:
  Text& operator[](int column) { return cells_[static_cast<size_t>(column - 1)]; }
  const Text& operator[](int column) const { return cells_[static_cast<size_t>(column - 1)]; }

 private:
  std::array<Text, kColumnCount> cells_;
};

// "a" and the number.
Text RowKey(int number);

// At the end of the grid. Raises 35602 when the key is taken; the grid is unchanged then.
void AddRow(LineGrid& grid, TextView key, const RowCells& cells);
void OverwriteRow(LineGrid& grid, int row, const RowCells& cells);
RowCells CellsOf(const LineGrid& grid, int row);

// The line types to whose rows an editor never writes, which are also those for whose cells it is
// not shown.
using LineTypes = std::span<const Code>;
inline constexpr std::array<Code, 0> kNoLineTypes = {};
inline constexpr std::array kNotInstalledLines = {line_type::kNotInstalled};
inline constexpr std::array kLinesWithoutOptions = {line_type::kNotInstalled,
                                                    line_type::kMusicOnHold};
// Nor a soft stop.
inline constexpr std::array kLinesWithoutImpedance = {
    line_type::kNotInstalled, line_type::kImpedance, line_type::kMusicOnHold};

inline Code LineTypeOf(const LineGrid& grid, int row) {
  return CodeIn(grid.Cell(row, column::kLineTypeCode));
}

// Calls rule(row) for every selected row, first to last, but for those of a refused line type.
template <typename Rule>
void ForEachSelectedRow(const LineGrid& grid, LineTypes refused, Rule&& rule) {
  for (int row = 1; row <= grid.RowCount(); ++row) {
    if (grid.Selected(row) && !Contains(refused, LineTypeOf(grid, row))) rule(row);
  }
}

// What a change in an editor begins with: there is something to save. Not while a cell is opened by
// keyboard, when the editors change without the user having chosen anything.
inline void MarkChanged(const Form& form, const ControlState& state) {
  if (!state.OpensByKeyboard) form.cmdApply.SetEnabled(true);
}

// The rows that a change in an editor goes into: the selected ones, but none while a cell is opened
// by keyboard.
template <typename Rule>
void ForEachWrittenRow(const Form& form, const ControlState& state, LineTypes refused,
                       Rule&& rule) {
  if (!state.OpensByKeyboard) ForEachSelectedRow(form.LVRDVLineConfig, refused, rule);
}

}  // namespace rdv
