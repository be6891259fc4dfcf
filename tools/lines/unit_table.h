// Units as a table for spreadsheets: one row for a line, one column for what the grid shows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/lines/unit.h"

namespace rdv::lines {

// The captions, the configuration before them.
std::vector<Text> TableHeader();

// With a byte order mark and the header.
std::string TableOf(const std::vector<Unit>& units);

// A line as a table has it.
struct TableRow {
  size_t row = 0;  // in the file, from 1
  int16_t config = 0;
  int16_t line = 0;
  RowCells cells;  // the shown columns only
};

// The rows of a table, in its order. Throws CsvError for what is no such table: another header,
// too few or too many fields, numbers that are none, a line that is there twice, more than
// `most_rows`. The memory that it takes is bounded by these.
std::vector<TableRow> ReadTable(std::string_view bytes, size_t most_rows);

}  // namespace rdv::lines
