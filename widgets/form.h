// The widgets of the line configuration form, by name.
#pragma once

#include <array>

#include "widgets/line_grid.h"
#include "widgets/widget.h"

namespace rdv {

// References to the widgets of one form; whoever builds the form owns them and outlives its users.
// fraConfiguration holds the grid and the twelve in-place editors, fraDefault the unit-type list
// and cmdShowDefaults. cmbStartingNodeNumber, cmbModeNumber and cmbRDVType take typed text; the
// other lists do not. Before the control is loaded the editors are hidden with empty texts,
// cmdApply is disabled and everything else enabled.
struct Form {
  Frame& fraConfiguration;
  LineGrid& LVRDVLineConfig;
  ComboBox& cmbPartition;
  ComboBox& cmbStartingNodeName;
  ComboBox& cmbStartingNodeNumber;
  ComboBox& cmbVolume;
  ComboBox& cmbModeType;
  ComboBox& cmbModeNumber;
  ComboBox& cmbNISOption;
  TextBox& txtEWTOption;
  ComboBox& cmbLineType;
  ComboBox& cmbImpedance;
  ComboBox& cmbSoftStop;
  TextBox& txtLabel;
  Frame& fraDefault;
  ComboBox& cmbRDVType;
  Button& cmdShowDefaults;
  Button& cmdOK;
  Button& cmdCancel;
  Button& cmdApply;
  Screen& screen;

  // In the order in which they are hidden when the grid moves.
  std::array<Editor*, 12> Editors() const {
    return {&cmbPartition, &cmbStartingNodeName, &cmbStartingNodeNumber, &cmbVolume,
            &cmbModeType,  &cmbModeNumber,       &cmbNISOption,          &txtEWTOption,
            &cmbLineType,  &cmbImpedance,        &cmbSoftStop,           &txtLabel};
  }
};

}  // namespace rdv
