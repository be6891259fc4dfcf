#include "rules/stored_line.h"

#include "data/recordset.h"
#include "rules/volume_captions.h"

namespace rdv {
namespace {

Text OptionCaption(const Recordset& line, TextView field, Code line_type) {
  if (line_type == line_type::kMusicOnHold) return Text(caption::kNotApplicable);
  const int16_t option = ToInteger(line.Field(field));
  return option != 0 ? Decimal(option) : Text(caption::kDisabled);
}

}  // namespace

std::optional<Code> StoredLineType(const Recordset& line) {
  const Value& stored = line.Field(u"LineType");
  if (IsNull(stored)) return std::nullopt;
  const Code code{ToLong(stored)};
  if (!Contains(LineTypeCodes, code)) return std::nullopt;
  return code;
}

RowCells CellsOfStoredLine(const Recordset& line, Code line_type, const ControlState& state,
                           Screen& screen) {
  const auto number = [&](TextView field) { return ToInteger(line.Field(field)); };
  const auto code = [&](TextView field) { return Code{number(field)}; };
  const Text partition = Decimal(code(u"Partition_ID"));
  const Code node_type = code(u"Starting_Node_Type_ID");
  const int16_t node_number = number(u"Starting_Node_Number");
  const Code volume = code(u"Volume_ID");
  const Code mode_type = code(u"Mode_Type_ID");
  const int16_t mode_number = number(u"Mode_Ring_Number");
  const Code impedance = code(u"Impedance");
  const bool stops_softly = code(u"SoftStop") == soft_stop::kEnabled;
  const bool has_impedance = !Contains(kLinesWithoutImpedance, line_type);
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
      has_impedance ? ImpedanceCodeToCaption(impedance) : caption::kNotApplicable;
  cells[column::kSoftStop] = !has_impedance ? caption::kNotApplicable
                             : stops_softly ? caption::kEnabled
                                            : caption::kDisabled;
  cells[column::kLabel] = IsNull(label) ? Text() : ToText(label);
  return cells;
}

Text StoredStartingNodeCaption(Code node_type, int16_t number, const ControlState& state) {
  const Text& name = state.NodeNames.Item(Decimal(node_type));
  return node_type == node_type::kNone ? name : name + u" " + Decimal(number);
}

Text StoredModeCaption(Code mode_type, int16_t number, const ControlState& state) {
  const Text& name = state.ModeNames.Item(Decimal(mode_type));
  const bool shows_number = number > 0 && Contains(kStoredModeTypesWithNumber, mode_type);
  return shows_number ? name + u"=" + Decimal(number) : name;
}

}  // namespace rdv
