// Editing the lines in place: which editor a click on a cell brings up and where, and what it
// shows.
#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "rules/list_loaders.h"
#include "widgets/form.h"

namespace rdv {

// MouseDown, KeyPress and ColumnClick let errors out; ItemClick and MouseUp report theirs.
class CellEditing {
 public:
  // All outlive the object.
  CellEditing(const Form& form, ControlState& state, ListLoaders& loaders);

  // Places the editor of the clicked cell over it. x and y in twips from the grid's corner.
  void LVRDVLineConfig_MouseDown(Twips x, Twips y);

  // Loads the row into the editors that are visible. Selecting an entry or setting a text runs that
  // editor's rule, which writes the selected rows; so the row is taken as it stood at the start.
  void LVRDVLineConfig_ItemClick(int row);

  // Gives the focus to the editor and makes sure that the clicked row is selected.
  void LVRDVLineConfig_MouseUp(Twips x, Twips y);

  // Without the mouse: brings the cell into sight, shows its editor with the row's values and gives
  // it the focus. Nothing is written, and rows that are selected together stay selected. False,
  // with all editors hidden, for a cell without an editor.
  bool OpenCell(int row, int column);

  // From the half of a pair of editors that has the focus to the other one; false where none has.
  bool FocusOtherHalf(bool backward);

  // The columns between which cells have editors that can be seen.
  int FirstEditedColumn() const;
  int LastEditedColumn() const;

  void LVRDVLineConfig_KeyPress(char16_t key);
  void LVRDVLineConfig_ColumnClick(int column);

  // The grid is about to scroll or its header is pressed: no editor may float over another cell.
  void LVRDVLineConfig_BeforeMove();

  // Puts the cells of the rows that were selected when the last editor was opened back to what they
  // were then.
  void RestoreCells();
  // The rows are about to become those of other lines.
  void ForgetCells() { cells_at_opening_.clear(); }

 private:
  enum class Fit {
    ShowWhole,   // shown unless it would stick out of the grid
    KeepHidden,  // placed, never shown
    Shrink,      // shown, and cut to end inside the grid
  };
  using Loader = bool (ListLoaders::*)(Code line_type);

  struct CellEditor {
    int column;
    Editor* editor;
    LineTypes refused;
    Fit fit = Fit::ShowWhole;
    Loader load = nullptr;         // fills the editor's list first
    Editor* right_half = nullptr;  // of a cell that two editors share
  };

  const CellEditor* EditorAt(Twips x) const;
  void Place(const CellEditor& cell, int row);
  void PlacePair(const CellEditor& cell, Twips left, Twips top, Twips width);
  void Show(const CellEditor& cell);
  void ShrinkLabel();
  Twips RightEdge() const;

  void FocusShownEditor();
  void ResetPartition();
  void LoadPartition(const RowCells& cells);
  void LoadStartingNode(const RowCells& cells);
  void LoadVolume(const RowCells& cells);
  void LoadMode(const RowCells& cells);
  void LoadNISOption(const RowCells& cells);
  void LoadTexts(const RowCells& cells);

  void RememberCells();

  // Of the rows that were selected when an editor was opened, by their keys.
  std::map<Text, RowCells> cells_at_opening_;
  const Form& form_;
  ControlState& state_;
  ListLoaders& loaders_;
  const std::array<CellEditor, 10> cell_editors_;  // by column
};

}  // namespace rdv
