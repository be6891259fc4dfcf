#include "control/line_config_control.h"

#include <array>
#include <utility>

#include "control/cell_editing.h"
#include "control/cell_walk.h"
#include "control/grid_loading.h"
#include "control/saving.h"
#include "data/settings_file.h"
#include "rules/dependent_choices.h"
#include "rules/editors.h"
#include "rules/error_report.h"
#include "rules/list_loaders.h"
#include "rules/text_fields.h"
#include "rules/unit_types.h"

namespace rdv {
namespace {

struct DropDownWidth {
  ComboBox* list;
  int pixels;
};

void SetComboDropWidths(const Form& form) {
  const std::array<DropDownWidth, 11> widths = {{
      {&form.cmbLineType, 200},
      {&form.cmbPartition, 200},
      {&form.cmbStartingNodeName, 200},
      {&form.cmbStartingNodeNumber, 50},
      {&form.cmbVolume, 50},
      {&form.cmbModeType, 200},
      {&form.cmbModeNumber, 50},
      {&form.cmbNISOption, 50},
      {&form.cmbImpedance, 200},
      {&form.cmbSoftStop, 50},
      {&form.cmbRDVType, 200},
  }};
  for (const DropDownWidth& width : widths) width.list->SetDropDownWidth(width.pixels);
}

// The order in which failures are listed, and in which a list may rely on another.
constexpr std::array kListLoaders = {
    &ListLoaders::Load_List_of_All_Card_Types, &ListLoaders::Load_List_of_All_Node_Names,
    &ListLoaders::Load_List_of_All_mode_Names, &ListLoaders::LoadLineTypeToCombo,
    &ListLoaders::LoadPartitionNameToCombo,    &ListLoaders::LoadNISOptionToCombo,
    &ListLoaders::LoadImpedanceToCombo,        &ListLoaders::LoadSoftStopToCombo,
    &ListLoaders::LoadModeNumberToCombo,       &ListLoaders::LoadNodeNumberToCombo,
};

}  // namespace

// What the control is made of. A running handler holds on to it, so that it outlives a control that
// is destroyed meanwhile.
class ucRDVLineConfig::Core : public std::enable_shared_from_this<Core> {
 public:
  Core(ucRDVLineConfig& control, const Form& form, ControlOptions options)
      : control_(&control),
        form_(form),
        loaders_(form_, state_),
        templates_(form_, state_),
        unit_types_(form_, state_, templates_),
        choices_(form_, state_, templates_),
        text_fields_(form_, state_, std::move(options.make_label_validator)),
        grid_loading_(form_, state_, templates_),
        cell_editing_(form_, state_, loaders_),
        cell_walk_(form_, cell_editing_),
        saving_(form_, state_, [this] { RaiseRemoveME(); }) {}

  void BindHandlers();
  // The control is going: its form is no longer listened to and its host hears nothing more.
  void Release();

  bool ShowControl(int16_t Given_ConfigID);
  void AssignIndextoDefaultBox(int16_t Line1LineType, int16_t Line5LineType) {
    unit_types_.AssignIndextoDefaultBox(Line1LineType, Line5LineType);
  }
  Business_Rules& BusinessRules() { return state_.BusinessRules; }

 private:
  // Where a procedure that handles an event begins and ends: an error that it lets out goes no
  // further, and the control may be destroyed while it runs.
  template <typename Part, typename... Arguments>
  std::function<void(Arguments...)> Handler(Part& part, void (Part::*procedure)(Arguments...)) {
    return [core = weak_from_this(), &part, procedure](Arguments... arguments) {
      if (const std::shared_ptr<Core> alive = core.lock()) {
        EndSilently([&part = part, procedure = procedure, &arguments...] {
          (part.*procedure)(arguments...);
        });
      }
    };
  }

  void ShowDefaults();
  bool LoadAllLists();
  void ShowCriticalError(TextView text) {
    form_.screen.ShowMessage(text, message_style::kCritical, kErrorTitle);
  }
  void RaiseRemoveME();

  ucRDVLineConfig* control_;  // null once it is destroyed
  const Form form_;
  ControlState state_;
  ListLoaders loaders_;
  LineTemplates templates_;
  UnitTypes unit_types_;
  DependentChoices choices_;
  TextFields text_fields_;
  GridLoading grid_loading_;
  CellEditing cell_editing_;
  CellWalk cell_walk_;
  Saving saving_;
};

void ucRDVLineConfig::Core::BindHandlers() {
  LineGrid& grid = form_.LVRDVLineConfig;
  grid.on_mouse_down = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_MouseDown);
  grid.on_item_click = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_ItemClick);
  grid.on_mouse_up = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_MouseUp);
  grid.on_key_press = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_KeyPress);
  grid.on_column_click = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_ColumnClick);
  grid.on_before_move = Handler(cell_editing_, &CellEditing::LVRDVLineConfig_BeforeMove);
  grid.on_edit = Handler(cell_walk_, &CellWalk::EditCurrentCell);
  grid.on_edit_next = Handler(cell_walk_, &CellWalk::EditNextCell);
  grid.on_edit_end = Handler(cell_walk_, &CellWalk::StopEditing);
  grid.on_edit_cancel = Handler(cell_walk_, &CellWalk::CancelEditing);

  using Choices = DependentChoices;
  form_.cmbLineType.on_click = Handler(choices_, &Choices::cmbLineType_Click);
  form_.cmbPartition.on_click = Handler(choices_, &Choices::cmbPartition_Click);
  form_.cmbStartingNodeName.on_click = Handler(choices_, &Choices::cmbStartingNodeName_Click);
  form_.cmbStartingNodeNumber.on_click = Handler(choices_, &Choices::cmbStartingNodeNumber_Click);
  form_.cmbStartingNodeNumber.on_change = Handler(choices_, &Choices::cmbStartingNodeNumber_Change);
  form_.cmbVolume.on_click = Handler(choices_, &Choices::cmbVolume_Click);
  form_.cmbModeType.on_click = Handler(choices_, &Choices::cmbModeType_Click);
  form_.cmbModeNumber.on_click = Handler(choices_, &Choices::cmbModeNumber_Click);
  form_.cmbModeNumber.on_change = Handler(choices_, &Choices::cmbModeNumber_Change);
  form_.cmbNISOption.on_click = Handler(choices_, &Choices::cmbNISOption_Click);
  form_.cmbImpedance.on_click = Handler(choices_, &Choices::cmbImpedance_Click);
  form_.cmbSoftStop.on_click = Handler(choices_, &Choices::cmbSoftStop_Click);

  form_.txtEWTOption.on_change = Handler(text_fields_, &TextFields::txtEWTOption_Change);
  form_.txtLabel.on_change = Handler(text_fields_, &TextFields::txtLabel_Change);

  form_.cmdShowDefaults.on_click = Handler(*this, &Core::ShowDefaults);
  form_.cmdApply.on_click = Handler(saving_, &Saving::cmdApply_Click);
  form_.cmdOK.on_click = Handler(saving_, &Saving::cmdOK_Click);
  form_.cmdCancel.on_click = Handler(saving_, &Saving::cmdCancel_Click);
}

void ucRDVLineConfig::Core::Release() {
  control_ = nullptr;

  LineGrid& grid = form_.LVRDVLineConfig;
  grid.on_mouse_down = nullptr;
  grid.on_item_click = nullptr;
  grid.on_mouse_up = nullptr;
  grid.on_key_press = nullptr;
  grid.on_column_click = nullptr;
  grid.on_before_move = nullptr;
  grid.on_edit = nullptr;
  grid.on_edit_next = nullptr;
  grid.on_edit_end = nullptr;
  grid.on_edit_cancel = nullptr;

  for (Editor* editor : form_.Editors()) editor->on_change = nullptr;
  for (ComboBox* list :
       {&form_.cmbLineType, &form_.cmbPartition, &form_.cmbStartingNodeName,
        &form_.cmbStartingNodeNumber, &form_.cmbVolume, &form_.cmbModeType, &form_.cmbModeNumber,
        &form_.cmbNISOption, &form_.cmbImpedance, &form_.cmbSoftStop}) {
    list->on_click = nullptr;
  }
  for (Button* button : {&form_.cmdShowDefaults, &form_.cmdApply, &form_.cmdOK, &form_.cmdCancel}) {
    button->on_click = nullptr;
  }
}

bool ucRDVLineConfig::Core::ShowControl(int16_t Given_ConfigID) {
  const bool had_changes = form_.cmdApply.Enabled();
  try {
    form_.fraConfiguration.SetEnabled(false);
    // Lines of one configuration must not take what is selected while another's lists are loaded.
    form_.LVRDVLineConfig.RemoveRows();
    cell_editing_.ForgetCells();
    state_.AcdOptions.clear();
    state_.BusinessRules.ConfigID = Given_ConfigID;
    state_.ChinaImpedanceImplemented =
        GetHasImplementedImpedanceForChinaFromINI(PlainReporter(form_.screen));
    const bool loaded = LoadAllLists() && grid_loading_.LoadData();
    if (!loaded) ShowCriticalError(state_.LoadErrorText);
    form_.cmdApply.SetEnabled(!loaded && had_changes);
    form_.fraConfiguration.SetEnabled(true);
    return loaded;
  } catch (const RuntimeError& error) {
    ShowCriticalError(ErrorBlock(error, u"ShowControl"));
    form_.cmdApply.SetEnabled(had_changes);
    return false;  // with fraConfiguration as it is by now
  }
}

void ucRDVLineConfig::Core::ShowDefaults() {
  cell_editing_.ForgetCells();
  unit_types_.cmdShowDefaults_Click();
}

// Goes on past every failure; those of the loaders are on record in LoadErrorText.
bool ucRDVLineConfig::Core::LoadAllLists() {
  state_.LoadErrorText.clear();
  EndSilently([&] { SetComboDropWidths(form_); });
  grid_loading_.FormatLVControl();
  state_.FileInUse.reset();
  for (const auto load : kListLoaders) (loaders_.*load)();
  unit_types_.LoadDefaultRDVType();
  EndSilently([&] { ShowEditors(form_, false); });
  return state_.LoadErrorText.empty();
}

void ucRDVLineConfig::Core::RaiseRemoveME() {
  if (!control_) return;
  // The host may destroy the control in it, and with the control its own function.
  const std::function<void()> handler = control_->RemoveME;
  if (handler) handler();
}

ucRDVLineConfig::ucRDVLineConfig(const Form& form, ControlOptions options)
    : core_(std::make_shared<Core>(*this, form, std::move(options))) {
  core_->BindHandlers();
}

ucRDVLineConfig::~ucRDVLineConfig() {
  core_->Release();
}

bool ucRDVLineConfig::ShowControl(int16_t Given_ConfigID) {
  const std::shared_ptr<Core> core = core_;
  return core->ShowControl(Given_ConfigID);
}

void ucRDVLineConfig::AssignIndextoDefaultBox(int16_t Line1LineType, int16_t Line5LineType) {
  core_->AssignIndextoDefaultBox(Line1LineType, Line5LineType);
}

Business_Rules& ucRDVLineConfig::BusinessRules() {
  return core_->BusinessRules();
}

}  // namespace rdv
