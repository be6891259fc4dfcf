// Fills the name lists and the drop-down lists of the editors. Every entry carries its code as item
// data and its caption as text.
#pragma once

#include <cstdint>

#include "rules/control_state.h"
#include "widgets/form.h"

namespace rdv {

class DataBase;
class Recordset;

// Each loader is true when it finished. An error stops it: what it had filled by then stays, its
// block is in LoadErrorText, and it is false. Each makes a DataBase of its own where it needs one.
class ListLoaders {
 public:
  // Both outlive the loaders.
  ListLoaders(const Form& form, ControlState& state) : form_(form), state_(state) {}

  // Name lists: caption by code.
  bool Load_List_of_All_Card_Types();
  bool Load_List_of_All_Node_Names();
  bool Load_List_of_All_mode_Names();

  // Lists that stay the same whatever line is edited.
  bool LoadLineTypeToCombo();       // appends to what the list holds
  bool LoadPartitionNameToCombo();  // and PartitionList
  bool LoadNISOptionToCombo();
  bool LoadImpedanceToCombo();
  bool LoadSoftStopToCombo();
  bool LoadModeNumberToCombo();  // the first entry is selected afterwards
  bool LoadNodeNumberToCombo();

  // Lists that depend on the type of the line being edited.
  bool LoadStartingNodeToCombo(Code given_line_type);
  bool LoadVolumeToCombo(Code given_line_type);
  bool LoadModeToCombo(Code given_line_type);

 private:
  bool LoadNames(TextView procedure, KeyedCollection& names, void (DataBase::*get)(),
                 Recordset DataBase::*result, Text (*name_of)(const Recordset&));
  bool PartitionEnabled(DataBase& database) const;

  const Form& form_;
  ControlState& state_;
};

}  // namespace rdv
