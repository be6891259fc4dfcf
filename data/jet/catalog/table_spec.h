// What tables and relationships are to be like that do not exist yet. Plain data.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/format/schema.h"
#include "runtime/text.h"

namespace rdv::jet {

struct ColumnSpec {
  Text name;
  ColumnType type = ColumnType::Long;
  uint16_t length = 0;  // text: characters; binary: bytes; else ignored
  bool autonumber = false;
  bool required = false;
  bool allow_zero_length = true;
  uint8_t precision = 18;  // numeric only
  uint8_t scale = 0;
};

struct IndexPartSpec {
  Text column;
  bool descending = false;
};

struct IndexSpec {
  Text name;
  std::vector<IndexPartSpec> columns;
  bool primary = false;  // and so unique and required
  bool unique = false;
  bool required = false;
  bool ignore_nulls = false;
};

struct TableSpec {
  Text name;
  std::vector<ColumnSpec> columns;
  std::vector<IndexSpec> indexes;
};

// Enforced: its columns are those of a unique index of the referenced table, in that order.
struct RelationshipSpec {
  Text name;
  Text table;  // the referencing one
  Text referenced_table;
  std::vector<RelationshipColumn> columns;
  bool cascade_updates = false;
  bool cascade_deletes = false;
};

}  // namespace rdv::jet
