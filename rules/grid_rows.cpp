#include "rules/grid_rows.h"

#include "runtime/error.h"

namespace rdv {

Text RowKey(int number) {
  return u"a" + Decimal(number);
}

void AddRow(LineGrid& grid, TextView key, const RowCells& cells) {
  // Before the control is loaded the grid has no columns: rather no row than half a row.
  if (grid.ColumnCount() < kColumnCount) Raise(LanguageError::SubscriptOutOfRange);
  grid.AddRow(key, cells[column::kLineTypeCode]);
  const int row = grid.RowCount();
  for (int column = column::kPartitionCode; column <= kColumnCount; ++column) {
    grid.SetCell(row, column, cells[column]);
  }
}

void OverwriteRow(LineGrid& grid, int row, const RowCells& cells) {
  for (int column = 1; column <= kColumnCount; ++column) grid.SetCell(row, column, cells[column]);
}

RowCells CellsOf(const LineGrid& grid, int row) {
  RowCells cells;
  for (int column = 1; column <= kColumnCount; ++column) cells[column] = grid.Cell(row, column);
  return cells;
}

}  // namespace rdv
