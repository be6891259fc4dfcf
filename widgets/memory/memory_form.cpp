#include "widgets/memory/memory_form.h"

namespace rdv::memory {

MemoryForm::MemoryForm(Size size)
    : fraConfiguration("fraConfiguration", focus_, nullptr),
      LVRDVLineConfig("LVRDVLineConfig", focus_, &fraConfiguration, LayOut(size).grid),
      cmbPartition("cmbPartition", focus_, &fraConfiguration, TextEntry::FromListOnly),
      cmbStartingNodeName("cmbStartingNodeName", focus_, &fraConfiguration,
                          TextEntry::FromListOnly),
      cmbStartingNodeNumber("cmbStartingNodeNumber", focus_, &fraConfiguration, TextEntry::Typed),
      cmbVolume("cmbVolume", focus_, &fraConfiguration, TextEntry::FromListOnly),
      cmbModeType("cmbModeType", focus_, &fraConfiguration, TextEntry::FromListOnly),
      cmbModeNumber("cmbModeNumber", focus_, &fraConfiguration, TextEntry::Typed),
      cmbNISOption("cmbNISOption", focus_, &fraConfiguration, TextEntry::FromListOnly),
      txtEWTOption("txtEWTOption", focus_, &fraConfiguration),
      cmbLineType("cmbLineType", focus_, &fraConfiguration, TextEntry::FromListOnly),
      cmbImpedance("cmbImpedance", focus_, &fraConfiguration, TextEntry::FromListOnly),
      cmbSoftStop("cmbSoftStop", focus_, &fraConfiguration, TextEntry::FromListOnly),
      txtLabel("txtLabel", focus_, &fraConfiguration),
      fraDefault("fraDefault", focus_, nullptr),
      cmbRDVType("cmbRDVType", focus_, &fraDefault, TextEntry::Typed),
      cmdShowDefaults("cmdShowDefaults", focus_, &fraDefault),
      cmdOK("cmdOK", focus_, nullptr),
      cmdCancel("cmdCancel", focus_, nullptr),
      cmdApply("cmdApply", focus_, nullptr) {
  for (Editor* editor : Widgets().Editors()) editor->SetVisible(false);
  cmdApply.SetEnabled(false);
}

Form MemoryForm::Widgets() {
  return {fraConfiguration,
          LVRDVLineConfig,
          cmbPartition,
          cmbStartingNodeName,
          cmbStartingNodeNumber,
          cmbVolume,
          cmbModeType,
          cmbModeNumber,
          cmbNISOption,
          txtEWTOption,
          cmbLineType,
          cmbImpedance,
          cmbSoftStop,
          txtLabel,
          fraDefault,
          cmbRDVType,
          cmdShowDefaults,
          cmdOK,
          cmdCancel,
          cmdApply,
          screen};
}

}  // namespace rdv::memory
