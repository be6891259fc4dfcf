#include "control/cell_editing.h"

#include <algorithm>
#include <map>
#include <utility>

#include "rules/editors.h"
#include "rules/error_report.h"
#include "widgets/layout.h"

namespace rdv {
namespace {

// How far inside the grid's right edge a label that is too wide ends.
constexpr Twips kLabelMargin = 300;
constexpr char16_t kCtrlA = 1;

void SelectFirstIfNone(ComboBox& list) {
  if (list.ListIndex() == -1 && list.ListCount() > 0) list.SetListIndex(0);
}

bool ShowsNumber(TextView shown) {
  return IsNumeric(shown) && !EqualsIgnoringCase(shown, caption::kDisabled);
}

class OpeningByKeyboard {
 public:
  explicit OpeningByKeyboard(ControlState& state) : state_(state) { state_.OpensByKeyboard = true; }
  OpeningByKeyboard(const OpeningByKeyboard&) = delete;
  OpeningByKeyboard& operator=(const OpeningByKeyboard&) = delete;
  ~OpeningByKeyboard() { state_.OpensByKeyboard = false; }

 private:
  ControlState& state_;
};

}  // namespace

CellEditing::CellEditing(const Form& form, ControlState& state, ListLoaders& loaders)
    : form_(form),
      state_(state),
      loaders_(loaders),
      cell_editors_{{
          {column::kLineType, &form.cmbLineType, kNoLineTypes, Fit::KeepHidden},
          {column::kPartition, &form.cmbPartition, kNotInstalledLines},
          {column::kStartingNode, &form.cmbStartingNodeName, kNotInstalledLines, Fit::ShowWhole,
           &ListLoaders::LoadStartingNodeToCombo, &form.cmbStartingNodeNumber},
          {column::kVolume, &form.cmbVolume, kNotInstalledLines, Fit::ShowWhole,
           &ListLoaders::LoadVolumeToCombo},
          {column::kMode, &form.cmbModeType, kNotInstalledLines, Fit::ShowWhole,
           &ListLoaders::LoadModeToCombo, &form.cmbModeNumber},
          {column::kNISOption, &form.cmbNISOption, kLinesWithoutOptions},
          {column::kEWTOption, &form.txtEWTOption, kLinesWithoutOptions},
          {column::kImpedance, &form.cmbImpedance, kLinesWithoutImpedance},
          {column::kSoftStop, &form.cmbSoftStop, kLinesWithoutImpedance},
          {column::kLabel, &form.txtLabel, kNotInstalledLines, Fit::Shrink},
      }} {}

void CellEditing::LVRDVLineConfig_MouseDown(Twips x, Twips y) {
  ShowEditors(form_, false);
  LineGrid& grid = form_.LVRDVLineConfig;
  const std::optional<int> row = grid.HitTest(x, y);
  if (!row) return;
  const CellEditor* cell = EditorAt(x - RoundToInt32(grid.RowLeft(*row)));
  if (!cell || Contains(cell->refused, LineTypeOf(grid, *row))) return;
  if (cell->load) (loaders_.*cell->load)(LineTypeOf(grid, *row));
  Place(*cell, *row);
}

// `x` from the left edge of the row. A boundary between two columns belongs to the left one.
const CellEditing::CellEditor* CellEditing::EditorAt(Twips x) const {
  const LineGrid& grid = form_.LVRDVLineConfig;
  for (const CellEditor& cell : cell_editors_) {
    const Twips left = grid.ColumnLeft(cell.column);
    if (left <= x && x <= left + grid.ColumnWidth(cell.column)) return &cell;
  }
  return nullptr;
}

Twips CellEditing::RightEdge() const {
  return form_.LVRDVLineConfig.Left() + form_.LVRDVLineConfig.Width();
}

void CellEditing::Place(const CellEditor& cell, int row) {
  const LineGrid& grid = form_.LVRDVLineConfig;
  Twips left = grid.Left() + grid.RowLeft(row);
  for (int column = column::kLine; column < cell.column; ++column) {
    left += grid.ColumnWidth(column);
  }
  const Twips top = grid.Top() + grid.RowTop(row) + kEditorTopOffset;
  const Twips width = grid.ColumnWidth(cell.column);
  if (cell.right_half) {
    PlacePair(cell, left, top, width);
    return;
  }
  cell.editor->SetLeft(left);
  cell.editor->SetTop(top);
  cell.editor->SetWidth(width);
  Show(cell);
}

void CellEditing::PlacePair(const CellEditor& cell, Twips left, Twips top, Twips width) {
  const int32_t half = RoundToInt32(width) / 2;
  Editor& name = *cell.editor;
  Editor& number = *cell.right_half;
  name.SetLeft(left);
  name.SetTop(top);
  name.SetWidth(half);
  number.SetLeft(left + name.Width());
  number.SetTop(top);
  number.SetWidth(half);
  if (name.Left() >= 0 && number.Left() + number.Width() <= RightEdge()) {
    name.SetVisible(true);
    number.SetVisible(true);
  }
}

void CellEditing::Show(const CellEditor& cell) {
  Editor& editor = *cell.editor;
  if (editor.Left() < 0) return;
  switch (cell.fit) {
    case Fit::ShowWhole:
      if (editor.Left() + editor.Width() <= RightEdge()) editor.SetVisible(true);
      break;
    case Fit::KeepHidden:
      editor.SetVisible(false);
      break;
    case Fit::Shrink:
      editor.SetVisible(true);
      ShrinkLabel();
      break;
  }
}

void CellEditing::ShrinkLabel() {
  TextBox& label = form_.txtLabel;
  const Twips room = RightEdge() - label.Left();
  if (label.Width() <= room || room < kLabelMargin) return;
  label.SetWidth(room - kLabelMargin);
}

void CellEditing::LVRDVLineConfig_ItemClick(int row) {
  RunReporting(form_.screen, u"LVRDVLineConfig_ItemClick", [&] {
    const RowCells cells = CellsOf(form_.LVRDVLineConfig, row);
    state_.BusinessRules.PartitionID = CInt(cells[column::kPartitionCode]);
    if (form_.cmbLineType.Visible()) {
      SelectByCode(form_.cmbLineType, CodeIn(cells[column::kLineTypeCode]));
    }
    LoadPartition(cells);
    if (form_.cmbStartingNodeName.Visible()) LoadStartingNode(cells);
    if (form_.cmbVolume.Visible()) LoadVolume(cells);
    if (form_.cmbModeType.Visible()) LoadMode(cells);
    if (form_.cmbImpedance.Visible()) {
      SelectByCode(form_.cmbImpedance, CodeIn(cells[column::kImpedanceCode]));
    }
    if (form_.cmbSoftStop.Visible()) {
      SelectByCode(form_.cmbSoftStop, CodeIn(cells[column::kSoftStopCode]));
    }
    if (form_.cmbNISOption.Visible()) LoadNISOption(cells);
    LoadTexts(cells);
  });
}

// The first partition is selected whatever is being edited. Its rule runs, but a click on a line
// must not move the selected lines into the first partition: their cells are put back.
void CellEditing::ResetPartition() {
  LineGrid& grid = form_.LVRDVLineConfig;
  std::map<int, std::pair<Text, Text>> before;
  ForEachSelectedRow(grid, kNoLineTypes, [&](int row) {
    before[row] = {grid.Cell(row, column::kPartitionCode), grid.Cell(row, column::kPartition)};
  });
  form_.cmbPartition.SetListIndex(0);
  for (const auto& [row, partition] : before) {
    grid.SetCell(row, column::kPartitionCode, partition.first);
    grid.SetCell(row, column::kPartition, partition.second);
  }
}

void CellEditing::LoadPartition(const RowCells& cells) {
  ResetPartition();
  if (form_.cmbPartition.Visible()) {
    SelectByCode(form_.cmbPartition, CodeIn(cells[column::kPartitionCode]));
  }
}

void CellEditing::LoadStartingNode(const RowCells& cells) {
  ComboBox& name = form_.cmbStartingNodeName;
  SelectByCode(name, CodeIn(cells[column::kStartingNodeType]));
  SelectFirstIfNone(name);
  if (SelectedEntry(name).code == node_type::kNone) {
    form_.cmbStartingNodeNumber.SetVisible(false);
  } else if (const int16_t number = CInt(cells[column::kStartingNodeNumber]); number >= 1) {
    SelectByCode(form_.cmbStartingNodeNumber, Code{number});
  }
}

void CellEditing::LoadVolume(const RowCells& cells) {
  SelectByCode(form_.cmbVolume, CodeIn(cells[column::kVolumeCode]));
  SelectFirstIfNone(form_.cmbVolume);
}

void CellEditing::LoadMode(const RowCells& cells) {
  const Code mode = CodeIn(cells[column::kModeType]);
  SelectByCode(form_.cmbModeType, mode);
  if (!Contains(ModeTypesWithNumber, mode)) {
    form_.cmbModeNumber.SetVisible(false);
  } else if (const int16_t number = CInt(cells[column::kModeNumber]); number >= 1) {
    SelectByCode(form_.cmbModeNumber, Code{number});
  }
  SelectFirstIfNone(form_.cmbModeType);
}

void CellEditing::LoadNISOption(const RowCells& cells) {
  const Text& shown = cells[column::kNISOption];
  SelectByCode(form_.cmbNISOption, Code{ShowsNumber(shown) ? CInt(shown) : 0});
}

void CellEditing::LoadTexts(const RowCells& cells) {
  if (form_.txtEWTOption.Visible()) {
    form_.txtEWTOption.SetText(u"0");
    const Text& shown = cells[column::kEWTOption];
    if (ShowsNumber(shown)) form_.txtEWTOption.SetText(shown);
  }
  if (form_.txtLabel.Visible()) form_.txtLabel.SetText(cells[column::kLabel]);
}

// The number half of a pair is never given it.
void CellEditing::FocusShownEditor() {
  for (const CellEditor& cell : cell_editors_) {
    if (cell.editor->Visible()) cell.editor->SetFocus();
  }
}

bool CellEditing::FocusOtherHalf(bool backward) {
  for (const CellEditor& cell : cell_editors_) {
    if (!cell.right_half) continue;
    const Editor* from = backward ? cell.right_half : cell.editor;
    Editor* to = backward ? cell.editor : cell.right_half;
    if (!from->Focused() || !to->Visible()) continue;
    to->SetFocus();
    return true;
  }
  return false;
}

int CellEditing::FirstEditedColumn() const {
  const auto first = std::ranges::find_if(
      cell_editors_, [](const CellEditor& cell) { return cell.fit != Fit::KeepHidden; });
  return first->column;
}

int CellEditing::LastEditedColumn() const {
  return cell_editors_.back().column;
}

void CellEditing::LVRDVLineConfig_MouseUp(Twips x, Twips y) {
  try {
    FocusShownEditor();
    LineGrid& grid = form_.LVRDVLineConfig;
    const std::optional<int> row = grid.HitTest(x, y);
    if (row && !grid.Selected(*row)) {
      grid.SetSelected(*row, true);
      LVRDVLineConfig_ItemClick(*row);
    }
    RememberCells();
  } catch (const RuntimeError& error) {
    form_.screen.ShowMessage(u"Source: " + error.Source() + u" - LVRDVLineConfig_MouseUp " +
                                 Text(kLineBreak) + u"Description: " + error.Description(),
                             message_style::kExclamation, kErrorTitle);
  }
}

bool CellEditing::OpenCell(int row, int column) {
  LineGrid& grid = form_.LVRDVLineConfig;
  grid.ShowCell(row, column);
  LVRDVLineConfig_MouseDown(
      grid.RowLeft(row) + grid.ColumnLeft(column) + grid.ColumnWidth(column) / 2,
      grid.RowTop(row) + grid.RowHeight(row) / 2);
  const auto editors = form_.Editors();
  if (std::none_of(editors.begin(), editors.end(),
                   [](const Editor* editor) { return editor->Visible(); })) {
    return false;
  }
  grid.GoToRow(row);
  const OpeningByKeyboard opening(state_);
  LVRDVLineConfig_ItemClick(row);
  FocusShownEditor();
  RememberCells();
  return true;
}

void CellEditing::RememberCells() {
  const LineGrid& grid = form_.LVRDVLineConfig;
  cells_at_opening_.clear();
  for (int row = 1; row <= grid.RowCount(); ++row) {
    if (grid.Selected(row)) cells_at_opening_.emplace(grid.Key(row), CellsOf(grid, row));
  }
}

void CellEditing::RestoreCells() {
  LineGrid& grid = form_.LVRDVLineConfig;
  for (const auto& [key, cells] : cells_at_opening_) {
    if (const std::optional<int> row = grid.FindRow(key)) OverwriteRow(grid, *row, cells);
  }
  cells_at_opening_.clear();
}

void CellEditing::LVRDVLineConfig_KeyPress(char16_t key) {
  if (key != kCtrlA) return;
  LineGrid& grid = form_.LVRDVLineConfig;
  for (int row = 1; row <= grid.RowCount(); ++row) grid.SetSelected(row, true);
}

void CellEditing::LVRDVLineConfig_ColumnClick(int) {
  ShowEditors(form_, false);
}

void CellEditing::LVRDVLineConfig_BeforeMove() {
  ShowEditors(form_, false);
}

}  // namespace rdv
