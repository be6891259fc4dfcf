#include "rules/list_loaders.h"

#include "data/database.h"
#include "rules/editors.h"
#include "rules/error_report.h"
#include "rules/volume_captions.h"

namespace rdv {
namespace {

void AddNumbers(ComboBox& list, int first, int last) {
  for (int number = first; number <= last; ++number) list.AddItem(Decimal(number), number);
}

Code IdOf(const Recordset& row) {
  return Code{ToLong(row.Field(u"ID"))};
}

Text EnglishName(const Recordset& row) {
  return ToText(row.Field(u"English_Name"));
}

// The table calls what is not installed by another name.
Text CardTypeName(const Recordset& row) {
  return IdOf(row) == line_type::kNotInstalled ? Text(caption::kNotInstalled) : EnglishName(row);
}

}  // namespace

// By `name_of` the row, under the decimal text of its code.
bool ListLoaders::LoadNames(TextView procedure, KeyedCollection& names, void (DataBase::*get)(),
                            Recordset DataBase::*result, Text (*name_of)(const Recordset&)) {
  return RunLoader(state_, procedure, BlockStart::OnALineOfItsOwn, [&] {
    names.Clear();
    DataBase database(state_.FileInUse);
    (database.*get)();
    Recordset& rows = database.*result;
    for (; !rows.EndOfFile(); rows.MoveNext()) names.Add(name_of(rows), Decimal(IdOf(rows)));
    rows.Close();
  });
}

bool ListLoaders::Load_List_of_All_Card_Types() {
  return LoadNames(u"Load_List_of_All_Card_Types", state_.CardTypes, &DataBase::Get_All_Card_Name,
                   &DataBase::rsGet_All_Card_Name, CardTypeName);
}

bool ListLoaders::Load_List_of_All_Node_Names() {
  return LoadNames(u"Load_List_of_All_Node_Names", state_.NodeNames, &DataBase::Get_All_Node_Names,
                   &DataBase::rsGet_All_Node_Names, EnglishName);
}

bool ListLoaders::Load_List_of_All_mode_Names() {
  return LoadNames(u"Load_List_of_All_mode_Names", state_.ModeNames, &DataBase::Get_All_Mode_Names,
                   &DataBase::rsGet_All_Mode_Names, EnglishName);
}

bool ListLoaders::LoadLineTypeToCombo() {
  return RunLoader(state_, u"LoadLineTypeToCombo", [&] {
    for (const Code code : LineTypeCodes) {
      AddEntry(form_.cmbLineType,
               code == line_type::kNotInstalled ? caption::kNotInstalled
                                                : TextView{state_.CardTypes.Item(Decimal(code))},
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
    DataBase database(state_.FileInUse);
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
      AddEntry(form_.cmbImpedance, impedance.caption, impedance.code);
    }
  });
}

bool ListLoaders::LoadSoftStopToCombo() {
  return RunLoader(state_, u"LoadSoftStopToCombo", [&] {
    form_.cmbSoftStop.Clear();
    AddEntry(form_.cmbSoftStop, caption::kDisabled, soft_stop::kDisabled);
    AddEntry(form_.cmbSoftStop, caption::kEnabled, soft_stop::kEnabled);
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

bool ListLoaders::LoadStartingNodeToCombo(Code given_line_type) {
  return RunLoader(state_, u"LoadStartingNodeToCombo", [&] {
    ComboBox& list = form_.cmbStartingNodeName;
    if (list.ListCount() == 0) state_.StartNodeListLineType.reset();
    // Between lines of one type the list keeps its entries and its selection.
    if (state_.StartNodeListLineType == given_line_type) return;
    list.Clear();
    const std::span<const Code> node_types = StartNodeTypesOf(given_line_type);
    if (node_types.empty()) return;
    for (const Code code : node_types) {
      AddEntry(list, state_.NodeNames.Item(Decimal(code)), code);
    }
    state_.StartNodeListLineType = given_line_type;
  });
}

bool ListLoaders::LoadVolumeToCombo(Code given_line_type) {
  return RunLoader(state_, u"LoadVolumeToCombo", [&] {
    form_.cmbVolume.Clear();
    DataBase database;
    database.Get_Line_Type_Allowed_Volume(Decimal(CardTypeFor(given_line_type)));
    if (given_line_type == line_type::kMusicOnHold) {
      AddEntry(form_.cmbVolume, caption::kZeroVolume, volume::kLow);
    }
    Recordset& volumes = database.rsGet_Line_Type_Allowed_Volume;
    for (; !volumes.EndOfFile(); volumes.MoveNext()) {
      const Code volume{ToLong(volumes.Field(u"Volume_Type_ID"))};
      AddEntry(form_.cmbVolume, OfferedVolumeCaption(volume, given_line_type, form_.screen),
               volume);
    }
    volumes.Close();
  });
}

bool ListLoaders::LoadModeToCombo(Code given_line_type) {
  return RunLoader(state_, u"LoadModeToCombo", [&] {
    form_.cmbModeType.Clear();
    DataBase database;
    database.Get_Line_Type_Allowed_Modes(Decimal(CardTypeFor(given_line_type)));
    Recordset& modes = database.rsGet_Line_Type_Allowed_Modes;
    for (; !modes.EndOfFile(); modes.MoveNext()) {
      const Code mode{ToLong(modes.Field(u"Mode_Type_ID"))};
      AddEntry(form_.cmbModeType, state_.ModeNames.Item(Decimal(mode)), mode);
    }
    modes.Close();
  });
}

}  // namespace rdv
