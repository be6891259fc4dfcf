// show, check, export and compare.
#include <algorithm>
#include <map>
#include <ostream>

#include "tools/command_line/exit_codes.h"
#include "tools/lines/changes.h"
#include "tools/lines/columns.h"
#include "tools/lines/commands.h"
#include "tools/lines/json_output.h"
#include "tools/lines/output_file.h"
#include "tools/lines/site_contents.h"
#include "tools/lines/text_table.h"
#include "tools/lines/unit_table.h"

namespace rdv::lines {
namespace {

using tools::kDone;
using tools::kFindings;

std::string ConfigurationName(int16_t config) {
  return PlaceOf(config, 0, 0);
}

void ShowText(const std::vector<Unit>& units, std::ostream& out) {
  bool first = true;
  for (const Unit& unit : units) {
    if (!first) out << '\n';
    first = false;
    out << ConfigurationName(unit.config) << '\n';
    if (!unit.HasLines()) {
      out << "no lines are stored\n";
      continue;
    }
    if (!unit.failure.empty()) out << "cannot be shown whole: " << OnOneLine(unit.failure) << '\n';
    std::vector<std::vector<Text>> rows(1);
    for (const ShownColumn& shown : kShownColumns) rows[0].emplace_back(CaptionOf(shown.column));
    for (const RowCells& row : unit.rows) {
      std::vector<Text>& cells = rows.emplace_back();
      for (const ShownColumn& shown : kShownColumns) cells.push_back(row[shown.column]);
    }
    if (rows.size() > 1) out << AlignedTable(rows);
  }
}

// Units that are shown in part, or not at all, are told of where the format has no place for it.
int TellFailures(const SiteContents& contents, std::ostream& errors) {
  int code = kDone;
  if (!contents.settings_failure.empty()) {
    errors << "the site: " << OnOneLine(contents.settings_failure) << '\n';
    code = kFindings;
  }
  for (const Unit& unit : contents.units) {
    if (unit.failure.empty()) continue;
    errors << ConfigurationName(unit.config)
           << " cannot be shown whole: " << OnOneLine(unit.failure) << '\n';
    code = kFindings;
  }
  return code;
}

std::string AsText(const Finding& finding) {
  std::string text = PlaceOf(finding.config, finding.line, finding.column);
  if (finding.column != 0) text += ' ' + Quotation(finding.value);
  return text + ": " + OnOneLine(finding.why) + '\n';
}

enum class Side { Both, Left, Right };

struct Difference {
  int16_t config = 0;
  int line = 0;
  int column = 0;
  Side side = Side::Both;  // where the unit or the line is
  Text left;
  Text right;
};

constexpr const char* kSideNames[] = {"both", "first", "second"};

bool HasLine(const Unit& unit, int line) {
  const Text wanted = Decimal(line);
  for (const RowCells& row : unit.rows) {
    if (row[column::kLine] == wanted) return true;
  }
  return false;
}

// Lines that only one has are told of as long as both are shown whole: what is not shown may be
// there.
void CompareUnits(const Unit& left, const Unit& right, std::vector<Difference>& to) {
  const bool whole = left.failure.empty() && right.failure.empty();
  std::vector<CellChange> changes;
  CompareCells(left.config, left.rows, right.rows, changes);
  for (const CellChange& change : changes) {
    const bool in_left = HasLine(left, change.line);
    if (in_left && HasLine(right, change.line)) {
      to.push_back(
          {change.config, change.line, change.column, Side::Both, change.before, change.after});
    } else if (!whole) {
      continue;
    } else if (to.empty() || to.back().config != change.config || to.back().line != change.line) {
      to.push_back({change.config, change.line, 0, in_left ? Side::Left : Side::Right, {}, {}});
    }
  }
}

std::vector<Difference> Differences(const std::vector<Unit>& left, const std::vector<Unit>& right) {
  std::map<int16_t, std::pair<const Unit*, const Unit*>> by_config;
  for (const Unit& unit : left) by_config[unit.config].first = &unit;
  for (const Unit& unit : right) by_config[unit.config].second = &unit;
  std::vector<Difference> differences;
  for (const auto& [config, sides] : by_config) {
    if (sides.first && sides.second) {
      CompareUnits(*sides.first, *sides.second, differences);
    } else {
      differences.push_back({config, 0, 0, sides.first ? Side::Left : Side::Right, {}, {}});
    }
  }
  return differences;
}

std::string AsText(const Difference& difference) {
  std::string text = PlaceOf(difference.config, difference.line, difference.column);
  if (difference.side != Side::Both) {
    return text + ": only in the " + kSideNames[static_cast<int>(difference.side)] + " site\n";
  }
  return text + ": " + Quotation(difference.left) + " | " + Quotation(difference.right) + '\n';
}

Json JsonOf(const Difference& difference) {
  Json json;
  json["configuration"] = difference.config;
  json["line"] = difference.line == 0 ? Json(nullptr) : Json(difference.line);
  json["column"] =
      difference.column == 0 ? Json(nullptr) : Json(ToUtf8(CaptionOf(difference.column)));
  json["in"] = kSideNames[static_cast<int>(difference.side)];
  json["first"] = ToUtf8(difference.left);
  json["second"] = ToUtf8(difference.right);
  return json;
}

}  // namespace

int Show(const Selection& selection, Format format, const Surroundings& around) {
  const SiteContents contents = ReadSite(selection, WithFindings::No, around);
  switch (format) {
    case Format::Csv:
      around.out << TableOf(contents.units);
      break;
    case Format::Json: {
      Json document;
      document["configurations"] = Json::array();
      for (const Unit& unit : contents.units) document["configurations"].push_back(JsonOf(unit));
      around.out << Printed(document);
      break;
    }
    case Format::Text:
      ShowText(contents.units, around.out);
      break;
  }
  return TellFailures(contents, around.errors);
}

int Check(const Selection& selection, Format format, const Surroundings& around) {
  const SiteContents contents = ReadSite(selection, WithFindings::Yes, around);
  if (format == Format::Json) {
    Json document;
    document["configurations"] = contents.units.size();
    document["findings"] = Json::array();
    if (!contents.settings_failure.empty())
      document["findings"].push_back(JsonOfSettings(contents.settings_failure));
    for (const Finding& finding : contents.findings)
      document["findings"].push_back(JsonOf(finding));
    around.out << Printed(document);
  } else {
    if (!contents.settings_failure.empty())
      around.out << "the site: " << OnOneLine(contents.settings_failure) << '\n';
    for (const Finding& finding : contents.findings) around.out << AsText(finding);
  }
  return contents.Flawless() ? kDone : kFindings;
}

int Export(const Selection& selection, const std::optional<Text>& file,
           const Surroundings& around) {
  const SiteContents contents = ReadSite(selection, WithFindings::No, around);
  const std::string table = TableOf(contents.units);
  if (file) {
    WriteFile(*file, table);
  } else {
    around.out << table;
  }
  return TellFailures(contents, around.errors);
}

int Compare(const Text& left, const Text& right, Format format, const Surroundings& around) {
  const SiteContents first = ReadSite({left, {}}, WithFindings::No, around);
  const SiteContents second = ReadSite({right, {}}, WithFindings::No, around);
  const std::vector<Difference> differences = Differences(first.units, second.units);
  if (format == Format::Json) {
    Json document;
    document["differences"] = Json::array();
    for (const Difference& difference : differences) {
      document["differences"].push_back(JsonOf(difference));
    }
    around.out << Printed(document);
  } else {
    for (const Difference& difference : differences) around.out << AsText(difference);
  }
  const int failed =
      std::max(TellFailures(first, around.errors), TellFailures(second, around.errors));
  return differences.empty() ? failed : kFindings;
}

}  // namespace rdv::lines
