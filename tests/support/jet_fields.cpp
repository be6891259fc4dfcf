#include "tests/support/jet_fields.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "data/jet/catalog/catalog.h"
#include "data/jet/file/page_source.h"
#include "data/jet/index/index_page.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/usage_map.h"

namespace rdv::jet {
namespace {

constexpr size_t kMostReferences = 3;  // of a map, that are worth a name
constexpr size_t kNames = 2;           // bytes before a name that tell its length

class Finder {
 public:
  explicit Finder(Bytes bytes)
      : pages_({bytes.begin(), bytes.end()}, kJet4.page_size, u"fields.mdb"), file_(pages_) {}

  std::vector<FileField> Run() {
    Map("free pages", {kGlobalMapPage, kFreePagesRow}, kOwnerGlobalMaps);
    Map("pending pages", {kGlobalMapPage, kPendingPagesRow}, kOwnerGlobalMaps);
    const Catalog catalog(file_);
    for (const CatalogObject& object : catalog.All()) {
      if (object.IsLocalTable()) Table(catalog.Table(object));
    }
    return std::move(fields_);
  }

 private:
  size_t PageAt(uint32_t number) const { return size_t{number} * kJet4.page_size; }

  void Add(const std::string& name, size_t at, size_t size) { fields_.push_back({name, at, size}); }

  // --- Definitions, whose bytes go on from page to page ---

  void AddLogical(const std::string& name, size_t offset, size_t size) {
    const size_t at = Place(offset);
    if (Place(offset + size - 1) == at + size - 1) Add(name, at, size);
  }
  size_t Place(size_t offset) const {
    const size_t page_size = kJet4.page_size;
    if (offset < page_size) return PageAt(definition_.front()) + offset;
    const size_t start = kJet4.definition.continuation;
    const size_t behind = offset - page_size;
    const uint32_t page = definition_.at(1 + behind / (page_size - start));
    return PageAt(page) + start + behind % (page_size - start);
  }

  void Table(const TableDefinition& table) {
    const std::string name = ToUtf8(table.name);
    std::vector<uint8_t> bytes = ReadDefinitionBytes(file_, table.Page(), definition_);
    Definition(name, table, bytes);
    Map(name + ".owned map", table.owned_map);
    Map(name + ".free map", table.free_map);
    for (const Column& column : table.columns) {
      if (!column.IsLongValue()) continue;
      Map(name + ".column " + ToUtf8(column.name) + ".owned map", column.owned_map);
      Map(name + ".column " + ToUtf8(column.name) + ".free map", column.free_map);
      for (const uint32_t page : UsageMap(file_, column.owned_map).Pages()) DataPage(name, page);
    }
    for (const RealIndex& index : table.indexes) {
      const std::string index_name = name + ".index " + std::to_string(index.position);
      Map(index_name + ".map", index.map);
      for (const uint32_t page : UsageMap(file_, index.map).Pages())
        IndexPage(page == index.root ? index_name + ".root"
                                     : index_name + ".page " + std::to_string(page),
                  table.Page(), page);
    }
    for (const uint32_t page : UsageMap(file_, table.owned_map).Pages()) {
      DataPage(name, page);
      Rows(name, table, page);
    }
  }

  void Definition(const std::string& name, const TableDefinition& table, Bytes bytes) {
    const auto& layout = kJet4.definition;
    Add(name + ".next page", Place(layout.next_page), 4);
    Add(name + ".length", Place(layout.length), 4);
    AddLogical(name + ".rows", layout.row_count, 4);
    AddLogical(name + ".last autonumber", layout.last_autonumber, 4);
    AddLogical(name + ".autonumber increment", layout.autonumber_increment, 4);
    AddLogical(name + ".type", layout.table_type, 1);
    AddLogical(name + ".max columns", layout.max_columns, 2);
    AddLogical(name + ".variable columns", layout.variable_columns, 2);
    AddLogical(name + ".columns", layout.column_count, 2);
    AddLogical(name + ".logical indexes", layout.logical_index_count, 4);
    AddLogical(name + ".indexes", layout.real_index_count, 4);
    RowPointer(name + ".owned map at", layout.owned_map);
    RowPointer(name + ".free map at", layout.free_map);
    const size_t columns = layout.statistics + table.indexes.size() * layout.statistics_size;
    for (size_t i = 0; i < table.columns.size(); ++i)
      ColumnFields(name, table, bytes, columns + i * kJet4.column.size);
    size_t at = columns + table.columns.size() * kJet4.column.size;
    at = SkipNames(name + ".column name ", bytes, at, table.columns.size());
    for (size_t i = 0; i < table.indexes.size(); ++i, at += kJet4.real_index.size)
      RealIndexFields(name + ".index " + std::to_string(i), at);
    for (const LogicalIndex& index : table.logical_indexes) {
      LogicalIndexFields(name + ".logical index " + ToUtf8(index.name), at);
      at += kJet4.logical_index.size;
    }
    at = SkipNames(name + ".index name ", bytes, at, table.logical_indexes.size());
    for (; at + kLongValueMapSize <= bytes.size(); at += kLongValueMapSize) {
      AddLogical(name + ".long value map.column", at, 2);
      RowPointer(name + ".long value map.owned at", at + 2);
      RowPointer(name + ".long value map.free at", at + 2 + kRowPointerSize);
    }
  }

  void RowPointer(const std::string& name, size_t offset) {
    AddLogical(name + ".row", offset, 1);
    AddLogical(name + ".page", offset + 1, 3);
  }

  size_t SkipNames(const std::string& name, Bytes bytes, size_t at, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      AddLogical(name + std::to_string(i) + ".length", at, kNames);
      at += kNames + Load16(&bytes[at]);
    }
    return at;
  }

  void ColumnFields(const std::string& table_name, const TableDefinition& table, Bytes bytes,
                    size_t at) {
    const auto& layout = kJet4.column;
    const uint16_t number = Load16(&bytes[at + layout.number]);
    const auto column = std::ranges::find(table.columns, number, &Column::number);
    const std::string name = table_name + ".column " + ToUtf8(column->name);
    AddLogical(name + ".type", at + layout.type, 1);
    AddLogical(name + ".number", at + layout.number, 2);
    AddLogical(name + ".variable index", at + layout.variable_index, 2);
    AddLogical(name + ".sort order", at + layout.sort_order, 2);
    AddLogical(name + ".flags", at + layout.flags, 1);
    AddLogical(name + ".extended flags", at + layout.extended_flags, 1);
    AddLogical(name + ".fixed offset", at + layout.fixed_offset, 2);
    AddLogical(name + ".length", at + layout.length, 2);
  }

  void RealIndexFields(const std::string& name, size_t at) {
    const auto& layout = kJet4.real_index;
    for (size_t i = 0; i < 3; ++i) {
      AddLogical(name + ".part " + std::to_string(i), at + layout.columns + i * kIndexColumnSize,
                 2);
      AddLogical(name + ".order " + std::to_string(i),
                 at + layout.columns + i * kIndexColumnSize + 2, 1);
    }
    RowPointer(name + ".map at", at + layout.map);
    AddLogical(name + ".root page", at + layout.root, 4);
    AddLogical(name + ".flags", at + layout.flags, 1);
  }

  void LogicalIndexFields(const std::string& name, size_t at) {
    const auto& layout = kJet4.logical_index;
    AddLogical(name + ".number", at + layout.number, 4);
    AddLogical(name + ".real index", at + layout.real_index, 4);
    AddLogical(name + ".foreign key", at + layout.foreign_key, 1);
    AddLogical(name + ".other index", at + layout.other_index, 4);
    AddLogical(name + ".other table", at + layout.other_table, 4);
    AddLogical(name + ".cascade updates", at + layout.cascade_updates, 1);
    AddLogical(name + ".cascade deletes", at + layout.cascade_deletes, 1);
    AddLogical(name + ".kind", at + layout.kind, 1);
  }

  // --- Maps ---

  void Map(const std::string& name, RowId map, uint32_t owner = kOwnerUsageMaps) {
    if (!map) return;
    const Bytes row = RequireRow(file_, owner, map);
    const size_t at =
        PageAt(map.page) + static_cast<size_t>(row.data() - file_.RawPage(map.page).data());
    Add(name + ".kind", at, 1);
    if (row[0] == kMapInline) {
      Add(name + ".first page", at + kMapFirstPage, 4);
      for (size_t i = kMapInlineBits; i + 4 <= row.size(); i += 4)
        Add(name + ".bits " + std::to_string((i - kMapInlineBits) * 8), at + i, 4);
      return;
    }
    for (size_t i = 0; i < kMostReferences; ++i)
      Add(name + ".reference " + std::to_string(i), at + kMapReferences + i * kMapReferenceSize, 4);
    for (const uint32_t page : UsageMap(file_, map, owner).MapPages()) {
      Add(name + ".map page.type", PageAt(page), 1);
      Add(name + ".map page.bits 0", PageAt(page) + kMapPageBits, 4);
    }
  }

  // --- Pages ---

  void IndexPage(const std::string& name, uint32_t table_page, uint32_t number) {
    const auto& layout = kJet4.index;
    const size_t page = PageAt(number);
    Add(name + ".type", page, 1);
    Add(name + ".free bytes", page + kPageFreeBytes, 2);
    Add(name + ".owner", page + kPageOwner, 4);
    Add(name + ".previous", page + layout.previous, 4);
    Add(name + ".next", page + layout.next, 4);
    Add(name + ".tail", page + layout.tail, 4);
    Add(name + ".prefix", page + layout.prefix, layout.prefix_size);
    Add(name + ".level", page + layout.level, 1);
    const IndexPageView view(file_, table_page, number);
    size_t entries = 0;
    for (auto entry = view.EntryAt(0); entry; entry = view.EntryAt(entry->end), ++entries) {
      const std::string entry_name = name + ".entry " + std::to_string(entries);
      size_t end = page + layout.entries + entry->end;
      Add(entry_name + ".mark", page + layout.mask + entry->end / 8, 1);
      Add(entry_name + ".key", page + layout.entries + entry->start, 1);
      if (!view.IsLeaf()) Add(entry_name + ".child", end -= kEntryChildSize, kEntryChildSize);
      if (entry->end - entry->start >= kEntryRowSize) {
        Add(entry_name + ".row page", end - kEntryRowSize, 3);
        Add(entry_name + ".row", end - 1, 1);
      }
    }
    Add(name + ".mask start", page + layout.mask, 1);
    Add(name + ".mask end", page + layout.mask + layout.mask_size - 1, 1);
  }

  void DataPage(const std::string& table_name, uint32_t number) {
    const std::string name = table_name + ".page " + std::to_string(number);
    const size_t page = PageAt(number);
    Add(name + ".type", page, 1);
    Add(name + ".free bytes", page + kPageFreeBytes, 2);
    Add(name + ".owner", page + kPageOwner, 4);
    Add(name + ".slots", page + kJet4.data.slot_count, 2);
    const size_t slots = Load16(&file_.RawPage(number)[kJet4.data.slot_count]);
    for (size_t slot = 0; slot < slots; ++slot)
      Add(name + ".slot " + std::to_string(slot), page + kJet4.data.slots + slot * kSlotSize, 2);
  }

  void Rows(const std::string& table_name, const TableDefinition& table, uint32_t number) {
    const DataPageView page(file_, number, file_.DataPage(number, table.Page()));
    for (size_t row = 0; row < page.SlotCount(); ++row) {
      const Slot slot = page.At(row);
      if (slot.Deleted()) continue;
      const std::string name =
          table_name + ".page " + std::to_string(number) + ".row " + std::to_string(row);
      const size_t at = PageAt(number) + slot.start;
      if (slot.Pointer()) {
        Add(name + ".pointer.row", at, 1);
        Add(name + ".pointer.page", at + 1, 3);
      } else {
        Row(name, table, at, page.Content(slot));
      }
    }
  }

  void Row(const std::string& name, const TableDefinition& table, size_t at, Bytes content) {
    const size_t mask_size = (Load16(content.data()) + size_t{7}) / 8;
    Add(name + ".columns", at, 2);
    Add(name + ".mask", at + content.size() - mask_size, std::min<size_t>(mask_size, 4));
    if (table.variable_columns > 0) {
      const size_t count_at = content.size() - mask_size - 2;
      Add(name + ".variable columns", at + count_at, 2);
      for (size_t i = 0; i <= Load16(&content[count_at]); ++i)
        Add(name + ".offset " + std::to_string(i), at + count_at - 2 * (i + 1), 2);
    }
    RowView view(file_, table);
    view.Reset({}, content);
    for (const Column& column : table.columns) {
      const auto field = column.IsLongValue() ? view.Field(column) : std::nullopt;
      if (!field || field->size() < kLongValueDescriptorSize) continue;
      const size_t value = at + static_cast<size_t>(field->data() - content.data());
      const std::string value_name = name + "." + ToUtf8(column.name);
      Add(value_name + ".length", value, 4);
      Add(value_name + ".row", value + kLongValuePointer, 1);
      Add(value_name + ".page", value + kLongValuePointer + 1, 3);
    }
  }

  BufferPageSource pages_;
  FileReader file_;
  std::vector<uint32_t> definition_;
  std::vector<FileField> fields_;
};

}  // namespace

std::vector<FileField> FieldsOf(Bytes file) {
  return Finder(file).Run();
}

const FileField& FindField(const std::vector<FileField>& fields, std::string_view name) {
  const auto found = std::ranges::find(fields, name, &FileField::name);
  if (found != fields.end()) return *found;
  std::fprintf(stderr, "the file has no field %s\n", std::string(name).c_str());
  std::abort();
}

bool FieldIsThere(const std::vector<FileField>& fields, std::string_view name) {
  return std::ranges::find(fields, name, &FileField::name) != fields.end();
}

uint32_t LoadField(Bytes file, const FileField& field) {
  uint32_t value = 0;
  for (size_t i = field.size; i-- > 0;) value = value << 8 | file[field.at + i];
  return value;
}

void StoreField(std::vector<uint8_t>& file, const FileField& field, uint32_t value) {
  for (size_t i = 0; i < field.size; ++i, value >>= 8)
    file[field.at + i] = static_cast<uint8_t>(value);
}

}  // namespace rdv::jet
