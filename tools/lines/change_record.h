// What a change did to the database, kept beside it so that the change can be taken back.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data/connection.h"
#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::lines {

using Fields = std::vector<std::pair<Text, Value>>;  // by column

enum class ChangedTable { Lines, Cards };

// As the database calls it.
TextView NameOf(ChangedTable table);

// A row of a unit. Where it was there before and after, the fields are those that differ; else all.
struct RowChange {
  ChangedTable table = ChangedTable::Lines;
  int16_t config = 0;
  int16_t line = 0;              // 0 for a card
  std::optional<Fields> before;  // nothing: the row was made
  std::optional<Fields> after;   // nothing: the row was taken away
  std::string whole_after;       // a digest of the whole row; "" without one
  std::vector<Value> row_after;  // all of it, by the columns of the record; none without one

  bool operator==(const RowChange&) const = default;
};

// The names of the columns, by ChangedTable.
using ColumnsByTable = std::array<std::vector<Text>, 2>;

struct ChangeRecord {
  std::string when;  // "2026-11-22 07:45:12" UTC
  Text command;      // the words of the command
  ColumnsByTable columns;
  std::vector<RowChange> rows;

  bool operator==(const ChangeRecord&) const = default;
};

// The present time in the form of a record.
std::string RecordTimeNow();

// Whether a record holds values of that type.
bool IsKept(const Value& value);

// How a row's columns are told apart from those of a row that differs anywhere.
std::string DigestOf(const RowTable& table, size_t row);

// The differences of two states of a unit's rows, in the order of lines.
void CompareRows(ChangedTable kind, int16_t config, const RowTable& before, const RowTable& after,
                 std::vector<RowChange>& to);

// Throws std::runtime_error when the file is not on the disk afterwards.
void WriteRecord(const Text& database, const std::filesystem::path& path,
                 const ChangeRecord& record);
// Throws std::runtime_error for a file that is none.
ChangeRecord ReadRecord(const std::filesystem::path& path);

}  // namespace rdv::lines
