#include "tools/lines/findings.h"

#include <algorithm>
#include <limits>

#include "data/recordset.h"
#include "data/settings_file.h"
#include "rules/error_report.h"
#include "rules/line_codes.h"
#include "rules/line_record.h"
#include "rules/stored_line.h"
#include "tools/lines/finding_rules.h"
#include "tools/lines/stored_lines.h"

namespace rdv::lines {
namespace {

// Fields that a line which is not installed has fixed values in, by their place among the arguments
// that saving it would write.
struct FixedField {
  TextView field;
  size_t argument;
  int column;
};
constexpr FixedField kFixedFields[] = {
    {u"Partition_Name", 0, column::kPartition},
    {u"Partition_ID", 1, column::kPartition},
    {u"Starting_Node_Caption", 2, column::kStartingNode},
    {u"Starting_Node_Type_ID", 3, column::kStartingNode},
    {u"Starting_Node_Number", 4, column::kStartingNode},
    {u"Volume_Name", 5, column::kVolume},
    {u"Volume_ID", 6, column::kVolume},
    {u"Mode_Caption", 7, column::kMode},
    {u"Mode_Type_ID", 8, column::kMode},
    {u"Mode_Ring_Number", 9, column::kMode},
    {u"Description", 10, column::kLabel},
    {u"NIS_Option", 11, column::kNISOption},
    {u"RTQA_Option", 12, column::kEWTOption},
    {u"Impedance", 15, column::kImpedance},
    {u"SoftStop", 16, column::kSoftStop},
};

// What the two halves of a music-on-hold line have in common.
struct SharedField {
  TextView field;
  int column;
};
constexpr SharedField kSharedFields[] = {
    {u"Partition_ID", column::kPartition},
    {u"Starting_Node_Type_ID", column::kStartingNode},
    {u"Starting_Node_Number", column::kStartingNode},
    {u"Volume_ID", column::kVolume},
    {u"Mode_Type_ID", column::kMode},
    {u"Mode_Ring_Number", column::kMode},
};

constexpr int16_t kFirstConfig = 1;

class UnitCheck {
 public:
  UnitCheck(const SiteRules& rules, const Unit& unit) : rules_(rules), unit_(unit) {}

  std::vector<Finding> Run() {
    if (unit_.config < kFirstConfig) {
      Add(0, 0, "configuration", {},
          u"is no number of a unit, which are " + Decimal(kFirstConfig) + u" to " +
              Decimal(std::numeric_limits<int16_t>::max()));
    }
    if (!unit_.failure.empty()) {
      Add(0, 0, "cannot-be-shown", {}, u"the control cannot show the unit: " + unit_.failure);
    }
    Recordset record;
    record.Open(unit_.stored);
    Code line_type{0};
    for (; !record.EndOfFile(); record.MoveNext()) {
      line_type = StoredLineType(record).value_or(line_type);
      lines_.push_back({ToInteger(record.Field(u"Line")), line_type, lines_.size()});
      CheckLine({record, unit_.config, lines_.back().number, line_type, rules_});
    }
    for (const Line& line : lines_) CheckPlace(line);
    std::stable_sort(findings_.begin(), findings_.end(), [](const Finding& a, const Finding& b) {
      return std::pair(a.line, a.column) < std::pair(b.line, b.column);
    });
    return std::move(findings_);
  }

 private:
  struct Line {
    int16_t number;
    Code type;
    size_t row;  // in the stored table
  };

  void Add(int16_t line, int column, const char* kind, Text value, Text why) {
    findings_.push_back({unit_.config, line, column, kind, std::move(value), std::move(why)});
  }

  void CheckLine(const LineFacts& line) {
    Apply(RulesOfAllLines(), line);
    if (line.line_type == line_type::kNotInstalled) {
      CheckNotInstalled(line);
    } else if (line.line_type != Code{0}) {
      Apply(RulesOfInstalledLines(), line);
    }
  }

  void Apply(std::span<const LineRule> rules, const LineFacts& line) {
    for (const LineRule& rule : rules) {
      if (auto why = rule.broken(line)) {
        Add(line.number, rule.column, rule.kind, line.Stored(rule.field), std::move(*why));
      }
    }
  }

  void CheckNotInstalled(const LineFacts& line) {
    const LineArguments fixed =
        LineArgumentsOf(NotInstalledCells(Decimal(line.number)), line.config, u"0");
    for (const FixedField& field : kFixedFields) {
      const Text stored = line.Stored(field.field);
      if (stored == fixed[field.argument]) continue;
      Add(line.number, field.column, "not-installed", stored,
          u"a line that is not installed has \"" + fixed[field.argument] + u"\" here");
    }
  }

  const Line* Find(int number, Code type) const {
    for (const Line& line : lines_) {
      if (line.number == number && line.type == type) return &line;
    }
    return nullptr;
  }

  bool IsShown(int16_t number) const {
    const Text wanted = Decimal(number);
    return std::any_of(unit_.rows.begin(), unit_.rows.end(),
                       [&](const RowCells& row) { return row[column::kLine] == wanted; });
  }

  // Whether a row shows the line, and the other half of a pair.
  void CheckPlace(const Line& line) {
    if (line.number < kFirstLine || line.number > kLastLine) {
      Add(line.number, column::kLine, "line-number", Decimal(line.number),
          u"is no line of a unit, which has lines " + Decimal(kFirstLine) + u" to " +
              Decimal(kLastLine));
    }
    const bool music = line.type == line_type::kMusicOnHold;
    if (music && line.number % 2 == 0) {
      const Line* first = Find(line.number - 1, line_type::kMusicOnHold);
      if (first) {
        CompareHalves(*first, line);
      } else {
        Add(line.number, 0, "pair", {},
            u"the first half of the music-on-hold pair, line " + Decimal(line.number - 1) +
                u", is missing, so the control does not show this one");
      }
      return;
    }
    if (music && !Find(line.number + 1, line_type::kMusicOnHold)) {
      Add(line.number, 0, "pair", {},
          u"the second half of the music-on-hold pair, line " + Decimal(line.number + 1) +
              u", is missing");
    }
    if (unit_.failure.empty() && !IsShown(line.number)) {
      Add(line.number, 0, "left-out", {}, u"the control does not show this line");
    }
  }

  void CompareHalves(const Line& first, const Line& second) {
    for (const SharedField& shared : kSharedFields) {
      const size_t column = ColumnAt(unit_.stored, shared.field);
      const Text of_first = Shown(unit_.stored.rows[first.row][column]);
      const Text of_second = Shown(unit_.stored.rows[second.row][column]);
      if (of_first == of_second) continue;
      Add(second.number, shared.column, "pair", of_second,
          u"differs from \"" + of_first + u"\" in the first half of the pair, line " +
              Decimal(first.number));
    }
    // The control gives the second half no label and leaves alone what it has.
    const size_t label = ColumnAt(unit_.stored, u"Description");
    const Text of_first = Shown(unit_.stored.rows[first.row][label]);
    const Text of_second = Shown(unit_.stored.rows[second.row][label]);
    if (of_second.empty() || of_second == of_first) return;
    Add(second.number, column::kLabel, "pair", of_second,
        u"differs from \"" + of_first + u"\" in the first half of the pair, line " +
            Decimal(first.number) + u", and no box shows it");
  }

  const SiteRules& rules_;
  const Unit& unit_;
  std::vector<Line> lines_;
  std::vector<Finding> findings_;
};

OfferedChoices ChoicesOf(const memory::MemoryForm& form) {
  OfferedChoices choices;
  for (int entry = 0; entry < form.cmbVolume.ListCount(); ++entry) {
    choices.volumes.push_back({Code{form.cmbVolume.ItemData(entry)}, form.cmbVolume.List(entry)});
  }
  for (int entry = 0; entry < form.cmbModeType.ListCount(); ++entry) {
    choices.modes.push_back(Code{form.cmbModeType.ItemData(entry)});
  }
  return choices;
}

}  // namespace

SiteRules::SiteRules(SiteSession& session, UnitReader& reader) : reader_(reader) {
  for (const Code type : {line_type::kImpedance, line_type::kHybrid, line_type::kMusicOnHold}) {
    reader.LoadListsOf(type);
    offers_[type] = ChoicesOf(reader.Widgets());
  }
  const RowTable highest =
      session.Rows(u"SELECT Config_ID, PartitionID, NodeType_ID, Max_Number FROM Node_Type_Max");
  for (const std::vector<Value>& row : highest.rows) {
    if (std::any_of(row.begin(), row.end() - 1, IsNull)) continue;
    // A row without a number leaves the list as it is loaded.
    const bool says_none = IsNull(row[3]);
    const int32_t number = says_none ? kLastStartingNodeNumber : ToLong(row[3]);
    const int16_t config = ToInteger(row[0]);
    int32_t& of_unit = highest_of_unit_[config];
    of_unit = std::max(of_unit, number);
    if (says_none) continue;
    highest_numbers_.emplace(std::tuple(config, ToLong(row[1]), ToLong(row[2])), number);
  }
}

std::vector<Finding> SiteRules::Check(const Unit& unit) const {
  return UnitCheck(*this, unit).Run();
}

const OfferedChoices& SiteRules::OffersFor(Code line_type) const {
  static const OfferedChoices kNothing;
  const auto offers = offers_.find(line_type);
  return offers == offers_.end() ? kNothing : offers->second;
}

std::optional<int32_t> SiteRules::HighestNodeNumber(int16_t config, int32_t partition,
                                                    int32_t type) const {
  const auto found = highest_numbers_.find({config, partition, type});
  if (found == highest_numbers_.end()) return std::nullopt;
  return found->second;
}

int32_t SiteRules::HighestNodeNumber(int16_t config) const {
  const auto found = highest_of_unit_.find(config);
  return found == highest_of_unit_.end() ? 0 : found->second;
}

Text SiteRules::StoredVolume(Code volume, Code line_type) const {
  const auto [known, is_new] = volume_captions_.try_emplace({volume, line_type});
  if (is_new) known->second = reader_.StoredVolume(volume, line_type);
  return known->second;
}

}  // namespace rdv::lines
