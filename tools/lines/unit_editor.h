// One unit in the hands of a user who works through the editors of the control, without windows.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "control/line_config_control.h"
#include "rules/grid_rows.h"
#include "runtime/text.h"
#include "widgets/memory/memory_form.h"

namespace rdv::lines {

// Why a value was not taken, as a sentence without its stop; nothing when it was.
using WhyRefused = std::optional<Text>;

// Inside a Reading or a Writing of a session; Show of a unit without lines and Apply need a
// Writing.
class UnitEditor {
 public:
  // `longest_label`: in UTF-16 units, of what a stored line can hold.
  explicit UnitEditor(size_t longest_label);

  // Throws std::runtime_error with what the control reports when it cannot show the unit. To be
  // called once, first.
  void Show(int16_t config);

  std::vector<RowCells> Rows() const;
  Text Cell(int row, int column) const { return form_.LVRDVLineConfig.Cell(row, column); }
  // The position of a line's row from 1; nothing when the control does not show the line.
  std::optional<int> RowOf(int line) const;

  // Clicks the cell and picks or types the value: a caption of the list, the text of a box; for a
  // starting node or a mode a name, a name and a number as the grid shows them, or a number alone.
  // What is refused leaves the row as it was.
  WhyRefused Choose(int row, int column, const Text& value);
  // Whether the control shows the value in the cell, now or as soon as the line was saved and read:
  // a volume may have another caption in the list than in the grid.
  bool Shows(int row, int column, const Text& value);

  // The unit types of "Restore Default".
  std::vector<Text> UnitTypes() const;
  // Throws std::runtime_error when a line could not be made. `unit_type` is one of UnitTypes.
  void RestoreDefault(const Text& unit_type);

  // Saves all rows. Throws std::runtime_error with what the control reports.
  void Apply();

 private:
  WhyRefused ChooseOpened(int row, int column, const Text& value);
  // For an editor that stands for a whole cell.
  // The caption in the list of the volume that the control shows so for a line of the row's type.
  std::optional<Text> ListedVolume(int row, const Text& shown);
  WhyRefused Pick(int row, int column, memory::MemoryComboBox& list, const Text& value);
  WhyRefused Write(int row, int column, memory::MemoryTextBox& box, const Text& value);
  // For a cell that a list of names and one of numbers share.
  WhyRefused PickPair(int row, int column, const Text& value);

  RowCells Cells(int row) const { return CellsOf(form_.LVRDVLineConfig, row); }
  Text TakeMessages();

  const size_t longest_label_;
  memory::MemoryForm form_;
  ucRDVLineConfig control_;
};

}  // namespace rdv::lines
