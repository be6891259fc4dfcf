// A whole form without windows: for tests and for playing scenarios.
#pragma once

#include "widgets/form.h"
#include "widgets/layout.h"
#include "widgets/memory/memory_editors.h"
#include "widgets/memory/memory_line_grid.h"
#include "widgets/memory/memory_screen.h"

namespace rdv::memory {

// Owns the widgets. They stand as before the control is loaded.
class MemoryForm {
 public:
  explicit MemoryForm(Size size = DesignSize());

  // Lives as long as this object.
  Form Widgets();

  const std::optional<std::string>& FocusedWidget() const { return focus_.Holder(); }

 private:
  Focus focus_{"LVRDVLineConfig"};

 public:
  MemoryFrame fraConfiguration;
  MemoryLineGrid LVRDVLineConfig;
  MemoryComboBox cmbPartition;
  MemoryComboBox cmbStartingNodeName;
  MemoryComboBox cmbStartingNodeNumber;
  MemoryComboBox cmbVolume;
  MemoryComboBox cmbModeType;
  MemoryComboBox cmbModeNumber;
  MemoryComboBox cmbNISOption;
  MemoryTextBox txtEWTOption;
  MemoryComboBox cmbLineType;
  MemoryComboBox cmbImpedance;
  MemoryComboBox cmbSoftStop;
  MemoryTextBox txtLabel;
  MemoryFrame fraDefault;
  MemoryComboBox cmbRDVType;
  MemoryButton cmdShowDefaults;
  MemoryButton cmdOK;
  MemoryButton cmdCancel;
  MemoryButton cmdApply;
  MemoryScreen screen;
};

}  // namespace rdv::memory
