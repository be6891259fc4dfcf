#include "control/line_config_control.h"

#include <array>
#include <type_traits>
#include <utility>
#include <vector>

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

// The list of line types first, the others in the order of the form.
void SetComboDropWidths(const Form& form) {
  form.cmbLineType.SetDropDownWidth(EntryOf("cmbLineType").drop_down_width);
  ForEachWidget(form, []<class Widget>(Widget& widget, const WidgetEntry& entry) {
    if constexpr (std::is_same_v<Widget, ComboBox>) {
      if (entry.id != control_id::cmbLineType) widget.SetDropDownWidth(entry.drop_down_width);
    }
  });
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
  // Binds the handler of an event until the control is released, which may happen while it runs.
  template <typename Part, typename... Arguments>
  void Bind(std::function<void(Arguments...)>& event, Part& part,
            void (Part::*procedure)(Arguments...)) {
    event = [core = weak_from_this(), &part, procedure](Arguments... arguments) {
      if (const std::shared_ptr<Core> alive = core.lock()) {
        (part.*procedure)(arguments...);
      }
    };
    releases_.push_back([&event] { event = nullptr; });
  }

  void ShowDefaults();
  bool LoadAllLists();
  void ShowCriticalError(TextView text) {
    form_.screen.ShowMessage(text, message_style::kCritical, kErrorTitle);
  }
  void RaiseRemoveME();

  ucRDVLineConfig* control_;                     // null once it is destroyed
  std::vector<std::function<void()>> releases_;  // one for each event that is bound
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
  Bind(grid.on_mouse_down, cell_editing_, &CellEditing::LVRDVLineConfig_MouseDown);
  Bind(grid.on_item_click, cell_editing_, &CellEditing::LVRDVLineConfig_ItemClick);
  Bind(grid.on_mouse_up, cell_editing_, &CellEditing::LVRDVLineConfig_MouseUp);
  Bind(grid.on_key_press, cell_editing_, &CellEditing::LVRDVLineConfig_KeyPress);
  Bind(grid.on_column_click, cell_editing_, &CellEditing::LVRDVLineConfig_ColumnClick);
  Bind(grid.on_before_move, cell_editing_, &CellEditing::LVRDVLineConfig_BeforeMove);
  Bind(grid.on_edit, cell_walk_, &CellWalk::EditCurrentCell);
  Bind(grid.on_edit_next, cell_walk_, &CellWalk::EditNextCell);
  Bind(grid.on_edit_end, cell_walk_, &CellWalk::StopEditing);
  Bind(grid.on_edit_cancel, cell_walk_, &CellWalk::CancelEditing);

  using Choices = DependentChoices;
  Bind(form_.cmbLineType.on_click, choices_, &Choices::cmbLineType_Click);
  Bind(form_.cmbPartition.on_click, choices_, &Choices::cmbPartition_Click);
  Bind(form_.cmbStartingNodeName.on_click, choices_, &Choices::cmbStartingNodeName_Click);
  Bind(form_.cmbStartingNodeNumber.on_click, choices_, &Choices::cmbStartingNodeNumber_Click);
  Bind(form_.cmbStartingNodeNumber.on_change, choices_, &Choices::cmbStartingNodeNumber_Change);
  Bind(form_.cmbVolume.on_click, choices_, &Choices::cmbVolume_Click);
  Bind(form_.cmbModeType.on_click, choices_, &Choices::cmbModeType_Click);
  Bind(form_.cmbModeNumber.on_click, choices_, &Choices::cmbModeNumber_Click);
  Bind(form_.cmbModeNumber.on_change, choices_, &Choices::cmbModeNumber_Change);
  Bind(form_.cmbNISOption.on_click, choices_, &Choices::cmbNISOption_Click);
  Bind(form_.cmbImpedance.on_click, choices_, &Choices::cmbImpedance_Click);
  Bind(form_.cmbSoftStop.on_click, choices_, &Choices::cmbSoftStop_Click);

  Bind(form_.txtEWTOption.on_change, text_fields_, &TextFields::txtEWTOption_Change);
  Bind(form_.txtLabel.on_change, text_fields_, &TextFields::txtLabel_Change);

  Bind(form_.cmdShowDefaults.on_click, *this, &Core::ShowDefaults);
  Bind(form_.cmdApply.on_click, saving_, &Saving::cmdApply_Click);
  Bind(form_.cmdOK.on_click, saving_, &Saving::cmdOK_Click);
  Bind(form_.cmdCancel.on_click, saving_, &Saving::cmdCancel_Click);
}

void ucRDVLineConfig::Core::Release() {
  control_ = nullptr;
  for (const std::function<void()>& release : releases_) release();
  releases_.clear();
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
