#include "widgets/win32/line_grid_window.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "runtime/error.h"
#include "widgets/win32/wide.h"

namespace rdv::win32 {

LineGridWindow::LineGridWindow(HWND parent, int id) {
  Create(parent, {.window_class = WC_LISTVIEWW,
                  .style = WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_SHOWSELALWAYS,
                  .id = id});
  LineGridWindow::OnMade();
}

void LineGridWindow::OnMade() {
  hook_ = std::make_unique<WindowHook>(Handle(), static_cast<WindowWatcher&>(*this));
  SetReportView();
}

void LineGridWindow::Remember() {
  WindowWidget::Remember();
  kept_rows_.clear();
  kept_focus_ = FocusedRow();
  kept_scroll_ = {GetScrollPos(Handle(), SB_HORZ), static_cast<LONG>(Send(LVM_GETTOPINDEX))};
  for (int row = 1; row <= RowCount(); ++row) {
    KeptRow& kept = kept_rows_.emplace_back(std::vector<Text>(), Selected(row));
    for (int column = 1; column <= ColumnCount(); ++column) kept.cells.push_back(Cell(row, column));
  }
}

void LineGridWindow::MakeAnew(HWND parent) {
  WindowWidget::MakeAnew(parent);
  pressed_.reset();
  for (int column = 1; column <= ColumnCount(); ++column) InsertColumn(column);
  int row = 0;
  for (const KeptRow& kept : kept_rows_) {
    InsertRow(++row, {});
    for (size_t i = 0; i < kept.cells.size(); ++i)
      SetCell(row, static_cast<int>(i) + 1, kept.cells[i]);
    SetSelected(row, kept.selected);
  }
  if (kept_focus_) SetState(*kept_focus_, LVIS_FOCUSED, LVIS_FOCUSED);
}

void LineGridWindow::Place(const Rectangle& place, Scale scale, const TextSizes& texts) {
  place_ = place;
  scale_ = scale;
  texts_ = texts;
  SetRowHeight();
  MoveTo(Handle(), scale.Pixels(place));
  ApplyColumnWidths();
  ScrollAsBefore();
}

// Once, when a grid that was made anew has its size.
void LineGridWindow::ScrollAsBefore() {
  const bool scrolled = kept_scroll_.x > 0 || kept_scroll_.y > 0;
  if (!scrolled || RowCount() == 0) return;
  const POINT by = std::exchange(kept_scroll_, {});
  const RECT row = RowRectangle(1);
  Send(LVM_SCROLL, static_cast<WPARAM>(by.x), by.y * (row.bottom - row.top));
}

int LineGridWindow::FirstSeenColumn() const {
  const auto first = std::ranges::find(columns_, false, &Column::hidden);
  return first == columns_.end() ? 0 : static_cast<int>(first - columns_.begin()) + 1;
}

Text LineGridWindow::RowName(int row) const {
  const int column = FirstSeenColumn();
  if (column == 0) return {};
  return columns_[static_cast<size_t>(column - 1)].caption + u" " + Cell(row, column);
}

Text LineGridWindow::RowLabel(int row) const {
  return Cell(row, ColumnCount());
}

bool LineGridWindow::NamesRow(int column) const {
  return column == FirstSeenColumn() || column == ColumnCount();
}

void LineGridWindow::RefreshColors() {
  Send(LVM_SETBKCOLOR, 0, static_cast<LPARAM>(GetSysColor(COLOR_WINDOW)));
  Send(LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(GetSysColor(COLOR_WINDOW)));
  Send(LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(GetSysColor(COLOR_WINDOWTEXT)));
  InvalidateRect(Handle(), nullptr, TRUE);
}

void LineGridWindow::SetReportView() {
  constexpr DWORD kStyles = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, kStyles | LVS_EX_HEADERDRAGDROP, kStyles);
  HookHeader();
}

void LineGridWindow::RemoveColumns() {
  header_tips_.Close();
  while (Send(LVM_DELETECOLUMN, 0)) {
  }
  columns_.clear();
}

void LineGridWindow::AddColumn(TextView caption, Twips width) {
  columns_.push_back({Text(caption), width, width == 0});
  InsertColumn(ColumnCount());
  header_tips_.Outdate();
}

void LineGridWindow::InsertColumn(int column) {
  Text text = columns_[static_cast<size_t>(column - 1)].caption;
  LVCOLUMNW inserted = {};
  inserted.mask = LVCF_FMT | LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
  inserted.fmt = LVCFMT_LEFT;
  inserted.cx =
      scale_.Pixels(ColumnLeft(column) + ColumnWidth(column)) - scale_.Pixels(ColumnLeft(column));
  inserted.pszText = reinterpret_cast<wchar_t*>(text.data());
  inserted.iSubItem = column - 1;
  resizing_columns_ = true;
  const LRESULT index =
      Send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(column - 1), reinterpret_cast<LPARAM>(&inserted));
  resizing_columns_ = false;
  if (index < 0) RaiseOutOfMemory();
}

Twips LineGridWindow::ColumnLeft(int column) const {
  CheckColumn(column);
  Twips left = 0;
  for (int before = 1; before < column; ++before) left += ColumnWidth(before);
  return left;
}

Twips LineGridWindow::ColumnWidth(int column) const {
  CheckColumn(column);
  return columns_[static_cast<size_t>(column - 1)].width;
}

int LineGridWindow::RowCount() const {
  return static_cast<int>(Send(LVM_GETITEMCOUNT));
}

void LineGridWindow::RemoveRows() {
  if (on_rows_going) on_rows_going();
  Send(LVM_DELETEALLITEMS);
  Send(LVM_SETSELECTIONMARK, 0, -1);
  keys_.clear();
}

void LineGridWindow::AddRow(TextView key, TextView text) {
  if (FindRow(key)) Raise(LanguageError::KeyNotUnique);
  keys_.reserve(keys_.size() + 1);
  InsertRow(RowCount() + 1, text);
  keys_.emplace_back(key);
}

void LineGridWindow::InsertRow(int row, TextView text) {
  Text copy(text);
  LVITEMW item = {};
  item.mask = LVIF_TEXT;
  item.iItem = row - 1;
  item.pszText = reinterpret_cast<wchar_t*>(copy.data());
  if (Send(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) < 0) RaiseOutOfMemory();
}

Text LineGridWindow::Key(int row) const {
  CheckRow(row);
  return keys_[static_cast<size_t>(row - 1)];
}

std::optional<int> LineGridWindow::FindRow(TextView key) const {
  const auto found = std::find(keys_.begin(), keys_.end(), key);
  if (found == keys_.end()) return std::nullopt;
  return static_cast<int>(found - keys_.begin()) + 1;
}

Text LineGridWindow::Cell(int row, int column) const {
  CheckRow(row);
  CheckColumn(column);
  for (size_t capacity = 256;; capacity *= 2) {
    Text text(capacity, u'\0');
    LVITEMW item = {};
    item.iSubItem = column - 1;
    item.pszText = reinterpret_cast<wchar_t*>(text.data());
    item.cchTextMax = static_cast<int>(capacity);
    const auto length = static_cast<size_t>(
        Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&item)));
    if (length + 1 < capacity) {
      text.resize(length);
      return text;
    }
  }
}

void LineGridWindow::SetCell(int row, int column, TextView text) {
  CheckRow(row);
  CheckColumn(column);
  Text copy(text);
  LVITEMW item = {};
  item.iSubItem = column - 1;
  item.pszText = reinterpret_cast<wchar_t*>(copy.data());
  if (!Send(LVM_SETITEMTEXTW, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&item)))
    RaiseOutOfMemory();
  if (on_cell_set) on_cell_set(row, column);
}

Twips LineGridWindow::RowLeft(int row) const {
  return scale_.ToTwips(RowRectangle(row).left);
}

Twips LineGridWindow::RowTop(int row) const {
  return scale_.ToTwips(RowRectangle(row).top);
}

Twips LineGridWindow::RowHeight(int row) const {
  const RECT rectangle = RowRectangle(row);
  return scale_.ToTwips(rectangle.bottom - rectangle.top);
}

bool LineGridWindow::Selected(int row) const {
  CheckRow(row);
  return Send(LVM_GETITEMSTATE, static_cast<WPARAM>(row - 1), LVIS_SELECTED) != 0;
}

void LineGridWindow::SetSelected(int row, bool selected) {
  CheckRow(row);
  SetState(row, selected ? LVIS_SELECTED : 0, LVIS_SELECTED);
}

std::optional<int> LineGridWindow::SelectedItem() const {
  if (const auto focused = FocusedRow(); focused && Selected(*focused)) return focused;
  const LRESULT first = Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
  if (first < 0) return std::nullopt;
  return static_cast<int>(first) + 1;
}

std::optional<int> LineGridWindow::FocusedRow() const {
  const LRESULT focused = Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
  if (focused < 0) return std::nullopt;
  return static_cast<int>(focused) + 1;
}

std::optional<int> LineGridWindow::HitTest(Twips x, Twips y) const {
  return RowAt({scale_.Pixels(x), scale_.Pixels(y)});
}

LRESULT LineGridWindow::OnNotify(const NMHDR& header) {
  if (header.code == LVN_COLUMNCLICK) {
    Notify(on_column_click, reinterpret_cast<const NMLISTVIEW&>(header).iSubItem + 1);
  }
  return 0;
}

LRESULT LineGridWindow::Send(UINT message, WPARAM wparam, LPARAM lparam) const {
  return SendMessageW(Handle(), message, wparam, lparam);
}

HWND LineGridWindow::Header() const {
  return reinterpret_cast<HWND>(Send(LVM_GETHEADER));
}

void LineGridWindow::CheckRow(int row) const {
  if (row < 1 || row > RowCount()) Raise(LanguageError::SubscriptOutOfRange);
}

void LineGridWindow::CheckColumn(int column) const {
  if (column < 1 || column > ColumnCount()) Raise(LanguageError::SubscriptOutOfRange);
}

RECT LineGridWindow::RowRectangle(int row) const {
  CheckRow(row);
  RECT rectangle = {};
  rectangle.left = LVIR_BOUNDS;
  Send(LVM_GETITEMRECT, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&rectangle));
  return rectangle;
}

int LineGridWindow::HeaderHeight() const {
  RECT rectangle = {};
  GetWindowRect(Header(), &rectangle);
  return rectangle.bottom - rectangle.top;
}

int LineGridWindow::TotalWidth() const {
  return columns_.empty() ? 0 : scale_.Pixels(ColumnLeft(ColumnCount()) + columns_.back().width);
}

std::optional<int> LineGridWindow::RowAt(POINT point) const {
  if (RowCount() == 0 || point.y < HeaderHeight()) return std::nullopt;
  const RECT first = RowRectangle(1);
  if (point.x < first.left || point.x > first.left + TotalWidth()) return std::nullopt;
  const int row = (point.y - first.top) / (first.bottom - first.top) + 1;
  if (point.y < first.top || row > RowCount()) return std::nullopt;
  return row;
}

// A list view makes its rows a pixel higher than the images that it is given.
void LineGridWindow::SetRowHeight() {
  const int height = scale_.Pixels(texts_.GridRowHeight()) - 1;
  const HIMAGELIST images = ImageList_Create(1, height, ILC_COLOR, 0, 1);
  if (!images) return;  // the rows keep the height that the list gives them
  const auto previous = reinterpret_cast<HIMAGELIST>(
      Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images)));
  if (previous) ImageList_Destroy(previous);
}

void LineGridWindow::ApplyColumnWidths() {
  resizing_columns_ = true;
  Twips edge = 0;
  for (size_t index = 0; index < columns_.size(); ++index) {
    const int left = scale_.Pixels(edge);
    edge += columns_[index].width;
    Send(LVM_SETCOLUMNWIDTH, index, scale_.Pixels(edge) - left);
  }
  resizing_columns_ = false;
  header_tips_.Outdate();
}

void LineGridWindow::SetState(int row, UINT state, UINT mask) {
  LVITEMW item = {};
  item.state = state;
  item.stateMask = mask;
  Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&item));
}

}  // namespace rdv::win32
