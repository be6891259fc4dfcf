#include "tools/lines/finding_rules.h"

#include <algorithm>

#include "data/settings_file.h"
#include "rules/label_validator.h"
#include "rules/line_codes.h"
#include "rules/stored_line.h"
#include "rules/text_fields.h"
#include "rules/volume_captions.h"
#include "runtime/error.h"
#include "tools/lines/text_table.h"

namespace rdv::lines {

std::optional<int32_t> LineFacts::Number(TextView field) const {
  try {
    return ToLong(record.Field(field));
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

std::optional<Code> LineFacts::CodeIn(TextView field) const {
  const auto code = Number(field);
  if (!code) return std::nullopt;
  return Code{*code};
}

Text LineFacts::Stored(TextView field) const {
  const Value& value = record.Field(field);
  return IsNull(value) ? Text() : ToText(value);
}

namespace {

using Broken = std::optional<Text>;

const Broken kFine;
constexpr TextView kEmpty = u"is empty, and the control cannot show a line without it";

// The name of a code; null where none is defined.
const Text* NameIn(const KeyedCollection& names, Code code) {
  const Text key = Decimal(code);
  return names.Contains(key) ? &names.Item(key) : nullptr;
}

bool IsMusicOnHold(const LineFacts& line) {
  return line.line_type == line_type::kMusicOnHold;
}

Text OfThisType(const LineFacts& line) {
  const Text* name = NameIn(line.State().CardTypes, line.line_type);
  return u"lines of type " + (name ? InQuotes(*name) : Decimal(line.line_type));
}

// Whether a stored caption is one of those that belong to the codes beside it.
Broken RequireOneOf(const Text& stored, std::initializer_list<Text> belonging) {
  if (std::find(belonging.begin(), belonging.end(), stored) != belonging.end()) return kFine;
  return u"does not belong to the code, which is called " + InQuotes(*belonging.begin());
}

// The lines of music on hold have no such option; no other value than 0 was ever chosen.
Broken RequireNone(const LineFacts& line, TextView field) {
  if (line.Number(field) == 0) return kFine;
  return OfThisType(line) + u" have none";
}

Broken RequireWithin(const LineFacts& line, TextView field, int32_t first, int32_t last) {
  const auto number = line.Number(field);
  if (!number) return Text(kEmpty);
  if (*number >= first && *number <= last) return kFine;
  return u"is outside " + Decimal(first) + u" to " + Decimal(last);
}

Broken LineType(const LineFacts& line) {
  if (StoredLineType(line.record)) return kFine;
  return Text(
      u"is none of the line types 1, 5, 6 and 8; the control shows the line as one of the type of "
      u"the line before it");
}

Broken Partition(const LineFacts& line) {
  const auto code = line.CodeIn(u"Partition_ID");
  if (!code) return Text(kEmpty);
  if (NameIn(line.State().PartitionList, *code)) return kFine;
  return Text(u"is no partition that this unit offers");
}

Broken PartitionCaption(const LineFacts& line) {
  const Text* name =
      NameIn(line.State().PartitionList, line.CodeIn(u"Partition_ID").value_or(Code{-1}));
  return name ? RequireOneOf(line.Stored(u"Partition_Name"), {*name}) : kFine;
}

Broken NodeType(const LineFacts& line) {
  const auto code = line.CodeIn(u"Starting_Node_Type_ID");
  if (!code) return Text(kEmpty);
  if (!NameIn(line.State().NodeNames, *code)) return Text(u"is no node type that is defined");
  if (Contains(StartNodeTypesOf(line.line_type), *code)) return kFine;
  return u"is no starting node of " + OfThisType(line);
}

// Where the site says no highest number, the control offers none and keeps the one that the line
// has: from another node type or partition of the unit, or from its number, as a new line has it.
Broken NumberWithoutList(const LineFacts& line, int32_t number) {
  const int32_t highest = line.rules.HighestNodeNumber(line.config);
  if (number <= std::max<int32_t>(highest, line.number)) return kFine;
  return u"is beyond " + Decimal(highest) + u", the highest number of any list of this unit";
}

Broken NodeNumber(const LineFacts& line) {
  const auto type = line.CodeIn(u"Starting_Node_Type_ID");
  const auto number = line.Number(u"Starting_Node_Number");
  if (!number) return Text(kEmpty);
  if (!type || *type == node_type::kNone) return kFine;
  if (*number < 1) return Text(u"is no node number");
  const int32_t partition = line.Number(u"Partition_ID").value_or(-1);
  const auto highest = line.rules.HighestNodeNumber(line.config, partition, NumberOf(*type));
  if (!highest) return NumberWithoutList(line, *number);
  if (*number > *highest) {
    return u"is beyond " + Decimal(*highest) +
           u", the highest number of this node type in partition " + Decimal(partition);
  }
  return kFine;
}

Broken NodeCaption(const LineFacts& line) {
  const auto type = line.CodeIn(u"Starting_Node_Type_ID");
  const auto number = line.Number(u"Starting_Node_Number");
  const Text* name = type ? NameIn(line.State().NodeNames, *type) : nullptr;
  if (!name || !number) return kFine;
  const Text stored = line.Stored(u"Starting_Node_Caption");
  if (*type == node_type::kNone) return RequireOneOf(stored, {*name});
  const Text numbered = *name + u" " + Decimal(*number);
  // The second half of a pair is stored with the bare name.
  if (IsMusicOnHold(line)) return RequireOneOf(stored, {numbered, *name});
  return RequireOneOf(stored, {numbered});
}

Broken Volume(const LineFacts& line) {
  const auto code = line.CodeIn(u"Volume_ID");
  if (!code) return Text(kEmpty);
  for (const Choice& offered : line.rules.OffersFor(line.line_type).volumes) {
    if (offered.code == *code && AcceptedVolume(line.line_type, offered)) return kFine;
  }
  return u"is no volume of " + OfThisType(line);
}

Broken VolumeCaption(const LineFacts& line) {
  const auto code = line.CodeIn(u"Volume_ID");
  if (!code) return kFine;
  const Text stored = line.Stored(u"Volume_Name");
  for (const Choice& offered : line.rules.OffersFor(line.line_type).volumes) {
    if (offered.code == *code && offered.caption == stored) return kFine;
  }
  // Without settings no caption can be held against them.
  if (IsMusicOnHold(line) && !line.rules.Reader().SettingsFailure().empty()) return kFine;
  const Text shown = line.rules.StoredVolume(*code, line.line_type);
  // New music-on-hold lines are stored with the code for a caption.
  if (IsMusicOnHold(line)) return RequireOneOf(stored, {shown, Decimal(*code)});
  return RequireOneOf(stored, {shown});
}

Broken Mode(const LineFacts& line) {
  const auto code = line.CodeIn(u"Mode_Type_ID");
  if (!code) return Text(kEmpty);
  if (!NameIn(line.State().ModeNames, *code)) return Text(u"is no mode that is defined");
  if (Contains(line.rules.OffersFor(line.line_type).modes, *code)) return kFine;
  return u"is no mode of " + OfThisType(line);
}

Broken ModeNumber(const LineFacts& line) {
  const auto mode = line.CodeIn(u"Mode_Type_ID");
  if (!line.Number(u"Mode_Ring_Number")) return Text(kEmpty);
  if (IsMusicOnHold(line) || !mode || !Contains(ModeTypesWithNumber, *mode)) return kFine;
  return RequireWithin(line, u"Mode_Ring_Number", 1, kLastModeNumber);
}

Broken ModeCaption(const LineFacts& line) {
  const auto mode = line.CodeIn(u"Mode_Type_ID");
  const auto number = line.Number(u"Mode_Ring_Number");
  const Text* name = mode ? NameIn(line.State().ModeNames, *mode) : nullptr;
  if (!name || !number) return kFine;
  const Text stored = line.Stored(u"Mode_Caption");
  const Text numbered = *name + u"=" + Decimal(*number);
  const bool shows_number = Contains(kStoredModeTypesWithNumber, *mode) && *number > 0;
  if (shows_number && !IsMusicOnHold(line)) return RequireOneOf(stored, {numbered});
  return RequireOneOf(stored, {*name, numbered});
}

Broken NISOption(const LineFacts& line) {
  if (IsMusicOnHold(line)) return RequireNone(line, u"NIS_Option");
  return RequireWithin(line, u"NIS_Option", 0, kLastNISOption);
}

Broken EWTOption(const LineFacts& line) {
  if (IsMusicOnHold(line)) return RequireNone(line, u"RTQA_Option");
  const auto option = line.Number(u"RTQA_Option");
  if (!option) return Text(kEmpty);
  return *option >= 0 ? kFine : Text(u"is below 0, and only digits can be typed");
}

Broken Impedance(const LineFacts& line) {
  if (IsMusicOnHold(line)) return RequireNone(line, u"Impedance");
  const auto code = line.CodeIn(u"Impedance");
  if (!code) return Text(kEmpty);
  const memory::MemoryComboBox& list = line.rules.Reader().Widgets().cmbImpedance;
  for (int entry = 0; entry < list.ListCount(); ++entry) {
    if (Code{list.ItemData(entry)} == *code) return kFine;
  }
  if (*code == kChinaImpedance) {
    return Text(ImpedanceCodeToCaption(kChinaImpedance)) + u" is not offered at this site";
  }
  return Text(u"is no impedance");
}

Broken SoftStop(const LineFacts& line) {
  if (IsMusicOnHold(line)) return RequireNone(line, u"SoftStop");
  const auto code = line.CodeIn(u"SoftStop");
  if (!code) return Text(kEmpty);
  if (*code == soft_stop::kDisabled || *code == soft_stop::kEnabled) return kFine;
  return u"is neither 0 nor 1; the control shows " + InQuotes(caption::kDisabled);
}

Broken Label(const LineFacts& line) {
  const Text label = line.Stored(u"Description");
  if (MakeBuiltInLabelValidator()->IsAcceptable(label)) return kFine;
  return u"the rules make " + InQuotes(CleanLabel(label)) + u" of it";
}

constexpr LineRule kAllLines[] = {
    {"line-type", column::kLineType, u"LineType", LineType},
    {"label", column::kLabel, u"Description", Label},
};

constexpr LineRule kInstalledLines[] = {
    {"partition", column::kPartition, u"Partition_ID", Partition},
    {"caption", column::kPartition, u"Partition_Name", PartitionCaption},
    {"node-type", column::kStartingNode, u"Starting_Node_Type_ID", NodeType},
    {"node-number", column::kStartingNode, u"Starting_Node_Number", NodeNumber},
    {"caption", column::kStartingNode, u"Starting_Node_Caption", NodeCaption},
    {"volume", column::kVolume, u"Volume_ID", Volume},
    {"caption", column::kVolume, u"Volume_Name", VolumeCaption},
    {"mode", column::kMode, u"Mode_Type_ID", Mode},
    {"mode-number", column::kMode, u"Mode_Ring_Number", ModeNumber},
    {"caption", column::kMode, u"Mode_Caption", ModeCaption},
    {"nis-option", column::kNISOption, u"NIS_Option", NISOption},
    {"ewt-option", column::kEWTOption, u"RTQA_Option", EWTOption},
    {"impedance", column::kImpedance, u"Impedance", Impedance},
    {"soft-stop", column::kSoftStop, u"SoftStop", SoftStop},
};

}  // namespace

std::span<const LineRule> RulesOfInstalledLines() {
  return kInstalledLines;
}

std::span<const LineRule> RulesOfAllLines() {
  return kAllLines;
}

}  // namespace rdv::lines
