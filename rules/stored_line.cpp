#include "rules/stored_line.h"

#include <array>

#include "data/recordset.h"
#include "data/settings_file.h"
#include "rules/error_report.h"

namespace rdv {
namespace {

Text OptionCaption(const Recordset& line, TextView field, int16_t line_type) {
  if (line_type == line_type::kMusicOnHold) return Text(caption::kNotApplicable);
  const int16_t option = ToInteger(line.Field(field));
  return option != 0 ? Decimal(option) : Text(caption::kDisabled);
}

bool HasImpedance(int16_t line_type) {
  return !Contains(std::array{line_type::kMusicOnHold, line_type::kImpedance}, line_type);
}

}  // namespace

std::optional<int16_t> StoredLineType(const Recordset& line) {
  const Value& stored = line.Field(u"LineType");
  if (IsNull(stored)) return std::nullopt;
  const int32_t code = ToLong(stored);
  if (!Contains(LineTypeCodes, code)) return std::nullopt;
  return static_cast<int16_t>(code);
}

RowCells CellsOfStoredLine(const Recordset& line, int16_t line_type, const ControlState& state,
                           Screen& screen) {
  const auto number = [&](TextView field) { return ToInteger(line.Field(field)); };
  const Text partition = Decimal(number(u"Partition_ID"));
  const int16_t node_type = number(u"Starting_Node_Type_ID");
  const int16_t node_number = number(u"Starting_Node_Number");
  const int16_t volume = number(u"Volume_ID");
  const int16_t mode_type = number(u"Mode_Type_ID");
  const int16_t mode_number = number(u"Mode_Ring_Number");
  const int16_t impedance = number(u"Impedance");
  const bool stops_softly = number(u"SoftStop") == soft_stop::kEnabled;
  const Value& label = line.Field(u"Description");

  RowCells cells;
  cells[column::kLineTypeCode] = Decimal(line_type);
  cells[column::kPartitionCode] = partition;
  cells[column::kStartingNodeType] = Decimal(node_type);
  cells[column::kStartingNodeNumber] = Decimal(node_number);
  cells[column::kVolumeCode] = Decimal(volume);
  cells[column::kModeType] = Decimal(mode_type);
  cells[column::kModeNumber] = Decimal(mode_number);
  cells[column::kImpedanceCode] = Decimal(impedance);
  cells[column::kSoftStopCode] = Decimal(stops_softly ? soft_stop::kEnabled : soft_stop::kDisabled);
  cells[column::kLine] = Decimal(number(u"Line"));
  cells[column::kLineType] = state.CardTypes.Item(Decimal(line_type));
  cells[column::kPartition] = state.PartitionList.Item(partition);
  cells[column::kStartingNode] = StoredStartingNodeCaption(node_type, node_number, state);
  cells[column::kVolume] = StoredVolumeCaption(volume, line_type, screen);
  cells[column::kMode] = StoredModeCaption(mode_type, mode_number, state);
  cells[column::kNISOption] = OptionCaption(line, u"NIS_Option", line_type);
  cells[column::kEWTOption] = OptionCaption(line, u"RTQA_Option", line_type);
  cells[column::kImpedance] =
      HasImpedance(line_type) ? ImpedanceCodeToCaption(impedance) : caption::kNotApplicable;
  cells[column::kSoftStop] = !HasImpedance(line_type) ? caption::kNotApplicable
                             : stops_softly           ? caption::kEnabled
                                                      : caption::kDisabled;
  cells[column::kLabel] = IsNull(label) ? Text() : ToText(label);
  return cells;
}

Text StoredStartingNodeCaption(int16_t node_type, int16_t number, const ControlState& state) {
  const Text& name = state.NodeNames.Item(Decimal(node_type));
  return node_type == node_type::kNone ? name : name + u" " + Decimal(number);
}

Text StoredVolumeCaption(int16_t volume, int16_t line_type, Screen& screen) {
  if (volume == volume::kHigh) return Text(caption::kHigh);
  if (line_type == line_type::kMusicOnHold) {
    return GetMOHVolumeCaptionfromINI(Decimal(volume), PlainReporter(screen));
  }
  const bool names_low = line_type == line_type::kImpedance || line_type == line_type::kHybrid;
  if (volume == volume::kLow && names_low) return Text(caption::kLow);
  return Decimal(volume);
}

Text StoredModeCaption(int16_t mode_type, int16_t number, const ControlState& state) {
  const Text& name = state.ModeNames.Item(Decimal(mode_type));
  const bool shows_number = number > 0 && Contains(kStoredModeTypesWithNumber, mode_type);
  return shows_number ? name + u"=" + Decimal(number) : name;
}

}  // namespace rdv
