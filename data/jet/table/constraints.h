// What a table's definition demands of its rows: judged before anything is changed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/index_page.h"
#include "runtime/value.h"

namespace rdv::jet {

// Where definitions of tables come from. References live as long as the statement.
class TableSource {
 public:
  TableSource() = default;
  TableSource(const TableSource&) = delete;
  TableSource& operator=(const TableSource&) = delete;
  virtual ~TableSource() = default;

  // Raises the damaged file's error where there is none.
  virtual const TableDefinition& TableAt(uint32_t page) = 0;
};

// One enforced relationship, seen from one of its tables.
struct Relation {
  const RealIndex* own_index = nullptr;
  const TableDefinition* other = nullptr;
  const RealIndex* other_index = nullptr;
  bool cascade_updates = false;
  bool cascade_deletes = false;
};

struct Relations {
  std::vector<Relation> refers_to;      // its values have to be there in the other table
  std::vector<Relation> referenced_by;  // the other table's rows depend on this one's
};

// A relationship that only one of the two tables tells of is none.
Relations RelationsOf(TableSource& tables, const TableDefinition& table);

// Raises for Null in a required field, for an empty text where none is allowed, and for what is
// longer than the field.
void CheckField(const TableDefinition& table, const Column& column, const Value& value);

// The key of a row with these values in the index's columns; nothing where the row has no entry.
// Raises for Null in an index that allows none and for what no key can be made of.
std::optional<Key> CheckedKey(const FileReader& file, const TableDefinition& table,
                              const RealIndex& index, std::span<const Value> values);

// Raises when a unique index has the key for another row already. Keys of Nulls alone do not count.
// Answers where the key belongs if that became known; good until the index changes.
std::optional<EntryPlace> CheckUnique(const FileReader& file, const TableDefinition& table,
                                      const RealIndex& index, Bytes key,
                                      std::span<const Value> values, RowId own_row);

// Whether the index has any entry with the key.
bool HasKey(const FileReader& file, const TableDefinition& table, const RealIndex& index,
            Bytes key);

// The rows of the other table that refer to the given values; none where one of them is Null.
std::vector<RowId> RowsReferringTo(const FileReader& file, const Relation& relation,
                                   std::span<const Value> values);

}  // namespace rdv::jet
