#include "data/jet/table/constraints.h"

#include <algorithm>

#include "data/jet/format/errors.h"
#include "data/jet/index/index_cursor.h"

namespace rdv::jet {
namespace {

const LogicalIndex* FindLogicalIndex(const TableDefinition& table, uint32_t number) {
  const auto found = std::ranges::find(table.logical_indexes, number, &LogicalIndex::number);
  return found == table.logical_indexes.end() ? nullptr : &*found;
}

bool IsPrimary(const TableDefinition& table, const RealIndex& index) {
  return std::ranges::any_of(table.logical_indexes, [&](const LogicalIndex& logical) {
    return logical.kind == LogicalIndexKind::Primary && logical.real_index == index.position;
  });
}

}  // namespace

Relations RelationsOf(TableSource& tables, const TableDefinition& table) {
  Relations relations;
  for (const LogicalIndex& logical : table.logical_indexes) {
    if (!logical.foreign_key) continue;
    const ForeignKey& key = *logical.foreign_key;
    const TableDefinition& other = tables.TableAt(key.other_table);
    const LogicalIndex* counterpart = FindLogicalIndex(other, key.other_index);
    if (!counterpart || !counterpart->foreign_key) continue;
    if (counterpart->foreign_key->referenced_side == key.referenced_side) continue;
    const RealIndex& own_index = table.indexes[logical.real_index];
    const RealIndex& other_index = other.indexes[counterpart->real_index];
    if (own_index.columns.size() != other_index.columns.size()) continue;
    auto& list = key.referenced_side ? relations.referenced_by : relations.refers_to;
    list.push_back({&own_index, &other, &other_index, key.cascade_updates, key.cascade_deletes});
  }
  return relations;
}

void CheckField(const TableDefinition& table, const Column& column, const Value& value) {
  if (IsNull(value)) {
    if (column.required && column.type != ColumnType::Boolean)
      RaiseNullInRequiredField(table.name, column.name);
    return;
  }
  const Text* text = std::get_if<Text>(&value);
  if (!text || !column.IsText()) return;
  if (text->empty() && !column.allow_zero_length) RaiseEmptyTextNotAllowed(table.name, column.name);
  if (column.type == ColumnType::Text && text->size() * sizeof(char16_t) > column.length)
    RaiseFieldTooSmall();
}

std::optional<Key> CheckedKey(const FileReader& file, const TableDefinition& table,
                              const RealIndex& index, std::span<const Value> values) {
  if ((index.required || IsPrimary(table, index)) && AnyNull(values)) RaiseNullInPrimaryKey();
  if (!HasEntry(index, values)) return std::nullopt;
  return BuildKey(file, table, index, values);
}

std::optional<EntryPlace> CheckUnique(const FileReader& file, const TableDefinition& table,
                                      const RealIndex& index, Bytes key,
                                      std::span<const Value> values, RowId own_row) {
  if (!index.unique || AllNull(values)) return std::nullopt;
  IndexCursor cursor(file, table, index);
  cursor.Seek(key);
  const auto same = [&] { return cursor.Valid() && std::ranges::equal(cursor.Key(), key); };
  if (!same()) return cursor.Sought();
  for (; same(); cursor.Next()) {
    if (cursor.Row() != own_row) RaiseDuplicate();
  }
  return std::nullopt;
}

bool HasKey(const FileReader& file, const TableDefinition& table, const RealIndex& index,
            Bytes key) {
  IndexCursor cursor(file, table, index);
  cursor.Seek(key);
  return cursor.Valid() && std::ranges::equal(cursor.Key(), key);
}

std::vector<RowId> RowsReferringTo(const FileReader& file, const Relation& relation,
                                   std::span<const Value> values) {
  std::vector<RowId> rows;
  if (AnyNull(values)) return rows;
  const Key key = BuildKey(file, *relation.other, *relation.other_index, values);
  IndexCursor cursor(file, *relation.other, *relation.other_index);
  for (cursor.Seek(key); cursor.Valid() && std::ranges::equal(cursor.Key(), key); cursor.Next())
    rows.push_back(cursor.Row());
  return rows;
}

}  // namespace rdv::jet
