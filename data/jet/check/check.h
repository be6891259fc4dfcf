// Is everything in a file as it has to be? Reads all of it and says what is wrong, one finding for
// each thing that can be mended by itself.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

enum class FindingKind {
  CommitWords,       // the file was left in the middle of a write
  LeakedPage,        // marked as used, but nobody's
  OwnedPageFree,     // somebody's, but marked as free
  OwnedTwice,        // cannot be mended
  DamagedStructure,  // something that cannot be read; cannot be mended
  WrongPage,         // in a map, but not a page of the map's owner
  DamagedPage,       // its rows cannot be told apart; cannot be mended
  FreeBytes,         // a data page's free space is not what it says
  OrphanRow,         // a moved row that no pointer leads to
  LostRow,           // a pointer that leads to no row
  DamagedRow,        // cannot be mended
  Index,             // is not that of the table's rows
  RowCount,          // in the table's definition
  Autonumber,        // below a number that a row has
  LeakedLongValue,   // a row of a long value that no row refers to
  DamagedLongValue,  // cannot be mended
};

struct Finding {
  FindingKind kind;
  uint32_t page = 0;    // where it was found, 0 for the file as a whole
  uint32_t table = 0;   // page of the definition of the table concerned, 0 for none
  size_t position = 0;  // a row's slot; an index's position in the definition
  RowId map = {};       // of the column whose long value is leaked; of the wrong page
  Text text = {};       // for people
};

struct CheckReport {
  std::vector<Finding> findings;
  // What was looked at.
  uint32_t pages = 0;
  uint32_t free_pages = 0;
  uint32_t tables = 0;
  uint64_t rows = 0;
  uint64_t index_entries = 0;

  bool Clean() const { return findings.empty(); }
};

// The file as `file` shows it, in one statement. Raises only what makes the file as a whole
// unreadable.
CheckReport CheckFile(const FileReader& file);

Text KindName(FindingKind kind);

}  // namespace rdv::jet
