#include <algorithm>
#include <cstring>

#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/definition_writer.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/format/header.h"
#include "data/jet/index/index_writer.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/table_scan.h"

namespace rdv::jet {
namespace {

constexpr const Format& kFormat = kJet4;

// Columns of MSysObjects and MSysACEs, by number.
constexpr size_t kObjectProperties = 14;
constexpr uint8_t kAdminSid[] = {0x03, 0x01};
constexpr uint8_t kCreatorSid[] = {0x02, 0x04};

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

// --- Properties of columns: only what differs from the default is stored ---

class PropertyBlock {
 public:
  std::vector<uint8_t> Encode(const TableSpec& spec) {
    for (const ColumnSpec& column : spec.columns) {
      std::vector<uint8_t> values;
      if (column.required) AddTrue(values, u"Required", true);
      if (!column.allow_zero_length) AddTrue(values, u"AllowZeroLength", false);
      if (!values.empty()) AddColumn(column.name, values);
    }
    if (columns_.empty()) return {};
    std::vector<uint8_t> names;
    for (const TextView name : names_) AppendName(names, name);
    std::vector<uint8_t> block = {'M', 'R', '2', 0};
    AppendPart(block, kNamesPart, names);
    block.insert(block.end(), columns_.begin(), columns_.end());
    return block;
  }

 private:
  static constexpr uint16_t kNamesPart = 0x80;
  static constexpr uint16_t kColumnPart = 0x01;
  static constexpr uint8_t kPartOfSchema = 1;

  static void Append16(std::vector<uint8_t>& to, size_t value) {
    to.resize(to.size() + 2);
    Store16(&to[to.size() - 2], static_cast<uint16_t>(value));
  }
  static void Append32(std::vector<uint8_t>& to, size_t value) {
    to.resize(to.size() + 4);
    Store32(&to[to.size() - 4], static_cast<uint32_t>(value));
  }
  static void AppendName(std::vector<uint8_t>& to, TextView name) {
    Append16(to, name.size() * sizeof(char16_t));
    for (const char16_t unit : name) Append16(to, unit);
  }
  static void AppendPart(std::vector<uint8_t>& to, uint16_t kind, Bytes body) {
    Append32(to, body.size() + 6);
    Append16(to, kind);
    to.insert(to.end(), body.begin(), body.end());
  }

  void AddTrue(std::vector<uint8_t>& values, TextView name, bool value) {
    auto place = std::ranges::find(names_, name);
    if (place == names_.end()) place = names_.insert(place, name);
    Append16(values, 9);
    values.push_back(kPartOfSchema);
    values.push_back(static_cast<uint8_t>(ColumnType::Boolean));
    Append16(values, static_cast<size_t>(place - names_.begin()));
    Append16(values, 1);
    values.push_back(value ? 0xFF : 0x00);
  }

  void AddColumn(TextView name, Bytes values) {
    std::vector<uint8_t> body;
    Append32(body, 6 + name.size() * sizeof(char16_t));
    AppendName(body, name);
    body.insert(body.end(), values.begin(), values.end());
    AppendPart(columns_, kColumnPart, body);
  }

  std::vector<TextView> names_;
  std::vector<uint8_t> columns_;
};

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
  const int32_t id = static_cast<int32_t>(table.Page());
  AddObject(id, kTablesContainer, kObjectTable, spec.name, PropertyBlock().Encode(spec));
  InheritPermissions(id, kTablesContainer);
}

TableDefinition SchemaWriter::DefineTable(const TableSpec& spec) const {
  if (spec.columns.empty() || spec.columns.size() > kMaxColumns)
    RaiseInvalidDefinition(u"a table has 1 to 255 fields");
  TableDefinition table;
  table.name = spec.name;
  uint16_t offset = 0;
  for (const ColumnSpec& column_spec : spec.columns) {
    RequireName(column_spec.name);
    if (table.FindColumn(column_spec.name))
      RaiseInvalidDefinition(u"the field '" + column_spec.name + u"' is there twice");
    Column column;
    column.name = column_spec.name;
    column.type = column_spec.type;
    column.number = static_cast<uint16_t>(table.columns.size());
    column.sort_order = kSortOrderGeneral;
    column.ordinal = column.number;
    column.autonumber = column_spec.autonumber;
    column.compressible = column.IsText();
    column.precision = column_spec.precision;
    column.scale = column_spec.scale;
    column.fixed = IsFixed(column.type);
    column.length = LengthInBytes(column_spec, column);
    if (!column.fixed) {
      column.variable_index = table.variable_columns++;
    } else if (column.type != ColumnType::Boolean) {
      column.fixed_offset = offset;
      offset = static_cast<uint16_t>(offset + FixedSize(column));
    }
    table.columns.push_back(std::move(column));
  }
  table.max_columns = static_cast<uint16_t>(table.columns.size());
  DefineIndexes(spec, table);
  return table;
}

void SchemaWriter::DefineIndexes(const TableSpec& spec, TableDefinition& table) const {
  if (spec.indexes.size() > kMaxIndexes) RaiseInvalidDefinition(u"a table has up to 32 indexes");
  for (const IndexSpec& index_spec : spec.indexes) {
    RequireName(index_spec.name);
    if (index_spec.columns.empty() || index_spec.columns.size() > kIndexMaxColumns)
      RaiseInvalidDefinition(u"an index has 1 to 10 fields");
    RealIndex index;
    index.position = table.indexes.size();
    index.unique = index_spec.unique || index_spec.primary;
    index.required = index_spec.required || index_spec.primary;
    index.ignore_nulls = index_spec.ignore_nulls;
    for (const IndexPartSpec& part : index_spec.columns) {
      const Column* column = table.FindColumn(part.column);
      if (!column) RaiseInvalidDefinition(u"there is no field '" + part.column + u"'");
      const size_t position = static_cast<size_t>(column - table.columns.data());
      index.columns.push_back({position, part.descending});
    }
    LogicalIndex logical;
    logical.name = index_spec.name;
    logical.number = static_cast<uint32_t>(index.position);
    logical.real_index = index.position;
    logical.kind = index_spec.primary ? LogicalIndexKind::Primary : LogicalIndexKind::Plain;
    table.indexes.push_back(std::move(index));
    table.logical_indexes.push_back(std::move(logical));
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
  const std::vector<uint8_t> map = EmptyMap(kFormat);
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
  const DateTime now{StampOfNow().row_date};
  std::vector<Assignment> values = {
      {0, id},  {1, parent}, {2, Text(name)},           {3, type},
      {4, now}, {5, now},    {6, Encrypted(kAdminSid)}, {7, int32_t{0}}};
  if (!properties.empty())
    values.push_back({kObjectProperties, Binary(properties.begin(), properties.end())});
  rows_.Insert(tables_.TableAt(kObjectsPage), values);
}

Binary SchemaWriter::Encrypted(Bytes sid) const {
  Binary bytes(sid.begin(), sid.end());
  ApplySidKey(context_.file.FileHeader().sid_key, bytes);
  return bytes;
}

Binary SchemaWriter::Decrypted(const Binary& sid) const {
  return Encrypted(sid);
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
      inherited.push_back({sid, rights});
    } else {
      known->second |= rights;
    }
  };
  for (TableScan scan(context_.file, aces); scan.Next();) {
    const RowView& row = scan.Row();
    const Value object = row.Get(aces.columns[0]);
    const Value sid = row.Get(aces.columns[1]);
    const Value rights = row.Get(aces.columns[2]);
    const bool inheritable = row.Get(aces.columns[3]) == Value(true);
    if (object != Value(container) || !inheritable || !std::holds_alternative<Binary>(sid))
      continue;
    const Binary plain = Decrypted(std::get<Binary>(sid));
    const bool creator = std::ranges::equal(plain, kCreatorSid);
    const Binary holder = creator ? Binary(std::begin(kAdminSid), std::end(kAdminSid)) : plain;
    grant(holder, ToLong(rights));
  }
  for (const auto& [sid, rights] : inherited) {
    const std::vector<Assignment> values = {{0, id}, {1, Encrypted(sid)}, {2, rights}, {3, false}};
    rows_.Insert(aces, values);
  }
}

}  // namespace rdv::jet
