// The grid of lines on the platform's list view.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "widgets/line_grid.h"
#include "widgets/win32/header_tips.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/window_hook.h"
#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

// The list view has no border of its own (its frame draws one), so a point of the grid is a point
// of the list view. Column widths stay exact twips until the user drags a divider. Presses never
// reach the list view, whose drag detection would hold back the selection until the release: the
// order of mouse down, selection and item click is made here.
class LineGridWindow : public WindowWidget<LineGrid>, private WindowWatcher {
 public:
  LineGridWindow(HWND parent, int id);
  ~LineGridWindow() override { Unhook(); }

  // Puts the window procedures of list view and header back; must have run when the windows are
  // destroyed.
  void Unhook() {
    UnhookHeader();
    hook_.reset();
  }

  // What people call the row: the caption of the first column that they see, and what is in it;
  // the last column has a label of theirs. RowName is empty where there is nothing to see.
  Text RowName(int row) const;
  Text RowLabel(int row) const;
  bool NamesRow(int column) const;

  void Place(const Rectangle& place, Scale scale, const TextSizes& texts);
  void RefreshColors();

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
  std::optional<int> FocusedRow() const override;
  void GoToRow(int row) override;
  void ShowCell(int row, int column) override;
  std::optional<int> HitTest(Twips x, Twips y) const override;

  LRESULT OnNotify(const NMHDR& header) override;
  FocusCodes CodesOfFocus() const override { return {NM_SETFOCUS, NM_KILLFOCUS}; }

  // A cell has another text; the rows are about to go.
  std::function<void(int row, int column)> on_cell_set;
  std::function<void()> on_rows_going;

  void Remember() override;
  void MakeAnew(HWND parent) override;

 private:
  struct Column {
    Text caption;
    Twips width;
    bool hidden;  // added without a width: not even a drag of its divider shows it
  };

  struct KeptRow {
    std::vector<Text> cells;
    bool selected;
  };

  void OnMade() override;
  void InsertColumn(int column);
  void InsertRow(int row, TextView text);
  LRESULT Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
  HWND Header() const;
  void CheckRow(int row) const;
  void CheckColumn(int column) const;
  RECT RowRectangle(int row) const;
  int HeaderHeight() const;
  int TotalWidth() const;
  std::optional<int> RowAt(POINT point) const;
  void SetRowHeight();
  void ScrollAsBefore();
  void ApplyColumnWidths();
  void SetState(int row, UINT state, UINT mask);
  int FirstSeenColumn() const;  // 0 where there is none

  // The user's side, in line_grid_input.cpp.
  std::optional<LRESULT> Before(const HookedMessage& message) override;
  std::optional<LRESULT> BeforeGrid(UINT message, WPARAM wparam, LPARAM lparam);
  LRESULT BeforeHeader(const HookedMessage& message);
  std::optional<LRESULT> BeforeHeaderNotification(const NMHEADERW& notification);
  void Press(POINT point, WPARAM keys);
  void Release(POINT point);
  void ReleaseWherePressed();
  void FocusRow(int row);
  bool SelectPressed(int row, bool ctrl, bool shift);
  bool IsKeptFromList(WPARAM key) const;
  void HookHeader();
  void UnhookHeader();

  std::unique_ptr<WindowHook> hook_;
  std::unique_ptr<WindowHook> header_hook_;
  HWND hooked_header_ = nullptr;
  HeaderTips header_tips_;
  Scale scale_{96};
  TextSizes texts_;
  Rectangle place_;
  std::vector<Column> columns_;
  std::vector<Text> keys_;  // of the rows, in their order
  std::vector<KeptRow> kept_rows_;
  std::optional<int> kept_focus_;
  POINT kept_scroll_ = {};  // rows and pixels before the first that was seen; of windows that went
  bool resizing_columns_ = false;
  std::optional<POINT> pressed_;  // where a button went down that is not up again
};

}  // namespace rdv::win32
