#include "tools/lines/changes.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "data/jet/format/schema.h"
#include "tools/command_line/command_line.h"
#include "tools/lines/dated_files.h"
#include "tools/lines/site_copy.h"
#include "tools/lines/stored_lines.h"
#include "tools/lines/trial_site.h"
#include "tools/lines/unit.h"

namespace rdv::lines {
namespace {

// A unit that the edits change.
struct PlannedUnit {
  const UnitEdit* edit = nullptr;
  RowTable read;  // its lines when the change was worked out
  std::vector<RowCells> before;
  std::vector<RowCells> after;  // as the editors leave it
};

std::string UnitName(int16_t config) {
  return "configuration " + std::to_string(config);
}

void FindConflicts(int16_t config, const RowTable& read, const RowTable& now,
                   std::vector<Conflict>& to) {
  std::vector<RowChange> differences;
  CompareRows(ChangedTable::Lines, config, read, now, differences);
  for (const RowChange& row : differences) {
    if (!row.before || !row.after) {
      to.push_back({config, row.line, u"Line", row.before ? u"there" : u"not there",
                    row.after ? u"there" : u"not there"});
      continue;
    }
    for (size_t i = 0; i < row.before->size(); ++i) {
      to.push_back({config, row.line, (*row.before)[i].first, Shown((*row.before)[i].second),
                    Shown((*row.after)[i].second)});
    }
  }
}

class Change {
 public:
  Change(SiteSession& session, const std::vector<UnitEdit>& edits, const ChangeOptions& options)
      : session_(session), edits_(edits), options_(options) {}

  ChangeOutcome Run() {
    WorkOut();
    if (planned_.empty()) return std::move(outcome_);
    if (options_.all_or_nothing && !outcome_.refused.empty()) {
      TryOut();
    } else {
      if (options_.before_writing) options_.before_writing();
      Write(options_.dry_run);
    }
    return std::move(outcome_);
  }

 private:
  void WorkOut() {
    if (options_.makes_units) {
      // The control stores a new unit as soon as it shows it: here only for as long as it takes.
      const SiteSession::Writing trial(session_);
      PlanAll();
      return;
    }
    ReadConsistently(session_, [&] {
      outcome_ = {};
      planned_.clear();
      PlanAll();
      return true;
    });
  }

  void PlanAll() {
    // What keeps every unit from being shown is said once, before any unit is asked for.
    const UnitReader site(session_);
    const std::vector<int16_t> known = KnownConfigurations(session_);
    size_t worked_on = 0;
    for (const UnitEdit& edit : edits_) {
      if (std::binary_search(known.begin(), known.end(), edit.config)) {
        Plan(edit);
      } else {
        Refuse(edit.config, u"it is not in the site");
      }
      if (options_.done) options_.done(++worked_on);
    }
  }

  void Plan(const UnitEdit& edit) {
    PlannedUnit unit{&edit, ReadStoredLines(session_, edit.config), {}, {}};
    if (unit.read.rows.empty() && !options_.makes_units) {
      Refuse(edit.config, u"no lines are stored; restore it to a unit type to make them");
      return;
    }
    const bool is_new = unit.read.rows.empty();
    UnitEditor editor(LongestLabel());
    try {
      editor.Show(edit.config);
    } catch (const std::runtime_error& error) {
      Refuse(edit.config, u"the control cannot show the unit: " + FromUtf8(error.what()));
      return;
    }
    if (!is_new) unit.before = editor.Rows();
    edit.edit(editor, outcome_.refused);
    unit.after = editor.Rows();
    const size_t known = outcome_.changes.size();
    CompareCells(edit.config, unit.before, unit.after, outcome_.changes);
    if (outcome_.changes.size() > known) planned_.push_back(std::move(unit));
  }

  size_t LongestLabel() {
    for (const jet::Column& column : session_.Engine().Table(u"Used_Lines").columns) {
      if (EqualsIgnoringCase(column.name, u"Description") && column.type == jet::ColumnType::Text)
        return column.length / sizeof(char16_t);
    }
    return std::numeric_limits<size_t>::max();
  }

  void Refuse(int16_t config, Text why) {
    outcome_.refused.push_back({config, 0, 0, {}, std::move(why), {}});
  }

  // What would be seen of a change that is refused: nothing of it is written.
  void TryOut() {
    try {
      Write(true);
    } catch (const NoRightToWrite&) {
      // Then it is told as the editors show it.
    }
    outcome_.written = false;
  }

  void Write(bool dry_run) {
    SiteSession::Writing writing(session_);
    for (const PlannedUnit& unit : planned_) {
      FindConflicts(unit.edit->config, unit.read, ReadStoredLines(session_, unit.edit->config),
                    outcome_.conflicts);
    }
    if (!outcome_.conflicts.empty()) return;

    const std::filesystem::path database(session_.Database());
    const std::filesystem::path stem = NextDatedStem(database);
    if (!dry_run) {
      outcome_.copy = stem;
      outcome_.copy += kCopyEnding;
      RemoveDrafts(database);
      CopySite(session_.Database(), outcome_.copy);
    }
    try {
      MakeChanges();
      TellAsLoaded();
    } catch (...) {
      // Of a database that stays as it is nobody needs a copy.
      Remove(outcome_.copy);
      throw;
    }
    // What was chosen may come to the same as what is stored.
    if (outcome_.rows.empty()) return Remove(outcome_.copy);
    outcome_.written = true;
    if (dry_run) return;

    std::filesystem::path record = stem;
    record += kRecordEnding;
    WriteRecord(session_.Database(), record,
                {RecordTimeNow(), options_.command, std::move(columns_), outcome_.rows});
    try {
      writing.Commit();
    } catch (...) {
      Remove(record);
      throw;
    }
    RemoveOldest(database, kCopyEnding);
    RemoveOldest(database, kRecordEnding);
  }

  static void Remove(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!file.empty()) std::filesystem::remove(file, ignored);
  }

  void MakeChanges() {
    size_t worked_on = edits_.size();
    for (const PlannedUnit& unit : planned_) {
      MakeChange(unit);
      if (options_.done) options_.done(++worked_on);
    }
  }

  void MakeChange(const PlannedUnit& unit) {
    const int16_t config = unit.edit->config;
    const RowTable card = ReadStoredCard(session_, config);
    UnitEditor editor(LongestLabel());
    try {
      editor.Show(config);
      std::vector<RefusedChoice> refused_again;
      unit.edit->edit(editor, refused_again);
      std::vector<CellChange> differences;
      CompareCells(config, unit.after, editor.Rows(), differences);
      if (!differences.empty()) {
        throw std::runtime_error("another program has changed what may be chosen; try again");
      }
      editor.Apply();
    } catch (const std::exception& error) {
      throw tools::Refusal("nothing was written; " + UnitName(config) + ": " + error.what());
    }
    CompareTables(ChangedTable::Lines, config, unit.read, ReadStoredLines(session_, config));
    CompareTables(ChangedTable::Cards, config, card, ReadStoredCard(session_, config));
  }

  void CompareTables(ChangedTable kind, int16_t config, const RowTable& before,
                     const RowTable& after) {
    CompareRows(kind, config, before, after, outcome_.rows);
    columns_[static_cast<size_t>(kind)] = after.columns;
  }

  // The cells as the next load shows them: saved text may come back as another, "007" as 7.
  void TellAsLoaded() {
    UnitReader reader(session_);
    outcome_.changes.clear();
    for (const PlannedUnit& planned : planned_) {
      const int16_t config = planned.edit->config;
      const Unit unit = reader.Read(config);
      CompareCells(config, planned.before, unit.failure.empty() ? unit.rows : planned.after,
                   outcome_.changes);
    }
  }

  SiteSession& session_;
  const std::vector<UnitEdit>& edits_;
  const ChangeOptions& options_;
  std::vector<PlannedUnit> planned_;
  ColumnsByTable columns_;
  ChangeOutcome outcome_;
};

}  // namespace

ChangeOutcome ChangeUnits(SiteSession& session, const std::vector<UnitEdit>& edits,
                          const ChangeOptions& options) {
  ChangeOutcome outcome = WithTrialSite(
      session, options.dry_run, [&](SiteSession& on) { return Change(on, edits, options).Run(); });
  if (outcome.written && !options.dry_run) session.Close();
  return outcome;
}

}  // namespace rdv::lines
