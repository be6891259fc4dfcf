#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>

#include "tools/lines/changes.h"
#include "tools/lines/dated_files.h"
#include "tools/lines/site_copy.h"
#include "tools/lines/stored_lines.h"
#include "tools/lines/trial_site.h"
#include "tools/lines/unit.h"

namespace rdv::lines {
namespace {

Argument AsArgument(const Value& value) {
  if (IsNull(value)) return std::nullopt;
  return ToText(value);
}

// "name = `Given_1`" of each field, the arguments added in their order.
Text Assignments(const Fields& fields, std::vector<Argument>& arguments) {
  Text text;
  for (const auto& [column, value] : fields) {
    if (!text.empty()) text += u", ";
    text += u"[" + column + u"] = `Given_" + Decimal(static_cast<int64_t>(arguments.size())) + u"`";
    arguments.push_back(AsArgument(value));
  }
  return text;
}

Text WhereIs(const RowChange& row) {
  Text where =
      u" WHERE Config_ID = " + Decimal(row.config) + u" AND Base_Slot_No = 1 AND Slot_Offset = 1";
  if (row.table == ChangedTable::Lines) where += u" AND Line = " + Decimal(row.line);
  return where;
}

// The statement that brings the row back to what it was.
void TakeBack(SiteSession& session, const RowChange& row) {
  const Text table(NameOf(row.table));
  std::vector<Argument> arguments;
  if (!row.before) {
    session.Execute(u"DELETE FROM " + table + WhereIs(row), arguments);
  } else if (row.after) {
    const Text assignments = Assignments(*row.before, arguments);
    session.Execute(u"UPDATE " + table + u" SET " + assignments + WhereIs(row), arguments);
  } else {
    Text columns;
    Text places;
    for (const auto& [column, value] : *row.before) {
      columns += (columns.empty() ? u"[" : u", [") + column + u"]";
      places += (places.empty() ? u"`Given_" : u", `Given_") +
                Decimal(static_cast<int64_t>(arguments.size())) + u"`";
      arguments.push_back(AsArgument(value));
    }
    session.Execute(u"INSERT INTO " + table + u" (" + columns + u") VALUES (" + places + u")",
                    arguments);
  }
}

// A unit's rows of one of the tables, and which of them a change is about.
class RowsNow {
 public:
  explicit RowsNow(SiteSession& session) : session_(session) {}

  const RowTable& TableOf(const RowChange& row) {
    const auto key = std::pair(row.table, row.config);
    if (!table_ || key_ != key) {
      key_ = key;
      table_ = row.table == ChangedTable::Lines ? ReadStoredLines(session_, row.config)
                                                : ReadStoredCard(session_, row.config);
    }
    return *table_;
  }

  // The position in TableOf; nothing when there is no such row.
  std::optional<size_t> Find(const RowChange& row) {
    const RowTable& table = TableOf(row);
    for (size_t i = 0; i < table.rows.size(); ++i) {
      if (row.table == ChangedTable::Cards) return i;
      if (ToInteger(table.rows[i][ColumnAt(table, u"Line")]) == row.line) return i;
    }
    return std::nullopt;
  }

 private:
  SiteSession& session_;
  std::pair<ChangedTable, int16_t> key_{};
  std::optional<RowTable> table_;
};

bool Holds(const RowTable& table, size_t row, const Fields& fields) {
  for (const auto& [column, value] : fields) {
    if (Shown(table.rows[row][ColumnAt(table, column)]) != Shown(value)) return false;
  }
  return true;
}

class UndoOfLast {
 public:
  // The records lie beside `database`, of which the session may have a copy.
  UndoOfLast(SiteSession& session, const std::filesystem::path& database,
             const ChangeOptions& options)
      : session_(session), database_(database), options_(options) {}

  UndoOutcome Run() {
    const std::filesystem::path& database = database_;
    const std::vector<std::filesystem::path> records = DatedFiles(database, kRecordEnding);
    if (records.empty()) return {};
    outcome_.found = true;
    outcome_.record = ReadRecord(records.back());

    SiteSession::Writing writing(session_);
    try {
      outcome_.unmade = WasNeverMade();
      if (!outcome_.unmade) FindConflicts();
    } catch (const RuntimeError& error) {
      throw std::runtime_error("the record of the last change does not fit the database: " +
                               ToUtf8(records.back().u16string()) + ": " +
                               ToUtf8(error.Description()));
    }
    if (!outcome_.conflicts.empty()) return std::move(outcome_);
    if (!outcome_.unmade) {
      if (!options_.dry_run) {
        outcome_.copy = NextDatedStem(database);
        outcome_.copy += kCopyEnding;
        RemoveDrafts(database);
        CopySite(session_.Database(), outcome_.copy);
      }
      const auto before = RowsOfUnits();
      for (const RowChange& row : outcome_.record.rows) TakeBack(session_, row);
      const auto after = RowsOfUnits();
      for (const auto& [config, rows] : before) {
        CompareCells(config, rows, after.at(config), outcome_.changes);
      }
      if (options_.dry_run) return std::move(outcome_);
      writing.Commit();
      RemoveOldest(database, kCopyEnding);
    }
    if (!options_.dry_run) std::filesystem::remove(records.back());
    return std::move(outcome_);
  }

 private:
  std::map<int16_t, std::vector<RowCells>> RowsOfUnits() {
    UnitReader reader(session_);
    std::map<int16_t, std::vector<RowCells>> rows;
    for (const RowChange& row : outcome_.record.rows) {
      if (!rows.contains(row.config)) rows[row.config] = reader.Read(row.config).rows;
    }
    return rows;
  }

  // The record is written just before the change: a process that died between the two leaves every
  // row as it was.
  bool WasNeverMade() {
    RowsNow now(session_);
    bool differs = false;
    for (const RowChange& row : outcome_.record.rows) {
      const std::optional<size_t> place = now.Find(row);
      const RowTable& table = now.TableOf(row);
      if (place.has_value() != row.before.has_value()) return false;
      if (place && !Holds(table, *place, *row.before)) return false;
      if (place && DigestOf(table, *place) == row.whole_after) return false;
      differs = true;
    }
    return differs;
  }

  void FindConflicts() {
    RowsNow now(session_);
    for (const RowChange& row : outcome_.record.rows) {
      const std::optional<size_t> place = now.Find(row);
      const RowTable& table = now.TableOf(row);
      if (place.has_value() != row.after.has_value()) {
        outcome_.conflicts.push_back({row.config, row.line, u"Line",
                                      row.after ? u"there" : u"not there",
                                      place ? u"there" : u"not there"});
      } else if (place && DigestOf(table, *place) != row.whole_after) {
        AddConflicts(row, table, *place);
      }
    }
  }

  // Every field of the row that is another one by now, whether the change wrote it or not.
  void AddConflicts(const RowChange& row, const RowTable& table, size_t place) {
    const size_t known = outcome_.conflicts.size();
    const std::vector<Text>& columns = outcome_.record.columns[static_cast<size_t>(row.table)];
    for (size_t i = 0; i < std::min(columns.size(), row.row_after.size()); ++i) {
      const Value& now = table.rows[place][ColumnAt(table, columns[i])];
      const Text left = Shown(row.row_after[i]);
      if (!IsKept(now) || Shown(now) == left) continue;
      outcome_.conflicts.push_back({row.config, row.line, columns[i], left, Shown(now)});
    }
    if (outcome_.conflicts.size() == known) {
      outcome_.conflicts.push_back(
          {row.config, row.line, u"a field of a type that no record holds", {}, {}});
    }
  }

  SiteSession& session_;
  const std::filesystem::path& database_;
  const ChangeOptions& options_;
  UndoOutcome outcome_;
};

}  // namespace

UndoOutcome UndoLastChange(SiteSession& session, const ChangeOptions& options) {
  const std::filesystem::path database(session.Database());
  UndoOutcome outcome = WithTrialSite(session, options.dry_run, [&](SiteSession& on) {
    return UndoOfLast(on, database, options).Run();
  });
  if (!outcome.changes.empty() && !options.dry_run) session.Close();
  return outcome;
}

}  // namespace rdv::lines
