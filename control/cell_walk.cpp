#include "control/cell_walk.h"

#include <array>
#include <utility>

#include "rules/editors.h"

namespace rdv {
namespace {

constexpr int kFirstEditedColumn = column::kPartition;
constexpr int kLastEditedColumn = column::kLabel;

}  // namespace

void CellWalk::EditCurrentCell() {
  const LineGrid& grid = form_.LVRDVLineConfig;
  const auto row = grid.SelectedItem() ? grid.SelectedItem() : grid.FocusedRow();
  if (!row || Open(*row, column_)) return;
  for (int column = kFirstEditedColumn; column <= kLastEditedColumn; ++column) {
    if (Open(*row, column)) return;
  }
}

void CellWalk::EditNextCell(bool backward) {
  if (StepWithinPair(backward)) return;
  const LineGrid& grid = form_.LVRDVLineConfig;
  const int step = backward ? -1 : 1;
  int row = grid.SelectedItem().value_or(1);
  int column = column_;
  for (;;) {
    column += step;
    if (column < kFirstEditedColumn || column > kLastEditedColumn) {
      row += step;
      column = backward ? kLastEditedColumn : kFirstEditedColumn;
    }
    if (row < 1 || row > grid.RowCount()) return StopEditing();
    if (Open(row, column)) return;
  }
}

void CellWalk::StopEditing() {
  ShowEditors(form_, false);
  form_.LVRDVLineConfig.SetFocus();
}

void CellWalk::CancelEditing() {
  StopEditing();
  editing_.RestoreCells();
}

bool CellWalk::Open(int row, int column) {
  if (!editing_.OpenCell(row, column)) return false;
  column_ = column;
  return true;
}

bool CellWalk::StepWithinPair(bool backward) {
  const std::array<std::pair<ComboBox*, ComboBox*>, 2> pairs = {{
      {&form_.cmbStartingNodeName, &form_.cmbStartingNodeNumber},
      {&form_.cmbModeType, &form_.cmbModeNumber},
  }};
  for (const auto& [left, right] : pairs) {
    const ComboBox* from = backward ? right : left;
    ComboBox* to = backward ? left : right;
    if (!from->Focused() || !to->Visible()) continue;
    to->SetFocus();
    return true;
  }
  return false;
}

}  // namespace rdv
