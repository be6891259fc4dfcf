#include <algorithm>

#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/definition_writer.h"
#include "data/jet/catalog/system_tables.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/format/errors.h"
#include "data/jet/index/index_writer.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/table/constraints.h"

namespace rdv::jet {
namespace {

std::vector<size_t> Positions(const TableDefinition& table, const RelationshipSpec& spec,
                              Text RelationshipColumn::*name) {
  std::vector<size_t> positions;
  for (const RelationshipColumn& pair : spec.columns) {
    const Column* column = table.FindColumn(pair.*name);
    if (!column) RaiseUnknownInsertField(pair.*name);
    positions.push_back(static_cast<size_t>(column - table.columns.data()));
  }
  return positions;
}

// The first of these columns, in this order; where `unique` is asked for, the first that is.
const RealIndex* FindIndex(const TableDefinition& table, const std::vector<size_t>& columns,
                           bool unique = false) {
  const auto found = std::ranges::find_if(table.indexes, [&](const RealIndex& index) {
    return (index.unique || !unique) &&
           std::ranges::equal(index.columns, columns, {}, &IndexColumn::column);
  });
  return found == table.indexes.end() ? nullptr : &*found;
}

uint32_t NextLogicalNumber(const TableDefinition& table) {
  uint32_t next = 0;
  for (const LogicalIndex& index : table.logical_indexes) next = std::max(next, index.number + 1);
  return next;
}

// The name of the referenced side's logical index says no more than its number.
Text ReferencedName(uint32_t number) {
  constexpr TextView kStart = u".r";
  return Text(kStart) + static_cast<char16_t>(u'A' + number);
}

}  // namespace

void SchemaWriter::CreateRelationship(const RelationshipSpec& spec) {
  const Catalog catalog(context_.file);
  const TableDefinition table = catalog.Table(spec.table);
  const TableDefinition referenced = catalog.Table(spec.referenced_table);
  if (table.Page() == referenced.Page() || catalog.Find(kRelationshipsContainer, spec.name))
    RaiseEngineError(ErrorNumber::Syntax, u"Relationship '" + spec.name + u"' cannot be made.");
  const std::vector<size_t> columns = Positions(table, spec, &RelationshipColumn::column);
  const RealIndex* referenced_index = FindIndex(
      referenced, Positions(referenced, spec, &RelationshipColumn::referenced_column), true);
  if (!referenced_index) {
    RaiseEngineError(ErrorNumber::Syntax,
                     u"No unique index found for the referenced field of the primary table.");
  }

  RealIndex own_index;
  const RealIndex* shared = FindIndex(table, columns);
  if (shared) {
    own_index = *shared;
  } else {
    own_index.position = table.indexes.size();
    for (size_t i = 0; i < columns.size(); ++i)
      own_index.columns.push_back({columns[i], referenced_index->columns[i].descending});
    uint32_t map_page = table.owned_map.page;
    AllocateRoot(own_index, table.Page(), map_page);
  }
  FillIndex(table, own_index, referenced, *referenced_index);

  LogicalIndex own{.name = spec.name,
                   .number = NextLogicalNumber(table),
                   .real_index = own_index.position,
                   .kind = LogicalIndexKind::ForeignKey,
                   .foreign_key = ForeignKey{.referenced_side = false,
                                             .other_table = referenced.Page(),
                                             .other_index = NextLogicalNumber(referenced),
                                             .cascade_updates = spec.cascade_updates,
                                             .cascade_deletes = spec.cascade_deletes}};
  LogicalIndex other = own;
  other.number = own.foreign_key->other_index;
  other.name = ReferencedName(other.number);
  other.real_index = referenced_index->position;
  other.foreign_key->referenced_side = true;
  other.foreign_key->other_table = table.Page();
  other.foreign_key->other_index = own.number;
  AddIndex(table, own, shared ? nullptr : &own_index);
  AddIndex(referenced, other, nullptr);
  AddRelationshipRows(spec);
}

// Enters the rows that are there already, each of which has to have its counterpart.
void SchemaWriter::FillIndex(const TableDefinition& table, const RealIndex& index,
                             const TableDefinition& referenced, const RealIndex& referenced_index) {
  std::vector<EntryBytes> entries;
  for (TableScan scan(context_.file, table); scan.Next();) {
    const std::vector<Value> values = IndexValuesOfRow(table, index, scan.Row());
    const Key key = BuildKey(context_.file, table, index, values);
    entries.push_back(MakeEntry(key, scan.Row().Id()));
    if (AnyNull(values)) continue;
    const Key wanted = BuildKey(context_.file, referenced, referenced_index, values);
    if (!HasKey(context_.file, referenced, referenced_index, wanted))
      RaiseRelatedRecordRequired(referenced.name);
  }
  if (index.position < table.indexes.size()) return;
  std::sort(entries.begin(), entries.end(), EntryLess());
  IndexWriter(context_, allocator_, table.Page(), index).Rebuild(entries);
}

void SchemaWriter::AddIndex(const TableDefinition& table, const LogicalIndex& logical,
                            const RealIndex* real) {
  std::vector<uint32_t> pages;
  const std::vector<uint8_t> bytes = ReadDefinitionBytes(context_.file, table.Page(), pages);
  StoreDefinition(context_, allocator_, AddIndexToDefinition(bytes, table, logical, real), pages);
}

void SchemaWriter::AddRelationshipRows(const RelationshipSpec& spec) {
  uint32_t rules = 0;
  if (spec.cascade_updates) rules |= kRelationCascadeUpdates;
  if (spec.cascade_deletes) rules |= kRelationCascadeDeletes;
  const auto count = static_cast<int32_t>(spec.columns.size());
  for (int32_t i = 0; i < count; ++i) {
    const RelationshipColumn& pair = spec.columns[static_cast<size_t>(i)];
    const std::vector<Assignment> values = {{kRelationName, spec.name},
                                            {kRelationRules, static_cast<int32_t>(rules)},
                                            {kRelationPairs, count},
                                            {kRelationPair, i},
                                            {kRelationTable, spec.table},
                                            {kRelationColumn, pair.column},
                                            {kRelationReferencedTable, spec.referenced_table},
                                            {kRelationReferencedColumn, pair.referenced_column}};
    rows_.Insert(tables_.TableAt(kRelationshipsPage), values);
  }
  const int32_t id = NextObjectId();
  AddObject(id, kRelationshipsContainer, kObjectRelationship, spec.name, {});
  InheritPermissions(id, kRelationshipsContainer);
}

}  // namespace rdv::jet
