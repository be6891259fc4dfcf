#include "control/cell_walk.h"

#include "rules/editors.h"

namespace rdv {
CellWalk::CellWalk(const Form& form, CellEditing& editing)
    : form_(form), editing_(editing), column_(editing.FirstEditedColumn()) {}

void CellWalk::EditCurrentCell() {
  const LineGrid& grid = form_.LVRDVLineConfig;
  const auto row = grid.SelectedItem() ? grid.SelectedItem() : grid.FocusedRow();
  if (!row || Open(*row, column_)) return;
  const int last = editing_.LastEditedColumn();
  for (int column = editing_.FirstEditedColumn(); column <= last; ++column) {
    if (Open(*row, column)) return;
  }
}

void CellWalk::EditNextCell(bool backward) {
  if (editing_.FocusOtherHalf(backward)) return;
  const LineGrid& grid = form_.LVRDVLineConfig;
  const int first = editing_.FirstEditedColumn();
  const int last = editing_.LastEditedColumn();
  const int step = backward ? -1 : 1;
  int row = grid.SelectedItem().value_or(1);
  int column = column_;
  for (;;) {
    column += step;
    if (column < first || column > last) {
      row += step;
      column = backward ? last : first;
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

}  // namespace rdv
