// The grid of lines on the platform's list view.
#pragma once

#include <memory>
#include <vector>

#include "widgets/line_grid.h"
#include "widgets/win32/list_view_hook.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

// The list view has no border of its own (its frame draws one), so a point of the grid is a point
// of the list view. Column widths stay exact twips until the user drags a divider. Presses never
// reach the list view, whose drag detection would hold back the selection until the release: the
// order of mouse down, selection and item click is made here.
class LineGridWindow : public WindowWidget<LineGrid>, private GridWatcher {
 public:
  LineGridWindow(HWND parent, int id);
  ~LineGridWindow() override { Unhook(); }

  // Puts the window procedures of list view and header back; must have run when the windows are
  // destroyed.
  void Unhook() {
    UnhookHeader();
    hook_.reset();
  }

  void Place(const Rectangle& place, Scale scale);
  void RefreshColors();

  // For the keyboard, which opens a cell as a press and release at its middle does. Aiming scrolls
  // the cell into view and tells of the press; opening tells of the rest, and leaves rows that are
  // selected together selected.
  void AimAtCell(int row, int column);
  void OpenCell(int row, int column);
  // From 1; the row that the arrow keys move.
  std::optional<int> FocusedRow() const;

  Twips Left() const override { return place_.left; }
  Twips Top() const override { return place_.top; }
  Twips Width() const override { return place_.width; }
  Twips Height() const override { return place_.height; }

  void SetReportView() override;
  void RemoveColumns() override;
  void AddColumn(TextView caption, Twips width) override;
  int ColumnCount() const override { return static_cast<int>(columns_.size()); }
  Twips ColumnLeft(int column) const override;
  Twips ColumnWidth(int column) const override;

  int RowCount() const override;
  void RemoveRows() override;
  void AddRow(TextView key, TextView text) override;
  Text Key(int row) const override;
  std::optional<int> FindRow(TextView key) const override;
  Text Cell(int row, int column) const override;
  void SetCell(int row, int column, TextView text) override;

  Twips RowLeft(int row) const override;
  Twips RowTop(int row) const override;
  Twips RowHeight(int row) const override;

  bool Selected(int row) const override;
  void SetSelected(int row, bool selected) override;
  std::optional<int> SelectedItem() const override;
  std::optional<int> HitTest(Twips x, Twips y) const override;

  LRESULT OnNotify(const NMHDR& header) override;

  // F2 on the grid.
  std::function<void()> on_edit_request;

 private:
  struct Column {
    Twips width;
    bool hidden;  // added without a width: not even a drag of its divider shows it
  };

  LRESULT Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
  HWND Header() const;
  void CheckRow(int row) const;
  void CheckColumn(int column) const;
  RECT RowRectangle(int row) const;
  int HeaderHeight() const;
  int TotalWidth() const;
  std::optional<int> RowAt(POINT point) const;
  POINT MiddleOf(int row, int column) const;
  void SetRowHeight();
  void ApplyColumnWidths();
  void SetState(int row, UINT state, UINT mask);

  // The user's side, in line_grid_input.cpp.
  std::optional<LRESULT> BeforeGrid(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> BeforeHeaderNotification(const NMHEADERW& notification);
  void Press(POINT point, WPARAM keys);
  void Release(POINT point);
  void FocusRow(int row);
  bool SelectPressed(int row, bool ctrl, bool shift);
  bool ListHandlesKey(WPARAM key) const;
  void HookHeader();
  void UnhookHeader();
  static LRESULT CALLBACK HeaderProcedure(HWND header, UINT message, WPARAM wparam, LPARAM lparam);

  std::unique_ptr<ListViewHook> hook_;
  HWND hooked_header_ = nullptr;
  WNDPROC header_procedure_ = nullptr;
  Scale scale_{96};
  Rectangle place_;
  std::vector<Column> columns_;
  std::vector<Text> keys_;  // of the rows, in their order
  bool resizing_columns_ = false;
  bool pressed_ = false;
};

}  // namespace rdv::win32
