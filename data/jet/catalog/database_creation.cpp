#include <chrono>
#include <cstring>
#include <ctime>

#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/definition_writer.h"
#include "data/jet/catalog/system_tables.h"
#include "data/jet/file/draft.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/format/header.h"
#include "data/jet/format/text_units.h"
#include "data/jet/rows/data_page.h"

namespace rdv::jet {
namespace {

constexpr uint32_t kPages = 16;
constexpr uint32_t kMapPage = 6;
constexpr uint8_t kMapRows = 31;
constexpr uint32_t kObjectsRows = 14;  // data page of MSysObjects
constexpr uint32_t kAcesRows = 15;     // data page of MSysACEs

struct SystemColumn {
  TextView name;
  ColumnType type;
  bool fixed = true;
  bool sid = false;
};

struct SystemIndex {
  TextView name;
  std::vector<size_t> columns;
  uint32_t root;
  uint8_t map_row;
  bool unique = false;
  bool required = false;
  bool ignore_nulls = false;
  bool primary = false;
};

struct SystemTable {
  uint32_t page;
  uint8_t first_map_row;  // data pages; then pages with room
  uint32_t data_page;     // 0 for none
  uint32_t keys;          // distinct ones of each index when the rows are in
  std::vector<SystemColumn> columns;
  std::vector<uint8_t> long_value_map_rows;  // of the memo and OLE columns, by number
  std::vector<SystemIndex> indexes;
};

// The tables that hold the catalog; rows of page 6 are their maps.
const std::vector<SystemTable>& SystemTables() {
  using enum ColumnType;
  static const std::vector<SystemTable> tables = {
      {.page = kObjectsPage,
       .first_map_row = 0,
       .data_page = kObjectsRows,
       .keys = 8,
       .columns = {{u"Id", Long},
                   {u"ParentId", Long},
                   {u"Name", ColumnType::Text, false},
                   {u"Type", Integer},
                   {u"DateCreate", ColumnType::DateTime},
                   {u"DateUpdate", ColumnType::DateTime},
                   {u"Owner", ColumnType::Binary, false, true},
                   {u"Flags", Long},
                   {u"Database", Memo, false},
                   {u"Connect", Memo, false},
                   {u"ForeignName", ColumnType::Text, false},
                   {u"RmtInfoShort", ColumnType::Binary, false},
                   {u"RmtInfoLong", Ole, false},
                   {u"Lv", Ole, false},
                   {u"LvProp", Ole, false},
                   {u"LvModule", Ole, false},
                   {u"LvExtra", Ole, false}},
       .long_value_map_rows = {2, 4, 6, 8, 10, 12, 14},
       .indexes =
           {{.name = u"ParentIdName", .columns = {1, 2}, .root = 7, .map_row = 16, .unique = true},
            {.name = u"Id",
             .columns = {0},
             .root = 8,
             .map_row = 17,
             .unique = true,
             .primary = true}}},
      {.page = kAcesPage,
       .first_map_row = 18,
       .data_page = kAcesRows,
       .keys = 8,
       .columns = {{u"ObjectId", Long},
                   {u"SID", ColumnType::Binary, false, true},
                   {u"ACM", Long},
                   {u"FInheritable", Boolean}},
       .long_value_map_rows = {},
       .indexes =
           {{.name = u"ObjectId", .columns = {0}, .root = 9, .map_row = 20, .required = true}}},
      {.page = kQueriesPage,
       .first_map_row = 21,
       .data_page = 0,
       .keys = 0,
       .columns = {{u"ObjectId", Long},
                   {u"Attribute", Byte},
                   {u"Order", ColumnType::Binary, false},
                   {u"Name1", ColumnType::Text, false},
                   {u"Name2", ColumnType::Text, false},
                   {u"Expression", Memo, false},
                   {u"Flag", Integer},
                   {u"LvExtra", Long}},
       .long_value_map_rows = {23},
       .indexes = {{.name = u"ObjectIdAttribute",
                    .columns = {0, 1, 2},
                    .root = 10,
                    .map_row = 25,
                    .unique = true,
                    .primary = true}}},
      {.page = kRelationshipsPage,
       .first_map_row = 26,
       .data_page = 0,
       .keys = 0,
       .columns = {{u"szRelationship", ColumnType::Text, false},
                   {u"grbit", Long},
                   {u"ccolumn", Long},
                   {u"icolumn", Long},
                   {u"szObject", ColumnType::Text, false},
                   {u"szColumn", ColumnType::Text, false},
                   {u"szReferencedObject", ColumnType::Text, false},
                   {u"szReferencedColumn", ColumnType::Text, false}},
       .long_value_map_rows = {},
       .indexes =
           {{.name = u"szRelationship",
             .columns = {0},
             .root = 11,
             .map_row = 28,
             .ignore_nulls = true},
            {.name = u"szObject", .columns = {4}, .root = 12, .map_row = 29, .ignore_nulls = true},
            {.name = u"szReferencedObject",
             .columns = {6},
             .root = 13,
             .map_row = 30,
             .ignore_nulls = true}}},
  };
  return tables;
}

constexpr int32_t kRootContainer = 0x0F000000;
constexpr int32_t kDatabaseObject = 0x10000000;

struct ObjectSpec {
  int32_t id;
  int32_t parent;
  int16_t type;
  TextView name;
  Bytes owner;
};

constexpr ObjectSpec kObjects[] = {
    {kTablesContainer, kRootContainer, kObjectContainer, u"Tables", kEngineSid},
    {kDatabasesContainer, kRootContainer, kObjectContainer, u"Databases", kEngineSid},
    {kRelationshipsContainer, kRootContainer, kObjectContainer, u"Relationships", kEngineSid},
    {kDatabaseObject, kDatabasesContainer, kObjectDatabase, kDatabaseName, kAdminSid},
    {kObjectsPage, kTablesContainer, kObjectTable, kObjectsName, kEngineSid},
    {kAcesPage, kTablesContainer, kObjectTable, kAcesName, kEngineSid},
    {kQueriesPage, kTablesContainer, kObjectTable, kQueriesName, kEngineSid},
    {kRelationshipsPage, kTablesContainer, kObjectTable, kRelationshipsName, kEngineSid},
};

struct PermissionSpec {
  int32_t object;
  int32_t rights;
  Bytes sid;
  bool inheritable;
};

constexpr PermissionSpec kPermissions[] = {
    {kObjectsPage, 0x60000, kAdminSid, false},
    {kAcesPage, 0x60000, kAdminSid, false},
    {kQueriesPage, 0x60000, kAdminSid, false},
    {kRelationshipsPage, 0xE0000, kAdminSid, false},
    {kTablesContainer, 0xF00FE, kCreatorSid, true},
    {kTablesContainer, 0x60001, kAdminSid, false},
    {kRelationshipsContainer, 0xF00FE, kCreatorSid, true},
    {kRelationshipsContainer, 0x60001, kAdminSid, false},
    {kDatabasesContainer, 0x60000, kAdminSid, false},
    {kDatabaseObject, 0x6000E, kAdminSid, false},
    {kDatabaseObject, 0x0000E, kUsersSid, false},
    {kQueriesPage, 0x00014, kUsersSid, false},
    {kRelationshipsPage, 0x00014, kUsersSid, false},
    {kObjectsPage, 0x00014, kUsersSid, false},
    {kTablesContainer, 0xFFEFF, kUsersSid, true},
    {kRelationshipsContainer, 0xFFFFF, kUsersSid, true},
};

TableDefinition Definition(const SystemTable& system) {
  TableDefinition table;
  table.system = true;
  table.pages = {system.page};
  const auto map = [](uint8_t row) { return RowId{kMapPage, row}; };
  table.owned_map = map(system.first_map_row);
  table.free_map = map(static_cast<uint8_t>(system.first_map_row + 1));
  constexpr uint16_t kLongest = kMaxTextUnits * kUnitSize;
  size_t long_values = 0;
  for (const SystemColumn& spec : system.columns) {
    Column column;
    column.name = spec.name;
    column.type = spec.type;
    column.sort_order = kSortOrderGeneral;
    column.fixed = spec.fixed;
    column.sid = spec.sid;
    column.length = spec.fixed ? static_cast<uint16_t>(FixedSize(column)) : kLongest;
    if (spec.type == ColumnType::Boolean) column.length = 1;
    if (column.IsLongValue()) {
      const uint8_t row = system.long_value_map_rows[long_values++];
      column.length = 0;
      column.owned_map = map(row);
      column.free_map = map(static_cast<uint8_t>(row + 1));
    }
    AppendColumn(table, std::move(column));
  }
  for (const SystemIndex& spec : system.indexes) {
    RealIndex index;
    for (const size_t column : spec.columns) index.columns.push_back({column, false});
    index.unique = spec.unique;
    index.required = spec.required;
    index.ignore_nulls = spec.ignore_nulls;
    index.map = map(spec.map_row);
    index.root = spec.root;
    AppendIndex(table, std::move(index), spec.name, spec.primary);
  }
  return table;
}

// The file before its first rows: all pages are there, and the pager can work on them.
class Foundation {
 public:
  explicit Foundation(const CreationStamp& stamp) : bytes_(size_t{kPages} * kJet4.page_size, 0) {
    Header(stamp);
    GlobalMaps();
    Maps();
    for (const SystemTable& table : SystemTables()) Table(table);
  }

  const std::vector<uint8_t>& File() const { return bytes_; }

 private:
  std::span<uint8_t> Page(uint32_t number) {
    return std::span<uint8_t>(bytes_).subspan(size_t{number} * kJet4.page_size, kJet4.page_size);
  }

  void Header(const CreationStamp& stamp) {
    constexpr char kEngineName[] = "Standard Jet DB";
    constexpr char kEngineVersion[] = "4.0";
    constexpr uint32_t kEngineConstant = 0x654;
    const std::span<uint8_t> page = Page(0);
    std::ranges::copy(kHeaderMark, page.begin());
    std::memcpy(&page[kHeaderEngineName], kEngineName, sizeof kEngineName);
    Store32(&page[kHeaderVersion], static_cast<uint32_t>(Version::Jet4));
    StoreRowPointer(&page[kHeaderFreeMap], {kGlobalMapPage, kFreePagesRow});
    StoreRowPointer(&page[kHeaderPendingMap], {kGlobalMapPage, kPendingPagesRow});
    for (size_t i = 0; i < SystemTables().size(); ++i)
      Store32(&page[kHeaderSystemTables + 4 * i], SystemTables()[i].page);
    Store16(&page[kHeaderCodePage], kCodePageWestern);
    // No password: its place holds what a password would be covered with.
    const std::array<uint8_t, 4> date_mask = DateMask(stamp.creation_date);
    for (size_t i = 0; i < kJet4.header.password_size; ++i)
      page[kHeaderPassword + i] = date_mask[i % date_mask.size()];
    Store32(&page[kJet4.header.build], stamp.build);
    Store16(&page[kJet4.header.sort_order], kSortOrderGeneral);
    StoreDouble(&page[kJet4.header.creation_date], stamp.creation_date);
    ApplyHeaderMask(page, kJet4);
    Store32(&page[kJet4.header.engine_constant], kEngineConstant);
    std::memcpy(&page[kJet4.header.engine_constant + 4], kEngineVersion, sizeof kEngineVersion);
    for (size_t slot = 0; slot < kCommitWordCount; ++slot)
      Store16(&page[kJet4.header.commit_words + 2 * slot], kCommitIdle);
  }

  void DataPage(uint32_t number, uint32_t owner, size_t rows, size_t row_size) {
    const std::span<uint8_t> page = Page(number);
    page[0] = static_cast<uint8_t>(PageType::Data);
    page[1] = kPageMark;
    const size_t used = kJet4.data.slots + rows * (kSlotSize + row_size);
    Store16(&page[kPageFreeBytes], static_cast<uint16_t>(kJet4.page_size - used));
    Store32(&page[kPageOwner], owner);
    Store16(&page[kJet4.data.slot_count], static_cast<uint16_t>(rows));
    for (size_t row = 0; row < rows; ++row) {
      Store16(&page[kJet4.data.slots + row * kSlotSize],
              static_cast<uint16_t>(kJet4.page_size - (row + 1) * row_size));
    }
  }

  std::span<uint8_t> MapBits(uint32_t page, uint8_t row) {
    const size_t size = EmptyMap(kJet4).size();
    return Page(page).subspan(kJet4.page_size - (row + size_t{1}) * size + kMapInlineBits,
                              kJet4.initial_map_bits);
  }
  void AddToMap(uint8_t row, uint32_t page) {
    MapBits(kMapPage, row)[page / 8] |= static_cast<uint8_t>(1u << (page % 8));
  }

  void GlobalMaps() {
    DataPage(kGlobalMapPage, kOwnerGlobalMaps, 2, EmptyMap(kJet4).size());
    const std::span<uint8_t> bits = MapBits(kGlobalMapPage, kFreePagesRow);
    std::fill(bits.begin() + kPages / 8, bits.end(), uint8_t{0xFF});
  }

  void Maps() { DataPage(kMapPage, kOwnerUsageMaps, kMapRows, EmptyMap(kJet4).size()); }

  void Table(const SystemTable& system) {
    std::vector<uint8_t> definition = EncodeDefinition(Definition(system));
    for (size_t i = 0; i < system.indexes.size(); ++i) {
      Store32(&definition[kJet4.definition.statistics + i * kJet4.definition.statistics_size +
                          kJet4.definition.distinct_keys],
              system.keys);
    }
    const std::span<uint8_t> page = Page(system.page);
    std::ranges::copy(definition, page.begin());
    Store16(&page[kPageFreeBytes],
            static_cast<uint16_t>(page.size() - definition.size() - kDefinitionFreeReserve));
    if (system.data_page != 0) {
      DataPage(system.data_page, system.page, 0, 0);
      AddToMap(system.first_map_row, system.data_page);
      AddToMap(static_cast<uint8_t>(system.first_map_row + 1), system.data_page);
    }
    for (const SystemIndex& index : system.indexes) {
      const std::span<uint8_t> root = Page(index.root);
      root[0] = static_cast<uint8_t>(PageType::IndexLeaf);
      root[1] = kPageMark;
      Store16(&root[kPageFreeBytes], static_cast<uint16_t>(kJet4.page_size - kJet4.index.entries));
      Store32(&root[kPageOwner], system.page);
      AddToMap(index.map_row, index.root);
    }
  }

  std::vector<uint8_t> bytes_;
};

// Definitions as they are in the new file.
class SystemTableSource : public TableSource {
 public:
  SystemTableSource() {
    for (const SystemTable& table : SystemTables()) tables_.push_back(Definition(table));
  }
  const TableDefinition& TableAt(uint32_t page) override { return tables_.at(page - kObjectsPage); }

 private:
  std::vector<TableDefinition> tables_;
};

void InsertRows(Pager& pager, double row_date) {
  constexpr auto kSystemObject = static_cast<int32_t>(0x80000000);
  const FileReader file(pager, pager.FileHeader());
  const WriteContext context{pager, file};
  PageAllocator allocator(context);
  SystemTableSource tables;
  TableWriter rows(context, allocator, tables);
  const uint32_t key = pager.FileHeader().sid_key;
  for (const ObjectSpec& object : kObjects) {
    rows.Insert(tables.TableAt(kObjectsPage), ObjectRow({.id = object.id,
                                                         .parent = object.parent,
                                                         .type = object.type,
                                                         .name = rdv::Text(object.name),
                                                         .date = row_date,
                                                         .owner = EncryptedSid(key, object.owner),
                                                         .flags = kSystemObject}));
  }
  for (const PermissionSpec& permission : kPermissions) {
    rows.Insert(tables.TableAt(kAcesPage),
                PermissionRow(permission.object, EncryptedSid(key, permission.sid),
                              permission.rights, permission.inheritable));
  }
}

void WriteRows(FileSystem& files, const rdv::Text& path, const CreationStamp& stamp) {
  constexpr std::chrono::milliseconds kNoWait{0};
  Pager pager(files, path, kNoWait, kPages);
  pager.BeginWrite();
  try {
    InsertRows(pager, stamp.row_date);
  } catch (...) {
    pager.Rollback();
    throw;
  }
  pager.Commit();
  pager.Close();
}

}  // namespace

CreationStamp StampOfNow() {
  using std::chrono::system_clock;
  constexpr double kSecondsPerDay = 86400;
  constexpr double kFirstOfJanuary1970 = 25569;
  const std::time_t now = system_clock::to_time_t(system_clock::now());
  std::tm local{};
#ifdef _WIN32
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  const std::chrono::sys_days day = std::chrono::year(local.tm_year + 1900) /
                                    std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)) /
                                    std::chrono::day(static_cast<unsigned>(local.tm_mday));
  const double seconds = local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec;
  const double date = kFirstOfJanuary1970 + static_cast<double>(day.time_since_epoch().count()) +
                      seconds / kSecondsPerDay;
  return {.creation_date = date, .row_date = date};
}

void CreateDatabase(FileSystem& files, const rdv::Text& path, const CreationStamp& stamp,
                    const std::function<void(const rdv::Text& draft)>& fill) {
  if (files.Exists(path)) RaiseFileExists(path);
  try {
    Draft draft(files, path);
    draft.Content().WriteAt(0, Foundation(stamp).File());
    WriteRows(files, draft.Path(), stamp);
    if (fill) fill(draft.Path());
    draft.Publish();
  } catch (const FileError& error) {
    RaiseFileError(error, path);
  }
}

}  // namespace rdv::jet
