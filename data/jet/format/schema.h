// What a file says about its tables: columns, indexes and where their pages are listed. Plain data,
// owned by whoever read it.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::jet {

// The place of a row; page 0 holds no rows, so a default-made one points nowhere.
struct RowId {
  uint32_t page = 0;
  uint8_t row = 0;

  auto operator<=>(const RowId&) const = default;
  explicit operator bool() const { return page != 0; }
};

// A row pointer's kRowPointerSize bytes.
RowId LoadRowPointer(const uint8_t* from);
void StoreRowPointer(uint8_t* to, RowId row);

// The values are those on disk.
enum class ColumnType : uint8_t {
  Boolean = 0x01,
  Byte = 0x02,
  Integer = 0x03,
  Long = 0x04,
  Currency = 0x05,
  Single = 0x06,
  Double = 0x07,
  DateTime = 0x08,
  Binary = 0x09,
  Text = 0x0A,
  Ole = 0x0B,
  Memo = 0x0C,
  Guid = 0x0F,
  Numeric = 0x10,
};

struct Column {
  Text name;
  ColumnType type = ColumnType::Long;
  uint16_t number = 0;      // never reused in a table; the bit of the null mask
  uint16_t ordinal = 0;     // display position
  uint16_t length = 0;      // bytes as defined; 0 for memo and OLE, 1 for Boolean
  bool fixed = false;       // stored in the fixed area, whatever the type
  bool autonumber = false;  // Long: the next number; GUID: a new one
  bool compressible = false;
  bool sid = false;  // encrypted in the catalog's tables
  uint8_t precision = 0;
  uint8_t scale = 0;
  uint16_t fixed_offset = 0;    // only where `fixed`: from the first byte of the fixed area
  uint16_t variable_index = 0;  // only where not `fixed`
  uint16_t sort_order = 0;      // language identifier of the texts
  uint8_t sort_version = 0;

  // From the table's properties; as given here when there are none.
  bool required = false;
  bool allow_zero_length = true;
  Text default_value;  // an expression as stored, "" for none
  Text validation_rule;

  // Pages of a memo or OLE column's long values. A map that is absent points nowhere.
  RowId owned_map;
  RowId free_map;

  bool IsLongValue() const { return type == ColumnType::Memo || type == ColumnType::Ole; }
  bool IsText() const { return type == ColumnType::Memo || type == ColumnType::Text; }
};

// What the column takes in the fixed area.
size_t FixedSize(const Column& column);

// Whether the value, which is not Null, is of the type that the column's values have.
bool HasTypeOf(const Column& column, const Value& value);

struct IndexColumn {
  size_t column = 0;  // position in TableDefinition::columns
  bool descending = false;
};

// An index as it is stored: a tree of pages.
struct RealIndex {
  size_t position = 0;  // in TableDefinition::indexes
  std::vector<IndexColumn> columns;
  bool unique = false;
  bool ignore_nulls = false;  // rows whose index columns are all Null have no entry
  bool required = false;      // Null is refused
  RowId map;
  uint32_t root = 0;  // keeps its page for the life of the index
};

enum class LogicalIndexKind : uint8_t { Plain = 0, Primary = 1, ForeignKey = 2 };

// One end of an enforced relationship, held by the logical index of either table.
struct ForeignKey {
  bool referenced_side = false;  // this table is the one that the other refers to
  uint32_t other_table = 0;      // definition page
  uint32_t other_index = 0;      // number of the logical index there
  bool cascade_updates = false;
  bool cascade_deletes = false;
};

// An index as it is named; several may share one real index.
struct LogicalIndex {
  Text name;
  uint32_t number = 0;
  size_t real_index = 0;  // position in TableDefinition::indexes
  LogicalIndexKind kind = LogicalIndexKind::Plain;
  std::optional<ForeignKey> foreign_key;
};

struct TableDefinition {
  Text name;
  std::vector<uint32_t> pages;  // of the definition itself, in order; the first identifies it
  bool system = false;
  uint32_t row_count = 0;  // a hint: may be off in the catalog's tables
  uint32_t last_autonumber = 0;
  uint32_t autonumber_increment = 1;
  uint16_t max_columns = 0;       // columns ever created: the column count of a new row
  uint16_t variable_columns = 0;  // variable columns ever created
  RowId owned_map;
  RowId free_map;
  std::vector<Column> columns;  // live ones, by number
  std::vector<RealIndex> indexes;
  std::vector<LogicalIndex> logical_indexes;  // as stored: by name

  uint32_t Page() const { return pages.front(); }
  // Without regard to case; null when there is none.
  const Column* FindColumn(TextView column_name) const;
};

// A value for a column. It has the column's own type already, or is Null: numbers as
// ColumnType says, Boolean as bool, text and memo as Text, binary and OLE as Binary.
struct Assignment {
  size_t column = 0;  // position in TableDefinition::columns
  Value value;
};

// A table that another database has.
struct LinkedTable {
  Text name;
  Text database;  // the file that has it
  Text foreign_name;
  Text connect;         // what is needed beyond the file to reach it, as text
  bool server = false;  // in the place of a file there is a database server

  bool operator==(const LinkedTable&) const = default;
};

struct RelationshipColumn {
  Text column;             // of the referencing table
  Text referenced_column;  // of the referenced table
};

}  // namespace rdv::jet
