// Editing by keyboard: from cell to cell.
#pragma once

#include "control/cell_editing.h"
#include "widgets/form.h"

namespace rdv {

// Opening a cell writes nothing and leaves rows that are selected together selected. Cells without
// an editor are passed over.
class CellWalk {
 public:
  // Both outlive the object.
  CellWalk(const Form& form, CellEditing& editing);

  // Opens the cell of the current row in the column that was opened last by keyboard, else the
  // first one of the row that has an editor. The current row is the selected item, else the focused
  // one; without either nothing happens.
  void EditCurrentCell();

  // Goes on from the open editor, also from one half of a pair to the other; at either end of the
  // grid editing is over.
  void EditNextCell(bool backward);

  // Hides the editors and gives the focus back to the grid.
  void StopEditing();
  // The same, and the cells are again what they were when the editor was opened.
  void CancelEditing();

 private:
  bool Open(int row, int column);

  const Form& form_;
  CellEditing& editing_;
  int column_;  // of the cell opened last
};

}  // namespace rdv
