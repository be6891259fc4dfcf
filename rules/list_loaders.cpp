#include "rules/list_loaders.h"

#include "data/database.h"
#include "data/settings_file.h"
#include "rules/error_report.h"
#include "rules/line_codes.h"

namespace rdv {
namespace {

void AddNumbers(ComboBox& list, int first, int last) {
  for (int number = first; number <= last; ++number) list.AddItem(Decimal(number), number);
}

}  // namespace

bool ListLoaders::Load_List_of_All_Card_Types() {
  return RunLoader(state_, u"Load_List_of_All_Card_Types", [&] {
    state_.CardTypes.Clear();
    DataBase database;
    database.Get_All_Card_Name();
    Recordset& rows = database.rsGet_All_Card_Name;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      const int32_t id = ToLong(rows.Field(u"ID"));
      state_.CardTypes.Add(id == line_type::kNotInstalled ? Text(caption::kNotInstalled)
                                                          : ToText(rows.Field(u"English_Name")),
                           Decimal(id));
    }
    rows.Close();
  });
}

bool ListLoaders::Load_List_of_All_Node_Names() {
  return RunLoader(state_, u"Load_List_of_All_Node_Names", [&] {
    state_.NodeNames.Clear();
    DataBase database;
    database.Get_All_Node_Names();
    Recordset& rows = database.rsGet_All_Node_Names;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      state_.NodeNames.Add(ToText(rows.Field(u"English_Name")), Decimal(ToLong(rows.Field(u"ID"))));
    }
    rows.Close();
  });
}

bool ListLoaders::Load_List_of_All_mode_Names() {
  return RunLoader(state_, u"Load_List_of_All_mode_Names", [&] {
    state_.ModeNames.Clear();
    DataBase database;
    database.Get_All_Mode_Names();
    Recordset& rows = database.rsGet_All_Mode_Names;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      state_.ModeNames.Add(ToText(rows.Field(u"English_Name")), Decimal(ToLong(rows.Field(u"ID"))));
    }
    rows.Close();
  });
}

bool ListLoaders::LoadLineTypeToCombo() {
  return RunLoader(state_, u"LoadLineTypeToCombo", [&] {
    for (const int16_t code : LineTypeCodes) {
      form_.cmbLineType.AddItem(code == line_type::kNotInstalled
                                    ? caption::kNotInstalled
                                    : TextView(state_.CardTypes.Item(Decimal(code))),
                                code);
    }
  });
}

// The settings row that comes last counts; without one they are disabled.
bool ListLoaders::PartitionEnabled(DataBase& database) const {
  database.GetORVSettings(Decimal(state_.BusinessRules.ConfigID));
  bool enabled = false;
  Recordset& settings = database.rsGetORVSettings;
  for (; !settings.EndOfFile(); settings.MoveNext()) {
    enabled = ToBoolean(settings.Field(u"PartitionEnabled"));
  }
  settings.Close();
  return enabled;
}

bool ListLoaders::LoadPartitionNameToCombo() {
  return RunLoader(state_, u"LoadPartitionNameToCombo", [&] {
    form_.cmbPartition.Clear();
    state_.PartitionList.Clear();
    DataBase database;
    const bool enabled = PartitionEnabled(database);
    database.Get_All_Partitions(Decimal(state_.BusinessRules.ConfigID));
    Recordset& partitions = database.rsGet_All_Partitions;
    for (; !partitions.EndOfFile(); partitions.MoveNext()) {
      const Value& name = partitions.Field(u"Name");
      const Value& stored_id = partitions.Field(u"PartitionID");
      const int32_t id = IsNull(name) && IsNull(stored_id) ? 0 : ToLong(stored_id);
      if (!IsNull(name) && id != 0) {
        form_.cmbPartition.AddItem(ToText(name), id);
        state_.PartitionList.Add(ToText(name), Decimal(id));
      }
      // With partitions disabled nothing is offered beyond the first.
      if (id == 1 && !enabled) partitions.MoveLast();
    }
    partitions.Close();
  });
}

bool ListLoaders::LoadNISOptionToCombo() {
  return RunLoader(state_, u"LoadNISOptionToCombo", [&] {
    form_.cmbNISOption.Clear();
    form_.cmbNISOption.AddItem(caption::kDisabled, 0);
    AddNumbers(form_.cmbNISOption, 1, kLastNISOption);
  });
}

bool ListLoaders::LoadImpedanceToCombo() {
  return RunLoader(state_, u"LoadImpedanceToCombo", [&] {
    form_.cmbImpedance.Clear();
    for (const ImpedanceCode& impedance : kImpedanceCodes) {
      if (impedance.code == kChinaImpedance && !state_.ChinaImpedanceImplemented) continue;
      form_.cmbImpedance.AddItem(impedance.caption, impedance.code);
    }
  });
}

bool ListLoaders::LoadSoftStopToCombo() {
  return RunLoader(state_, u"LoadSoftStopToCombo", [&] {
    form_.cmbSoftStop.Clear();
    form_.cmbSoftStop.AddItem(caption::kDisabled, soft_stop::kDisabled);
    form_.cmbSoftStop.AddItem(caption::kEnabled, soft_stop::kEnabled);
  });
}

bool ListLoaders::LoadModeNumberToCombo() {
  return RunLoader(state_, u"LoadModeNumberToCombo", [&] {
    form_.cmbModeNumber.Clear();
    AddNumbers(form_.cmbModeNumber, 1, kLastModeNumber);
    form_.cmbModeNumber.SetListIndex(0);
  });
}

bool ListLoaders::LoadNodeNumberToCombo() {
  return RunLoader(state_, u"LoadNodeNumberToCombo", [&] {
    form_.cmbStartingNodeNumber.Clear();
    AddNumbers(form_.cmbStartingNodeNumber, 1, kLastStartingNodeNumber);
  });
}

bool ListLoaders::LoadStartingNodeToCombo(int16_t given_line_type) {
  return RunLoader(state_, u"LoadStartingNodeToCombo", [&] {
    ComboBox& list = form_.cmbStartingNodeName;
    if (list.ListCount() == 0) state_.StartNodeListLineType = -1;
    // Between lines of one type the list keeps its entries and its selection.
    if (state_.StartNodeListLineType == given_line_type) return;
    list.Clear();
    const std::span<const int16_t> node_types = StartNodeTypesOf(given_line_type);
    if (node_types.empty()) return;
    for (const int16_t code : node_types) {
      list.AddItem(state_.NodeNames.Item(Decimal(code)), code);
    }
    state_.StartNodeListLineType = given_line_type;
  });
}

Text ListLoaders::VolumeCaption(int32_t volume, int16_t given_line_type) const {
  if (volume == volume::kHigh) return Text(caption::kHigh);
  if (volume == volume::kLow) return Text(caption::kLow);
  if (given_line_type == line_type::kMusicOnHold) {
    return GetMOHVolumeCaptionfromINI(Decimal(volume), PlainReporter(form_.screen));
  }
  return Decimal(volume);
}

bool ListLoaders::LoadVolumeToCombo(int16_t given_line_type) {
  return RunLoader(state_, u"LoadVolumeToCombo", [&] {
    form_.cmbVolume.Clear();
    DataBase database;
    database.Get_Line_Type_Allowed_Volume(Decimal(CardTypeFor(given_line_type)));
    if (given_line_type == line_type::kMusicOnHold) form_.cmbVolume.AddItem(u"0", 0);
    Recordset& volumes = database.rsGet_Line_Type_Allowed_Volume;
    for (; !volumes.EndOfFile(); volumes.MoveNext()) {
      const int32_t volume = ToLong(volumes.Field(u"Volume_Type_ID"));
      form_.cmbVolume.AddItem(VolumeCaption(volume, given_line_type), volume);
    }
    volumes.Close();
  });
}

bool ListLoaders::LoadModeToCombo(int16_t given_line_type) {
  return RunLoader(state_, u"LoadModeToCombo", [&] {
    form_.cmbModeType.Clear();
    DataBase database;
    database.Get_Line_Type_Allowed_Modes(Decimal(CardTypeFor(given_line_type)));
    Recordset& modes = database.rsGet_Line_Type_Allowed_Modes;
    for (; !modes.EndOfFile(); modes.MoveNext()) {
      const int32_t mode = ToLong(modes.Field(u"Mode_Type_ID"));
      form_.cmbModeType.AddItem(state_.ModeNames.Item(Decimal(mode)), mode);
    }
    modes.Close();
  });
}

}  // namespace rdv
