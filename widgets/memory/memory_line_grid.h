// The grid of lines without a window. It does what the platform's list view does in report view, as
// far as the control or its user can see it.
#pragma once

#include <vector>

#include "widgets/layout.h"
#include "widgets/line_grid.h"
#include "widgets/memory/memory_widget.h"

namespace rdv::memory {

struct HeldKeys {
  bool ctrl = false;
  bool shift = false;
};

class MemoryLineGrid : public MemoryWidget<LineGrid> {
 public:
  MemoryLineGrid(std::string name, Focus& focus, const Widget* frame, Rectangle place)
      : MemoryWidget(std::move(name), focus, frame), place_(place) {}

  Twips Left() const override { return place_.left; }
  Twips Top() const override { return place_.top; }
  Twips Width() const override { return place_.width; }
  Twips Height() const override { return place_.height; }

  // It is in no other view.
  void SetReportView() override {}
  void RemoveColumns() override;
  void AddColumn(TextView caption, Twips width) override;
  int ColumnCount() const override { return static_cast<int>(columns_.size()); }
  Twips ColumnLeft(int column) const override;
  Twips ColumnWidth(int column) const override { return ColumnAt(column).width; }
  const Text& ColumnCaption(int column) const { return ColumnAt(column).caption; }

  int RowCount() const override { return static_cast<int>(rows_.size()); }
  void RemoveRows() override;
  void AddRow(TextView key, TextView text) override;
  Text Key(int row) const override { return RowAt(row).key; }
  std::optional<int> FindRow(TextView key) const override;
  Text Cell(int row, int column) const override;
  void SetCell(int row, int column, TextView text) override;

  Twips RowLeft(int row) const override;
  Twips RowTop(int row) const override;
  Twips RowHeight(int row) const override;

  bool Selected(int row) const override { return RowAt(row).selected; }
  void SetSelected(int row, bool selected) override { RowAt(row).selected = selected; }
  std::optional<int> SelectedItem() const override;
  std::optional<int> FocusedRow() const override { return focused_row_; }
  void GoToRow(int row) override;
  void ShowCell(int row, int column) override;

  std::optional<int> HitTest(Twips x, Twips y) const override;

  // The left button is pressed and released at a point, with those keys held. On the header that is
  // a click on the header.
  Refusal UserClick(Twips x, Twips y, HeldKeys held = {});
  // In the middle of a cell, which has to be in sight.
  Refusal UserClickCell(int row, int column, HeldKeys held = {});
  // The key goes to the grid, which takes the focus; ctrl+a is 1.
  Refusal UserKey(char16_t key);
  // F2 on the grid, which has or takes the focus.
  Refusal UserEditKey();
  // An arrow key on the grid, to the row above (-1) or below (1). The list answers it by itself.
  Refusal UserMoveRow(int step);
  Refusal UserColumnClick(int column);
  // The header's divider is dragged until the column is that wide.
  Refusal UserResizeColumn(int column, Twips width);
  // By so much, held at the ends; vertically in whole rows, the nearest number of them.
  Refusal UserScrollHorizontally(Twips distance);
  Refusal UserScrollVertically(Twips distance);

 private:
  struct Column {
    Text caption;
    Twips width;
    bool hidden;  // added without a width: the user never gets at it
  };
  struct Row {
    Text key;
    std::vector<Text> cells;
    bool selected = false;
  };

  const Column& ColumnAt(int column) const;
  const Row& RowAt(int row) const;
  Row& RowAt(int row);

  Twips ContentWidth() const;
  int WholeRowsInSight() const;
  void ShowRow(int row);
  void HoldScrollAtTheEnds();
  bool InSight(Twips x, Twips y) const;
  std::optional<int> ColumnAtPoint(Twips x) const;

  void SelectByPress(std::optional<int> row, HeldKeys held);
  void DeselectAll();

  const Rectangle place_;
  std::vector<Column> columns_;
  std::vector<Row> rows_;
  std::optional<int> focused_row_;
  std::optional<int> anchor_;  // where a range of selected rows starts
  Twips scrolled_right_ = 0;
  int scrolled_down_ = 0;  // rows above the first one in sight
};

}  // namespace rdv::memory
