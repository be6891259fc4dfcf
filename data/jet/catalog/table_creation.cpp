#include <algorithm>
#include <cstring>

#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/definition_writer.h"
#include "data/jet/catalog/properties.h"
#include "data/jet/catalog/system_tables.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/index/index_writer.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/table_scan.h"

namespace rdv::jet {
namespace {

bool IsFixed(ColumnType type) {
  switch (type) {
    case ColumnType::Text:
    case ColumnType::Memo:
    case ColumnType::Binary:
    case ColumnType::Ole:
      return false;
    default:
      return true;
  }
}

uint16_t LengthInBytes(const ColumnSpec& spec, const Column& column) {
  switch (spec.type) {
    case ColumnType::Text:
      return static_cast<uint16_t>(spec.length * sizeof(char16_t));
    case ColumnType::Binary:
      return spec.length;
    case ColumnType::Memo:
    case ColumnType::Ole:
      return 0;
    case ColumnType::Boolean:
      return 1;
    default:
      return static_cast<uint16_t>(FixedSize(column));
  }
}

[[noreturn]] void RaiseInvalidDefinition(TextView what) {
  RaiseEngineError(ErrorNumber::Syntax, u"Syntax error in CREATE TABLE statement: " + Text(what));
}

void RequireName(TextView name) {
  if (name.empty() || name.size() > kMaxNameUnits)
    RaiseInvalidDefinition(u"the name '" + Text(name) + u"' is empty or too long");
}

// Only what differs from the default is stored.
std::vector<uint8_t> PropertiesOf(const TableSpec& spec) {
  std::vector<Property> properties;
  for (const ColumnSpec& column : spec.columns) {
    if (column.required) properties.push_back(YesOrNo(column.name, kPropertyRequired, true));
    if (!column.allow_zero_length)
      properties.push_back(YesOrNo(column.name, kPropertyAllowZeroLength, false));
  }
  return EncodeProperties(properties);
}

}  // namespace

SchemaWriter::SchemaWriter(const WriteContext& context, PageAllocator& allocator,
                           TableSource& tables, TableWriter& rows)
    : context_(context), allocator_(allocator), tables_(tables), rows_(rows) {}

void SchemaWriter::CreateTable(const TableSpec& spec) {
  RequireName(spec.name);
  const Catalog catalog(context_.file);
  if (catalog.Find(kTablesContainer, spec.name))
    RaiseEngineError(ErrorNumber::Syntax, u"Table '" + spec.name + u"' already exists.");
  TableDefinition table = DefineTable(spec);
  // Of a definition that goes on to other pages this one is the first.
  table.pages = {allocator_.Allocate()};
  AllocateMaps(table);
  StoreDefinition(context_, allocator_, EncodeDefinition(table), table.pages);
  const auto id = static_cast<int32_t>(table.Page());
  AddObject(id, kTablesContainer, kObjectTable, spec.name, PropertiesOf(spec));
  InheritPermissions(id, kTablesContainer);
}

TableDefinition SchemaWriter::DefineTable(const TableSpec& spec) {
  if (spec.columns.empty() || spec.columns.size() > kMaxColumns)
    RaiseInvalidDefinition(u"a table has 1 to 255 fields");
  TableDefinition table;
  table.name = spec.name;
  for (const ColumnSpec& column_spec : spec.columns) {
    RequireName(column_spec.name);
    if (table.FindColumn(column_spec.name))
      RaiseInvalidDefinition(u"the field '" + column_spec.name + u"' is there twice");
    Column column;
    column.name = column_spec.name;
    column.type = column_spec.type;
    column.sort_order = kSortOrderGeneral;
    column.ordinal = table.max_columns;
    column.autonumber = column_spec.autonumber;
    column.compressible = column.IsText();
    column.precision = column_spec.precision;
    column.scale = column_spec.scale;
    column.fixed = IsFixed(column.type);
    column.length = LengthInBytes(column_spec, column);
    AppendColumn(table, std::move(column));
  }
  DefineIndexes(spec, table);
  return table;
}

void SchemaWriter::DefineIndexes(const TableSpec& spec, TableDefinition& table) {
  if (spec.indexes.size() > kMaxIndexes) RaiseInvalidDefinition(u"a table has up to 32 indexes");
  for (const IndexSpec& index_spec : spec.indexes) {
    RequireName(index_spec.name);
    if (index_spec.columns.empty() || index_spec.columns.size() > kIndexMaxColumns)
      RaiseInvalidDefinition(u"an index has 1 to 10 fields");
    RealIndex index;
    index.unique = index_spec.unique || index_spec.primary;
    index.required = index_spec.required || index_spec.primary;
    index.ignore_nulls = index_spec.ignore_nulls;
    for (const IndexPartSpec& part : index_spec.columns) {
      const Column* column = table.FindColumn(part.column);
      if (!column) RaiseInvalidDefinition(u"there is no field '" + part.column + u"'");
      const auto position = static_cast<size_t>(column - table.columns.data());
      index.columns.push_back({position, part.descending});
    }
    AppendIndex(table, std::move(index), index_spec.name, index_spec.primary);
  }
}

// The maps of a table lie on a page of its own: of its rows first, then of its long values, then of
// its indexes.
void SchemaWriter::AllocateMaps(TableDefinition& table) {
  uint32_t page = 0;
  table.owned_map = NewMap(page);
  table.free_map = NewMap(page);
  for (Column& column : table.columns) {
    if (!column.IsLongValue()) continue;
    column.owned_map = NewMap(page);
    column.free_map = NewMap(page);
  }
  for (RealIndex& index : table.indexes) AllocateRoot(index, table.Page(), page);
}

RowId SchemaWriter::NewMap(uint32_t& page) {
  const std::vector<uint8_t> map = EmptyMap(kJet4);
  const bool has_room =
      page != 0 && DataPageWriter(context_, page, kOwnerUsageMaps).HasRoomFor(map.size());
  if (!has_room) {
    page = allocator_.Allocate();
    DataPageWriter::Initialize(context_, page, kOwnerUsageMaps);
  }
  return {page, DataPageWriter(context_, page, kOwnerUsageMaps).Insert(map)};
}

void SchemaWriter::AllocateRoot(RealIndex& index, uint32_t table_page, uint32_t& map_page) {
  index.map = NewMap(map_page);
  index.root = allocator_.Allocate();
  StoreIndexPage(context_, table_page, index.root, IndexPageImage{});
  PageSetWriter(context_, allocator_, index.map).Add(index.root);
}

// --- The catalog ---

// Of objects that are no tables: counted up from a first one.
int32_t SchemaWriter::NextObjectId() {
  uint32_t last = 0x7FFFFFFF;
  for (const CatalogObject& object : Catalog(context_.file).All())
    last = std::max(last, static_cast<uint32_t>(object.id));
  return static_cast<int32_t>(last + 1);
}

void SchemaWriter::AddObject(int32_t id, int32_t parent, int16_t type, TextView name,
                             Bytes properties) {
  std::vector<Assignment> values = ObjectRow({.id = id,
                                              .parent = parent,
                                              .type = type,
                                              .name = Text(name),
                                              .date = StampOfNow().row_date,
                                              .owner = EncryptedSid(SidKey(), kAdminSid),
                                              .flags = 0});
  if (!properties.empty())
    values.push_back({kObjectProperties, Binary(properties.begin(), properties.end())});
  rows_.Insert(tables_.TableAt(kObjectsPage), values);
}

uint32_t SchemaWriter::SidKey() const {
  return context_.file.FileHeader().sid_key;
}

// What the container lets its objects inherit; what it lets their creator have goes to the one
// user that there is.
void SchemaWriter::InheritPermissions(int32_t id, int32_t container) {
  const TableDefinition& aces = tables_.TableAt(kAcesPage);
  std::vector<std::pair<Binary, int32_t>> inherited;
  const auto grant = [&](const Binary& sid, int32_t rights) {
    const auto same = [&](const auto& entry) { return entry.first == sid; };
    const auto known = std::ranges::find_if(inherited, same);
    if (known == inherited.end()) {
      inherited.emplace_back(sid, rights);
    } else {
      known->second |= rights;
    }
  };
  for (TableScan scan(context_.file, aces); scan.Next();) {
    const RowView& row = scan.Row();
    const Value object = row.Get(aces.columns[kPermissionObject]);
    const Value sid = row.Get(aces.columns[kPermissionSid]);
    const Value rights = row.Get(aces.columns[kPermissionRights]);
    const bool inheritable = row.Get(aces.columns[kPermissionInheritable]) == Value(true);
    if (object != Value(container) || !inheritable || !std::holds_alternative<Binary>(sid))
      continue;
    const Binary plain = DecryptedSid(SidKey(), std::get<Binary>(sid));
    const bool creator = std::ranges::equal(plain, kCreatorSid);
    const Binary holder = creator ? Binary(std::begin(kAdminSid), std::end(kAdminSid)) : plain;
    grant(holder, ToLong(rights));
  }
  for (const auto& [sid, rights] : inherited)
    rows_.Insert(aces, PermissionRow(id, EncryptedSid(SidKey(), sid), rights, false));
}

}  // namespace rdv::jet
