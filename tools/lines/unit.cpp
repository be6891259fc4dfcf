#include "tools/lines/unit.h"

#include "data/settings_file.h"
#include "rules/error_report.h"
#include "rules/volume_captions.h"
#include "tools/lines/stored_lines.h"

namespace rdv::lines {

Text InOneLine(TextView report) {
  Text line;
  bool between = false;
  for (const char16_t unit : report) {
    if (unit == u'\r' || unit == u'\n') {
      between = !line.empty();
      continue;
    }
    if (between) line += u"; ";
    between = false;
    line += unit;
  }
  return line;
}

UnitReader::UnitReader(SiteSession& session)
    : session_(session),
      widgets_(form_.Widgets()),
      loaders_(widgets_, state_),
      templates_(widgets_, state_),
      grid_loading_(widgets_, state_, templates_) {
  state_.ChinaImpedanceImplemented =
      GetHasImplementedImpedanceForChinaFromINI(PlainReporter(form_.screen));
  bool loaded = grid_loading_.FormatLVControl();
  for (const auto load :
       {&ListLoaders::Load_List_of_All_Card_Types, &ListLoaders::Load_List_of_All_Node_Names,
        &ListLoaders::Load_List_of_All_mode_Names, &ListLoaders::LoadLineTypeToCombo,
        &ListLoaders::LoadNISOptionToCombo, &ListLoaders::LoadImpedanceToCombo,
        &ListLoaders::LoadSoftStopToCombo, &ListLoaders::LoadModeNumberToCombo}) {
    loaded = (loaders_.*load)() && loaded;
  }
  if (!loaded) session.RaiseUnusable(ToUtf8(InOneLine(state_.LoadErrorText)));
}

Unit UnitReader::Read(int16_t config) {
  Unit unit;
  unit.config = config;
  unit.stored = ReadStoredLines(session_, config);
  state_.BusinessRules.ConfigID = config;
  state_.AcdOptions.clear();
  form_.LVRDVLineConfig.RemoveRows();
  const bool listed = loaders_.LoadPartitionNameToCombo();
  if (listed && unit.HasLines()) grid_loading_.LoadData();
  for (int row = 1; row <= form_.LVRDVLineConfig.RowCount(); ++row) {
    unit.rows.push_back(CellsOf(form_.LVRDVLineConfig, row));
  }
  unit.failure = TakeFailure();
  return unit;
}

Text UnitReader::StoredVolume(Code volume, Code line_type) {
  return StoredVolumeCaption(volume, line_type, form_.screen);
}

bool UnitReader::LoadListsOf(Code line_type) {
  bool loaded = true;
  for (const auto load : {&ListLoaders::LoadStartingNodeToCombo, &ListLoaders::LoadVolumeToCombo,
                          &ListLoaders::LoadModeToCombo}) {
    loaded = (loaders_.*load)(line_type) && loaded;
  }
  if (!loaded) TakeFailure();
  return loaded;
}

Text UnitReader::TakeFailure() {
  Text failure = InOneLine(state_.LoadErrorText);
  state_.LoadErrorText.clear();
  for (const memory::ShownMessage& message : form_.screen.TakeMessages()) {
    if (!failure.empty()) failure += u"; ";
    failure += InOneLine(message.text);
  }
  return failure;
}

}  // namespace rdv::lines
