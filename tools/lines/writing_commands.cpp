// set, restore, import and undo.
#include <algorithm>
#include <map>
#include <ostream>
#include <stdexcept>

#include "tools/command_line/command_line.h"
#include "tools/command_line/standard_output.h"
#include "tools/lines/changes.h"
#include "tools/lines/columns.h"
#include "tools/lines/commands.h"
#include "tools/lines/csv.h"
#include "tools/lines/output_file.h"
#include "tools/lines/stored_lines.h"
#include "tools/lines/text_table.h"
#include "tools/lines/unit_table.h"

namespace rdv::lines {
namespace {

using tools::kDone;
using tools::kFindings;

void Print(const std::vector<CellChange>& changes, std::ostream& out) {
  for (const CellChange& change : changes) {
    out << PlaceOf(change.config, change.line, change.column) << ": " << Quotation(change.before)
        << " -> " << Quotation(change.after) << '\n';
  }
}

void Print(const std::vector<RefusedChoice>& refused, std::ostream& out) {
  for (const RefusedChoice& choice : refused) {
    out << "refused: ";
    if (!choice.place.empty()) out << ToUtf8(choice.place) << ", ";
    out << PlaceOf(choice.config, choice.line, choice.column);
    if (choice.column != 0) out << ' ' << Quotation(choice.value);
    out << ": " << OnOneLine(choice.why) << '\n';
  }
}

void Print(const std::vector<Conflict>& conflicts, const char* before, std::ostream& out) {
  for (const Conflict& conflict : conflicts) {
    out << "changed by another program: " << PlaceOf(conflict.config, conflict.line, 0) << ", "
        << ToUtf8(conflict.field) << ": " << before << ' ' << Quotation(conflict.read)
        << ", it is now " << Quotation(conflict.now) << '\n';
  }
}

// The column that shows a field of a line, 0 for a field that none shows.
int ColumnShowing(TextView field) {
  struct Pair {
    TextView field;
    int column;
  };
  static constexpr Pair kPairs[] = {
      {u"Partition_Name", column::kPartition},
      {u"Partition_ID", column::kPartition},
      {u"Starting_Node_Caption", column::kStartingNode},
      {u"Starting_Node_Type_ID", column::kStartingNode},
      {u"Starting_Node_Number", column::kStartingNode},
      {u"Volume_Name", column::kVolume},
      {u"Volume_ID", column::kVolume},
      {u"Mode_Caption", column::kMode},
      {u"Mode_Type_ID", column::kMode},
      {u"Mode_Ring_Number", column::kMode},
      {u"Description", column::kLabel},
      {u"NIS_Option", column::kNISOption},
      {u"RTQA_Option", column::kEWTOption},
      {u"LineType", column::kLineType},
      {u"Impedance", column::kImpedance},
      {u"SoftStop", column::kSoftStop},
  };
  for (const Pair& pair : kPairs) {
    if (EqualsIgnoringCase(pair.field, field)) return pair.column;
  }
  return 0;
}

Text ShownField(const Value& value) {
  return IsNull(value) ? Text() : ToText(value);
}

// Saving writes all lines of a unit as the control has them: what that changes besides the cells
// that were to be changed is told, too.
void PrintSavedBesides(const ChangeOutcome& outcome, std::ostream& out) {
  std::map<std::tuple<int16_t, int, int>, bool> told;
  for (const CellChange& change : outcome.changes) {
    told[{change.config, change.line, change.column}] = true;
  }
  for (const RowChange& row : outcome.rows) {
    if (row.table != ChangedTable::Lines || !row.before || !row.after) continue;
    for (size_t i = 0; i < row.before->size(); ++i) {
      const auto& [field, before] = (*row.before)[i];
      if (told.contains({row.config, row.line, ColumnShowing(field)})) continue;
      const Text old_value = ShownField(before);
      const Text new_value = ShownField((*row.after)[i].second);
      if (old_value == new_value) continue;
      out << "saved with it: " << PlaceOf(row.config, row.line, 0) << ", " << ToUtf8(field) << ": "
          << Quotation(old_value) << " -> " << Quotation(new_value) << '\n';
    }
  }
}

int Finish(const ChangeOutcome& outcome, bool dry_run, const Surroundings& around) {
  Print(outcome.changes, around.out);
  if (outcome.written) PrintSavedBesides(outcome, around.out);
  Print(outcome.refused, around.out);
  Print(outcome.conflicts, "it was read as", around.out);
  if (!outcome.written) {
    around.out << "nothing was written\n";
  } else if (dry_run) {
    around.out << "a trial: nothing was written\n";
  } else {
    around.out << "written; the database from before is "
               << ToUtf8(outcome.copy.filename().u16string()) << '\n';
  }
  if (outcome.written && !dry_run) tools::RequireTold(around.out);
  return outcome.refused.empty() && outcome.conflicts.empty() ? kDone : kFindings;
}

ChangeOptions OptionsFor(bool dry_run, const Surroundings& around) {
  ChangeOptions options;
  options.command = around.command;
  options.dry_run = dry_run;
  options.before_writing = around.before_writing;
  return options;
}

std::vector<int> LinesIn(const UnitEditor& unit, const std::vector<LineRange>& ranges) {
  std::vector<int> lines;
  for (const RowCells& row : unit.Rows()) {
    if (ranges.empty()) lines.push_back(CLng(row[column::kLine]));
  }
  for (const LineRange& range : ranges) {
    for (int line = range.first; line <= range.last; ++line) lines.push_back(line);
  }
  return lines;
}

}  // namespace

int Set(const Selection& selection, const std::vector<LineRange>& ranges,
        const std::vector<Assignment>& assignments, bool dry_run, const Surroundings& around) {
  const int16_t config = selection.configs.front();
  const auto edit = [&](UnitEditor& unit, std::vector<RefusedChoice>& refused) {
    for (const int line : LinesIn(unit, ranges)) {
      const std::optional<int> row = unit.RowOf(line);
      if (!row) {
        refused.push_back({config, line, 0, {}, u"the unit shows no such line", {}});
        continue;
      }
      for (const Assignment& wanted : assignments) {
        if (auto why = unit.Choose(*row, wanted.column, wanted.value)) {
          refused.push_back({config, line, wanted.column, wanted.value, std::move(*why), {}});
        }
      }
    }
  };
  SiteSession session(LocateSite(selection.site));
  return Finish(ChangeUnits(session, {{config, edit}}, OptionsFor(dry_run, around)), dry_run,
                around);
}

int Restore(const Selection& selection, const Text& unit_type, bool dry_run,
            const Surroundings& around) {
  const int16_t config = selection.configs.front();
  const auto edit = [&](UnitEditor& unit, std::vector<RefusedChoice>&) {
    const std::vector<Text> types = unit.UnitTypes();
    if (std::find(types.begin(), types.end(), unit_type) == types.end()) {
      std::string known;
      for (const Text& type : types) known += (known.empty() ? "" : ", ") + Quotation(type);
      throw tools::UsageError(Quotation(unit_type) + " is no unit type; there are " + known);
    }
    unit.RestoreDefault(unit_type);
  };
  SiteSession session(LocateSite(selection.site));
  ChangeOptions options = OptionsFor(dry_run, around);
  options.makes_units = true;
  return Finish(ChangeUnits(session, {{config, edit}}, options), dry_run, around);
}

namespace {

// The rows of one unit in a table that is imported.
struct ImportedUnit {
  int16_t config = 0;
  std::vector<TableRow> rows;
};

std::vector<ImportedUnit> ByUnit(std::vector<TableRow> rows) {
  std::map<int16_t, ImportedUnit> units;
  for (TableRow& row : rows) {
    ImportedUnit& unit = units[row.config];
    unit.config = row.config;
    unit.rows.push_back(std::move(row));
  }
  std::vector<ImportedUnit> list;
  for (auto& [config, unit] : units) list.push_back(std::move(unit));
  return list;
}

std::vector<ImportedUnit> UnitsIn(const Text& file, size_t most_rows) {
  const std::string content = ReadFile(file);
  try {
    return ByUnit(ReadTable(content, most_rows));
  } catch (const CsvError& error) {
    throw tools::Refusal(ToUtf8(file) + ", " + error.what() + "; nothing was written");
  }
}

// In the file that is imported.
Text PlaceIn(const Text& file, const TableRow& row, size_t column) {
  return file + u", row " + Decimal(static_cast<int64_t>(row.row)) +
         (column == 0 ? Text() : u", column " + Decimal(static_cast<int64_t>(column)));
}

void ImportRow(UnitEditor& unit, const Text& file, const TableRow& wanted,
               std::vector<RefusedChoice>& refused) {
  const std::optional<int> row = unit.RowOf(wanted.line);
  if (!row) {
    refused.push_back({wanted.config,
                       wanted.line,
                       0,
                       {},
                       u"the unit shows no such line",
                       PlaceIn(file, wanted, 0)});
    return;
  }
  for (size_t i = 0; i < kShownColumns.size(); ++i) {
    const int column = kShownColumns[i].column;
    const Text& value = wanted.cells[column];
    if (value == unit.Cell(*row, column) || column == column::kLine) continue;
    std::optional<Text> why = unit.Choose(*row, column, value);
    if (!why) {
      if (!unit.Shows(*row, column, value))
        why = u"the cell would show \"" + unit.Cell(*row, column) + u"\"";
    }
    if (why) {
      refused.push_back({wanted.config, wanted.line, column, value, std::move(*why),
                         PlaceIn(file, wanted, i + 2)});
    }
  }
}

// The row that speaks of a unit first.
const TableRow& FirstOf(int16_t config, const std::vector<ImportedUnit>& units) {
  return std::find_if(units.begin(), units.end(),
                      [config](const ImportedUnit& unit) { return unit.config == config; })
      ->rows.front();
}

// Whether the table has another cell for a line, or another line.
bool Differs(const Unit& unit, const ImportedUnit& wanted) {
  if (!unit.failure.empty()) return true;
  for (const TableRow& row : wanted.rows) {
    const Text line = Decimal(row.line);
    const auto shown = std::find_if(unit.rows.begin(), unit.rows.end(), [&](const RowCells& cells) {
      return cells[column::kLine] == line;
    });
    if (shown == unit.rows.end()) return true;
    for (const ShownColumn& column : kShownColumns) {
      if (column.column == column::kLine) continue;
      if ((*shown)[column.column] != row.cells[column.column]) return true;
    }
  }
  return false;
}

std::vector<UnitEdit> EditsFor(SiteSession& session, const Text& file,
                               const std::vector<ImportedUnit>& units, const Surroundings& around) {
  return ReadConsistently(session, [&] {
    UnitReader reader(session);
    const std::vector<int16_t> known = KnownConfigurations(session);
    Progress progress(around.errors, around.on_terminal, "comparing", units.size());
    std::vector<UnitEdit> edits;
    size_t compared = 0;
    for (const ImportedUnit& unit : units) {
      progress.Done(++compared);
      // One that the site does not know is refused as such.
      const bool is_known = std::binary_search(known.begin(), known.end(), unit.config);
      if (is_known && !Differs(reader.Read(unit.config), unit)) continue;
      edits.push_back(
          {unit.config, [&unit, &file](UnitEditor& editor, std::vector<RefusedChoice>& refused) {
             for (const TableRow& row : unit.rows) ImportRow(editor, file, row, refused);
           }});
    }
    return edits;
  });
}

}  // namespace

int Import(const std::optional<Text>& site, const Text& file, bool dry_run,
           const Surroundings& around) {
  SiteSession session(LocateSite(site));
  const std::vector<ImportedUnit> units =
      UnitsIn(file, ReadConsistently(session, [&] { return MostLines(session); }));
  const std::vector<UnitEdit> edits = EditsFor(session, file, units, around);
  ChangeOptions options = OptionsFor(dry_run, around);
  options.all_or_nothing = true;
  // Each unit is worked on twice: to see what comes of it, and to write it.
  Progress progress(around.errors, around.on_terminal, "unit", 2 * edits.size());
  options.done = [&progress](size_t count) { progress.Done(count); };
  ChangeOutcome outcome = ChangeUnits(session, edits, options);
  for (RefusedChoice& refused : outcome.refused) {
    if (refused.place.empty()) refused.place = PlaceIn(file, FirstOf(refused.config, units), 0);
  }
  return Finish(outcome, dry_run, around);
}

int Undo(const std::optional<Text>& site, bool dry_run, const Surroundings& around) {
  SiteSession session(LocateSite(site));
  const UndoOutcome outcome = UndoLastChange(session, OptionsFor(dry_run, around));
  if (!outcome.found) throw tools::Refusal("there is no change of this tool to take back");
  around.out << (outcome.conflicts.empty() && !outcome.unmade ? "takes back: " : "last change: ")
             << ToUtf8(outcome.record.command) << " (" << outcome.record.when << " UTC)\n";
  if (outcome.unmade) {
    around.out
        << "it was never made, or every line is again what it was before it: nothing is to be "
           "taken back\n";
    return kDone;
  }
  Print(outcome.changes, around.out);
  Print(outcome.conflicts, "the change left", around.out);
  if (!outcome.conflicts.empty()) {
    around.out << "nothing was written\n";
    return kFindings;
  }
  if (dry_run) {
    around.out << "a trial: nothing was written\n";
  } else {
    around.out << "written; the database from before is "
               << ToUtf8(outcome.copy.filename().u16string()) << '\n';
    tools::RequireTold(around.out);
  }
  return kDone;
}

}  // namespace rdv::lines
