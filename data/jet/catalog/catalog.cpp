#include "data/jet/catalog/catalog.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "data/jet/catalog/system_tables.h"
#include "data/jet/format/errors.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/long_value.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/value.h"

namespace rdv::jet {
namespace {

const Column& RequireColumn(const FileReader& file, const TableDefinition& table, TextView name) {
  const Column* column = table.FindColumn(name);
  if (column == nullptr) {
    file.DamagedPage(table.Page(), u"defines " + table.name + u" without a column " + Text(name));
  }
  return *column;
}

// A system table's field of a known type; Null and a field of another type read as zero or "".
int32_t LongField(const FileReader& file, const TableDefinition& table, const RowView& row,
                  TextView name) {
  const Value value = row.Get(RequireColumn(file, table, name));
  if (const int32_t* number = std::get_if<int32_t>(&value)) return *number;
  if (const int16_t* number = std::get_if<int16_t>(&value)) return *number;
  return 0;
}

Text TextField(const FileReader& file, const TableDefinition& table, const RowView& row,
               TextView name) {
  Value value = row.Get(RequireColumn(file, table, name));
  Text* text = std::get_if<Text>(&value);
  return text == nullptr ? Text() : std::move(*text);
}

const RealIndex* FindIndex(const TableDefinition& table, std::initializer_list<TextView> columns) {
  const auto matches = [&](const RealIndex& index) {
    return std::equal(index.columns.begin(), index.columns.end(), columns.begin(), columns.end(),
                      [&](const IndexColumn& part, TextView name) {
                        return EqualsIgnoringCase(table.columns[part.column].name, name);
                      });
  };
  const auto index = std::find_if(table.indexes.begin(), table.indexes.end(), matches);
  return index == table.indexes.end() ? nullptr : &*index;
}

bool ByCodePoint(TextView left, TextView right) {
  return ToUtf8(left) < ToUtf8(right);
}

}  // namespace

Catalog::Catalog(const FileReader& file)
    : file_(&file), objects_(ReadTableDefinition(file, kObjectsPage, kObjectsName)) {}

CatalogObject Catalog::ReadObject(const RowView& row) const {
  CatalogObject object;
  object.row = row.Id();
  object.id = LongField(*file_, objects_, row, u"Id");
  object.parent = LongField(*file_, objects_, row, u"ParentId");
  object.name = TextField(*file_, objects_, row, u"Name");
  object.type = static_cast<int16_t>(LongField(*file_, objects_, row, u"Type"));
  object.flags = static_cast<uint32_t>(LongField(*file_, objects_, row, u"Flags"));
  return object;
}

std::optional<CatalogObject> Catalog::Find(int32_t parent, TextView name) const {
  const RealIndex* index = FindIndex(objects_, {u"ParentId", u"Name"});
  if (index == nullptr) file_->DamagedPage(kObjectsPage, u"defines a catalog without its index");
  const std::array<Value, 2> values = {parent, Text(name)};
  const std::optional<Key> key = TryBuildKey(*file_, objects_, *index, values);
  if (!key) return FindByScan(parent, name);
  IndexSeek seek(*file_, objects_, *index, *key);
  if (!seek.Next()) return std::nullopt;
  CatalogObject object = ReadObject(seek.Row());
  if (object.parent != parent || CompareTexts(object.name, name) != 0)
    file_->DamagedPage(seek.Row().Id().page, u"holds another object than the catalog's index says");
  return object;
}

// For names that have no key, as in files of another sort order.
std::optional<CatalogObject> Catalog::FindByScan(int32_t parent, TextView name) const {
  for (CatalogObject& object : All()) {
    if (object.parent == parent && EqualsIgnoringCase(object.name, name)) return std::move(object);
  }
  return std::nullopt;
}

TableDefinition Catalog::Table(TextView name) const {
  const std::optional<CatalogObject> object = Find(kTablesContainer, name);
  if (!object || !object->IsLocalTable()) RaiseCannotFindTable(name);
  return Table(*object);
}

TableDefinition Catalog::Table(const CatalogObject& object) const {
  TableDefinition table =
      ReadTableDefinition(*file_, static_cast<uint32_t>(object.id), object.name);
  const std::vector<uint8_t> properties = Properties(object);
  if (!properties.empty()) ApplyProperties(*file_, properties, table);
  return table;
}

std::vector<uint8_t> Catalog::Properties(const CatalogObject& object) const {
  RowView row(*file_, objects_);
  if (!FetchRow(*file_, objects_, object.row, row)) return {};
  const auto field = row.Field(RequireColumn(*file_, objects_, u"LvProp"));
  return field ? ReadLongValue(*file_, *field) : std::vector<uint8_t>();
}

std::vector<CatalogObject> Catalog::All() const {
  std::vector<CatalogObject> all;
  for (TableScan scan(*file_, objects_); scan.Next();) all.push_back(ReadObject(scan.Row()));
  return all;
}

std::vector<CatalogObject> Catalog::UserTables() const {
  std::vector<CatalogObject> tables = All();
  std::erase_if(tables, [](const CatalogObject& object) {
    return !object.IsLocalTable() || !object.IsUserObject();
  });
  std::sort(tables.begin(), tables.end(),
            [](const CatalogObject& left, const CatalogObject& right) {
              return ByCodePoint(left.name, right.name);
            });
  return tables;
}

LinkedTable Catalog::ReadLink(const RowView& row) const {
  return {.name = TextField(*file_, objects_, row, u"Name"),
          .database = TextField(*file_, objects_, row, u"Database"),
          .foreign_name = TextField(*file_, objects_, row, u"ForeignName"),
          .connect = TextField(*file_, objects_, row, u"Connect"),
          .server = LongField(*file_, objects_, row, u"Type") == kObjectLinkedOdbcTable};
}

LinkedTable Catalog::Link(const CatalogObject& object) const {
  RowView row(*file_, objects_);
  if (!FetchRow(*file_, objects_, object.row, row)) RaiseCannotFindTable(object.name);
  return ReadLink(row);
}

std::vector<LinkedTable> Catalog::LinkedTables() const {
  std::vector<LinkedTable> tables;
  for (TableScan scan(*file_, objects_); scan.Next();) {
    if (ReadObject(scan.Row()).IsLink()) tables.push_back(ReadLink(scan.Row()));
  }
  std::sort(tables.begin(), tables.end(), [](const LinkedTable& left, const LinkedTable& right) {
    return ByCodePoint(left.name, right.name);
  });
  return tables;
}

std::vector<Relationship> Catalog::Relationships() const {
  const TableDefinition table = ReadTableDefinition(*file_, kRelationshipsPage, kRelationshipsName);
  const auto less = [](const Text& left, const Text& right) { return ByCodePoint(left, right); };
  std::map<Text, Relationship, decltype(less)> by_name(less);
  std::map<Text, std::map<int32_t, RelationshipColumn>> columns;  // in their order
  for (TableScan scan(*file_, table); scan.Next();) {
    const RowView& row = scan.Row();
    const Text name = TextField(*file_, table, row, u"szRelationship");
    const auto bits = static_cast<uint32_t>(LongField(*file_, table, row, u"grbit"));
    Relationship& relationship = by_name[name];
    relationship.name = name;
    relationship.table = TextField(*file_, table, row, u"szObject");
    relationship.referenced_table = TextField(*file_, table, row, u"szReferencedObject");
    relationship.one_to_one = (bits & kRelationOneToOne) != 0;
    relationship.enforced = (bits & kRelationNotEnforced) == 0;
    relationship.cascade_updates = (bits & kRelationCascadeUpdates) != 0;
    relationship.cascade_deletes = (bits & kRelationCascadeDeletes) != 0;
    relationship.left_join = (bits & kRelationLeftJoin) != 0;
    relationship.right_join = (bits & kRelationRightJoin) != 0;
    columns[name][LongField(*file_, table, row, u"icolumn")] = {
        TextField(*file_, table, row, u"szColumn"),
        TextField(*file_, table, row, u"szReferencedColumn")};
  }
  std::vector<Relationship> relationships;
  for (auto& [name, relationship] : by_name) {
    for (auto& [position, column] : columns[name]) relationship.columns.push_back(column);
    relationships.push_back(std::move(relationship));
  }
  return relationships;
}

}  // namespace rdv::jet
