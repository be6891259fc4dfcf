// Changing units: the one place of this tool that writes to a database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/lines/change_record.h"
#include "tools/lines/site_session.h"
#include "tools/lines/unit_editor.h"

namespace rdv::lines {

// A cell that the grid shows otherwise than before. Where the caption is the same and the codes
// behind it are not, the codes stand behind it in brackets.
struct CellChange {
  int16_t config = 0;
  int line = 0;
  int column = 0;
  Text before;
  Text after;

  bool operator==(const CellChange&) const = default;
};

struct RefusedChoice {
  int16_t config = 0;
  int line = 0;    // 0 for the unit as a whole
  int column = 0;  // 0 for the line as a whole
  Text value;
  Text why;
  Text place;  // in a file: "row 7, column 5"

  bool operator==(const RefusedChoice&) const = default;
};

// What is to be done to one unit. Run twice, on a unit in the same state each time: to see what
// comes of it while nobody is kept from writing, and once more under the lock, where what may be
// chosen can be another by now. Loaded units are not kept between the two: of a large site there
// are thousands.
struct UnitEdit {
  int16_t config = 0;
  std::function<void(UnitEditor& unit, std::vector<RefusedChoice>& refused)> edit;
};

// A field that another program has changed while the change was being worked out.
struct Conflict {
  int16_t config = 0;
  int16_t line = 0;
  Text field;
  Text read;
  Text now;
};

struct ChangeOptions {
  Text command;                          // as the record tells it
  bool dry_run = false;                  // everything but the last step
  bool all_or_nothing = false;           // a refusal keeps everything from being written
  bool makes_units = false;              // a unit of which nothing is stored is made, not refused
  std::function<void(size_t)> done;      // told how many units have been worked on; may be empty
  std::function<void()> before_writing;  // between reading and writing; may be empty
};

struct ChangeOutcome {
  std::vector<CellChange> changes;
  std::vector<RefusedChoice> refused;
  // What saving the units changed besides, as it does in the control.
  std::vector<RowChange> rows;
  std::vector<Conflict> conflicts;  // with any, nothing was written
  bool written = false;             // with `dry_run`: would have been
  std::filesystem::path copy;       // of the database from before; empty without one
};

// Works the edits out on one state of the file, then makes those that change something: under the
// lock of a writer, on lines that nobody has changed since, all in one step that happens or does
// not. Before it the database is copied. Raises what keeps it from being done; nothing is written
// then.
ChangeOutcome ChangeUnits(SiteSession& session, const std::vector<UnitEdit>& edits,
                          const ChangeOptions& options);

struct UndoOutcome {
  bool found = false;   // whether there was a change to take back
  bool unmade = false;  // its writer died before it was made: only its record is dropped
  ChangeRecord record;
  std::vector<CellChange> changes;
  std::vector<Conflict> conflicts;
  std::filesystem::path copy;
};

// Takes the newest recorded change back, unless a line of it was changed since.
UndoOutcome UndoLastChange(SiteSession& session, const ChangeOptions& options);

// The cells in which two states of a unit differ.
void CompareCells(int16_t config, const std::vector<RowCells>& before,
                  const std::vector<RowCells>& after, std::vector<CellChange>& to);

}  // namespace rdv::lines
