// The grid of lines: a list in report view whose rows are whole-row selectable.
#pragma once

#include <functional>
#include <optional>

#include "widgets/widget.h"

namespace rdv {

// Rows and columns are counted from 1, as the column headers are. Row arguments must exist:
// a position outside 1 to RowCount raises 9.
class LineGrid : public Widget {
 public:
  // Position and size of the grid in the container.
  virtual Twips Left() const = 0;
  virtual Twips Top() const = 0;
  virtual Twips Width() const = 0;
  virtual Twips Height() const = 0;

  // Report view, full-row select, multiple selection, labels not editable, selection shown without
  // the focus, headers not draggable, no sorting.
  virtual void SetReportView() = 0;
  virtual void RemoveColumns() = 0;
  virtual void AddColumn(TextView caption, Twips width) = 0;
  virtual int ColumnCount() const = 0;
  // From the left edge of the list's content, without the scroll.
  virtual Twips ColumnLeft(int column) const = 0;
  virtual Twips ColumnWidth(int column) const = 0;

  virtual int RowCount() const = 0;
  virtual void RemoveRows() = 0;
  // At the end, with empty cells but for column 1. Raises 35602 when the key is taken; nothing is
  // added then. A new row is not selected.
  virtual void AddRow(TextView key, TextView text) = 0;
  virtual Text Key(int row) const = 0;
  virtual std::optional<int> FindRow(TextView key) const = 0;
  virtual Text Cell(int row, int column) const = 0;
  virtual void SetCell(int row, int column, TextView text) = 0;

  // The row that the arrow keys move; it need not be selected.
  virtual std::optional<int> FocusedRow() const = 0;
  // Gives the row the focus within the grid and selects it, alone unless it is selected already.
  virtual void GoToRow(int row) = 0;
  // Scrolls a cell into sight, as far as it fits. No handler runs.
  virtual void ShowCell(int row, int column) = 0;

  // Relative to the grid, with the scroll in them.
  virtual Twips RowLeft(int row) const = 0;
  virtual Twips RowTop(int row) const = 0;
  virtual Twips RowHeight(int row) const = 0;

  virtual bool Selected(int row) const = 0;
  virtual void SetSelected(int row, bool selected) = 0;
  // The row with the focus when it is selected, else the first selected row, else none.
  virtual std::optional<int> SelectedItem() const = 0;

  // The row under a point of the grid. A point on the header, below the last row or right of the
  // last column hits none.
  virtual std::optional<int> HitTest(Twips x, Twips y) const = 0;

  // The order on a press: mouse down, the list's own change of selection, item click (not when
  // ctrl has just deselected the row). On the release: mouse up.
  std::function<void(Twips x, Twips y)> on_mouse_down;
  std::function<void(int row)> on_item_click;
  std::function<void(Twips x, Twips y)> on_mouse_up;
  std::function<void(char16_t key)> on_key_press;  // ctrl+a is 1; the list gets it afterwards
  std::function<void(int column)> on_column_click;
  // A scroll message or a press on the header, its dividers included, before the grid acts on it.
  std::function<void()> on_before_move;

  // By keyboard: the current cell is to be edited, then the next or the previous one; editing is
  // over; editing is over and what it has changed since the cell was opened is to be undone.
  std::function<void()> on_edit;
  std::function<void(bool backward)> on_edit_next;
  std::function<void()> on_edit_end;
  std::function<void()> on_edit_cancel;
};

}  // namespace rdv
