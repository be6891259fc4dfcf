#include "widgets/memory/memory_line_grid.h"

#include <algorithm>
#include <cmath>

#include "runtime/error.h"

namespace rdv::memory {

void MemoryLineGrid::RemoveColumns() {
  columns_.clear();
  HoldScrollAtTheEnds();
}

void MemoryLineGrid::AddColumn(TextView caption, Twips width) {
  columns_.push_back({Text(caption), width, width == 0});
  for (Row& row : rows_) row.cells.resize(std::max(row.cells.size(), columns_.size()));
}

Twips MemoryLineGrid::ColumnLeft(int column) const {
  ColumnAt(column);
  Twips left = 0;
  for (int before = 1; before < column; ++before) left += ColumnAt(before).width;
  return left;
}

void MemoryLineGrid::RemoveRows() {
  rows_.clear();
  focused_row_.reset();
  anchor_.reset();
  HoldScrollAtTheEnds();
}

void MemoryLineGrid::AddRow(TextView key, TextView text) {
  if (FindRow(key)) Raise(LanguageError::KeyNotUnique);
  Row row;
  row.key = key;
  row.cells.resize(std::max<size_t>(columns_.size(), 1));
  row.cells[0] = text;
  rows_.push_back(std::move(row));
}

std::optional<int> MemoryLineGrid::FindRow(TextView key) const {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.key == key; });
  if (found == rows_.end()) return std::nullopt;
  return static_cast<int>(found - rows_.begin()) + 1;
}

Text MemoryLineGrid::Cell(int row, int column) const {
  ColumnAt(column);
  return RowAt(row).cells[static_cast<size_t>(column - 1)];
}

void MemoryLineGrid::SetCell(int row, int column, TextView text) {
  ColumnAt(column);
  RowAt(row).cells[static_cast<size_t>(column - 1)] = text;
}

Twips MemoryLineGrid::RowLeft(int row) const {
  RowAt(row);
  return -scrolled_right_;
}

Twips MemoryLineGrid::RowTop(int row) const {
  RowAt(row);
  return kGridHeaderHeight + (row - 1 - scrolled_down_) * kGridRowHeight;
}

Twips MemoryLineGrid::RowHeight(int row) const {
  RowAt(row);
  return kGridRowHeight;
}

std::optional<int> MemoryLineGrid::SelectedItem() const {
  if (focused_row_ && Selected(*focused_row_)) return focused_row_;
  for (int row = 1; row <= RowCount(); ++row) {
    if (Selected(row)) return row;
  }
  return std::nullopt;
}

void MemoryLineGrid::GoToRow(int row) {
  if (!Selected(row)) {
    DeselectAll();
    SetSelected(row, true);
    anchor_ = row;
  }
  focused_row_ = row;
}

void MemoryLineGrid::ShowCell(int row, int column) {
  RowAt(row);
  const Twips left = ColumnLeft(column);
  const Twips right = left + ColumnWidth(column);
  if (left < scrolled_right_) {
    scrolled_right_ = left;
  } else if (right > scrolled_right_ + Width()) {
    scrolled_right_ = right - Width();
  }
  ShowRow(row);
}

void MemoryLineGrid::ShowRow(int row) {
  const int last_above = std::max(row - WholeRowsInSight(), 0);
  scrolled_down_ = std::clamp(scrolled_down_, last_above, row - 1);
  HoldScrollAtTheEnds();
}

std::optional<int> MemoryLineGrid::HitTest(Twips x, Twips y) const {
  if (y < kGridHeaderHeight || x + scrolled_right_ < 0 || x + scrolled_right_ > ContentWidth()) {
    return std::nullopt;
  }
  const double below_first = std::floor((y - kGridHeaderHeight) / kGridRowHeight);
  const double row = below_first + scrolled_down_ + 1;
  if (row > RowCount()) return std::nullopt;
  return static_cast<int>(row);
}

Refusal MemoryLineGrid::UserClick(Twips x, Twips y, HeldKeys held) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  if (x < 0 || x >= Width() || y < 0 || y >= Height()) return refusal::kOutsideGrid;
  if (y < kGridHeaderHeight) {
    const std::optional<int> column = ColumnAtPoint(x);
    Notify(on_before_move);
    if (column) Notify(on_column_click, *column);
    return std::nullopt;
  }
  Notify(on_mouse_down, x, y);
  SetFocus();
  const std::optional<int> row = HitTest(x, y);
  SelectByPress(row, held);
  const bool just_deselected = row && held.ctrl && !Selected(*row);
  if (row && !just_deselected) Notify(on_item_click, *row);
  Notify(on_mouse_up, x, y);
  return std::nullopt;
}

Refusal MemoryLineGrid::UserClickCell(int row, int column, HeldKeys held) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  if (row < 1 || row > RowCount()) return refusal::kNoSuchRow;
  if (column < 1 || column > ColumnCount()) return refusal::kNoSuchColumn;
  const Twips x = RowLeft(row) + ColumnLeft(column) + ColumnWidth(column) / 2;
  const Twips y = RowTop(row) + RowHeight(row) / 2;
  if (!InSight(x, y)) return refusal::kOutsideGrid;
  return UserClick(x, y, held);
}

Refusal MemoryLineGrid::UserKey(char16_t key) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  Notify(on_key_press, key);
  return std::nullopt;
}

Refusal MemoryLineGrid::UserEditKey() {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  Notify(on_edit);
  return std::nullopt;
}

Refusal MemoryLineGrid::UserMoveRow(int step) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  const int row = focused_row_.value_or(0) + step;
  if (row < 1 || row > RowCount()) return std::nullopt;
  SelectByPress(row, {});
  ShowRow(row);
  return std::nullopt;
}

Refusal MemoryLineGrid::UserColumnClick(int column) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  if (column < 1 || column > ColumnCount()) return refusal::kNoSuchColumn;
  if (ColumnAt(column).hidden) return refusal::kHidden;
  Notify(on_before_move);
  Notify(on_column_click, column);
  return std::nullopt;
}

Refusal MemoryLineGrid::UserResizeColumn(int column, Twips width) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  if (column < 1 || column > ColumnCount()) return refusal::kNoSuchColumn;
  if (ColumnAt(column).hidden) return refusal::kHidden;
  Notify(on_before_move);
  columns_[static_cast<size_t>(column - 1)].width = std::max(width, 0.0);
  HoldScrollAtTheEnds();
  return std::nullopt;
}

Refusal MemoryLineGrid::UserScrollHorizontally(Twips distance) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  Notify(on_before_move);
  scrolled_right_ += distance;
  HoldScrollAtTheEnds();
  return std::nullopt;
}

Refusal MemoryLineGrid::UserScrollVertically(Twips distance) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  Notify(on_before_move);
  const double rows = std::round(distance / kGridRowHeight);
  scrolled_down_ =
      static_cast<int>(std::clamp(scrolled_down_ + rows, 0.0, static_cast<double>(RowCount())));
  HoldScrollAtTheEnds();
  return std::nullopt;
}

const MemoryLineGrid::Column& MemoryLineGrid::ColumnAt(int column) const {
  if (column < 1 || column > ColumnCount()) Raise(LanguageError::SubscriptOutOfRange);
  return columns_[static_cast<size_t>(column - 1)];
}

const MemoryLineGrid::Row& MemoryLineGrid::RowAt(int row) const {
  if (row < 1 || row > RowCount()) Raise(LanguageError::SubscriptOutOfRange);
  return rows_[static_cast<size_t>(row - 1)];
}

MemoryLineGrid::Row& MemoryLineGrid::RowAt(int row) {
  return const_cast<Row&>(std::as_const(*this).RowAt(row));
}

Twips MemoryLineGrid::ContentWidth() const {
  return columns_.empty() ? 0 : ColumnLeft(ColumnCount()) + ColumnWidth(ColumnCount());
}

int MemoryLineGrid::WholeRowsInSight() const {
  return static_cast<int>((Height() - kGridHeaderHeight) / kGridRowHeight);
}

void MemoryLineGrid::HoldScrollAtTheEnds() {
  scrolled_right_ = std::clamp(scrolled_right_, 0.0, std::max(0.0, ContentWidth() - Width()));
  scrolled_down_ = std::clamp(scrolled_down_, 0, std::max(0, RowCount() - WholeRowsInSight()));
}

bool MemoryLineGrid::InSight(Twips x, Twips y) const {
  return x >= 0 && x < Width() && y >= kGridHeaderHeight && y < Height();
}

std::optional<int> MemoryLineGrid::ColumnAtPoint(Twips x) const {
  Twips right = -scrolled_right_;
  for (int column = 1; column <= ColumnCount(); ++column) {
    right += ColumnWidth(column);
    if (x < right) return column;
  }
  return std::nullopt;
}

// What a press does to the selection, and where it leaves the focused row and the anchor:
//
//              selection                        focused row   anchor
//   plain      this row alone                   this row      this row
//   ctrl       this row is toggled              this row      this row
//   shift      the rows from the anchor, alone  this row      stays; this row where there was none
//   ctrl+shift the rows from the anchor, added  this row      stays; this row where there was none
//   no row     taken off, unless ctrl or shift  stays         stays
void MemoryLineGrid::SelectByPress(std::optional<int> row, HeldKeys held) {
  if (!row) {
    if (!held.ctrl && !held.shift) DeselectAll();
    return;
  }
  focused_row_ = row;
  if (!held.shift || !anchor_) anchor_ = row;
  if (held.ctrl && !held.shift) {
    SetSelected(*row, !Selected(*row));
    return;
  }
  if (!held.ctrl) DeselectAll();
  const auto [first, last] = std::minmax(*anchor_, *row);
  for (int within = first; within <= last; ++within) SetSelected(within, true);
}

void MemoryLineGrid::DeselectAll() {
  for (Row& row : rows_) row.selected = false;
}

}  // namespace rdv::memory
