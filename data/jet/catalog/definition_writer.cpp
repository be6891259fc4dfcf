#include "data/jet/catalog/definition_writer.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>
#include <utility>

#include "data/jet/rows/data_page.h"

namespace rdv::jet {
namespace {

constexpr uint8_t kLongestPart = 8;  // of the free space that a page does not count

// Puts numbers behind one another.
class Appender {
 public:
  explicit Appender(std::vector<uint8_t>& to) : to_(to) {}

  // Room for a structure, zeros; its start.
  uint8_t* Block(size_t size) {
    to_.resize(to_.size() + size);
    return to_.data() + to_.size() - size;
  }
  void Name(TextView name) {
    assert(name.size() <= std::numeric_limits<uint16_t>::max() / sizeof(char16_t));
    uint8_t* to = Block(2 + name.size() * sizeof(char16_t));
    Store16(to, static_cast<uint16_t>(name.size() * sizeof(char16_t)));
    for (size_t i = 0; i < name.size(); ++i) Store16(to + 2 + i * sizeof(char16_t), name[i]);
  }

 private:
  std::vector<uint8_t>& to_;
};

std::vector<const Column*> InOrderOfDisplay(const TableDefinition& table) {
  std::vector<const Column*> columns;
  for (const Column& column : table.columns) columns.push_back(&column);
  std::ranges::stable_sort(columns, [](const Column* left, const Column* right) {
    if (left->ordinal != right->ordinal) return left->ordinal < right->ordinal;
    return UpperCase(left->name) < UpperCase(right->name);
  });
  return columns;
}

// For fixed columns: the number of variable columns before it.
uint16_t VariableIndex(const TableDefinition& table, const Column& column) {
  if (!column.fixed) return column.variable_index;
  return static_cast<uint16_t>(std::ranges::count_if(table.columns, [&](const Column& other) {
    return !other.fixed && other.number < column.number;
  }));
}

uint8_t ColumnFlags(const TableDefinition& table, const Column& column) {
  unsigned flags = kColumnAlways;
  if (column.fixed) flags |= kColumnFixed;
  if (column.autonumber)
    flags |= column.type == ColumnType::Guid ? kColumnAutoGuid : kColumnAutonumber;
  if (table.system) flags |= kColumnSystem;
  if (column.sid) flags |= kColumnSid;
  return static_cast<uint8_t>(flags);
}

void EncodeColumn(const TableDefinition& table, const Column& column, uint8_t* to) {
  const auto& layout = kJet4.column;
  to[layout.type] = static_cast<uint8_t>(column.type);
  Store32(to + 1, kDefinitionConstant);
  Store16(to + layout.number, column.number);
  Store16(to + layout.variable_index, VariableIndex(table, column));
  Store16(to + layout.ordinal, column.ordinal);
  if (column.type == ColumnType::Numeric) {
    to[layout.precision] = column.precision;
    to[layout.scale] = column.scale;
  } else {
    Store16(to + layout.sort_order, kSortOrderGeneral);
  }
  to[layout.flags] = ColumnFlags(table, column);
  to[layout.extended_flags] = column.compressible ? kColumnExtendedCompressible : uint8_t{0};
  if (column.fixed) Store16(to + layout.fixed_offset, column.fixed_offset);
  Store16(to + layout.length, column.length);
}

void EncodeRealIndex(const TableDefinition& table, const RealIndex& index, uint8_t* to) {
  assert(!index.columns.empty() && index.columns.size() <= kIndexMaxColumns);
  assert(index.map && index.root > kGlobalMapPage);
  const auto& layout = kJet4.real_index;
  Store32(to, kIndexConstant);
  for (size_t i = 0; i < kIndexMaxColumns; ++i) {
    uint8_t* part = to + layout.columns + i * kIndexColumnSize;
    const bool used = i < index.columns.size();
    Store16(part, used ? table.columns[index.columns[i].column].number : kIndexNoColumn);
    if (used) part[2] = index.columns[i].descending ? kIndexDescending : kIndexAscending;
  }
  StoreRowPointer(to + layout.map, index.map);
  Store32(to + layout.root, index.root);
  unsigned flags = kIndexAlwaysJet4;
  if (index.unique) flags |= kIndexUnique;
  if (index.ignore_nulls) flags |= kIndexIgnoreNulls;
  if (index.required) flags |= kIndexRequired;
  to[layout.flags] = static_cast<uint8_t>(flags);
}

void EncodeLogicalIndex(const LogicalIndex& index, uint8_t* to) {
  const auto& layout = kJet4.logical_index;
  Store32(to, kDefinitionConstant);
  Store32(to + layout.number, index.number);
  Store32(to + layout.real_index, static_cast<uint32_t>(index.real_index));
  to[layout.kind] = static_cast<uint8_t>(index.kind);
  Store32(to + layout.other_index, kNoOtherIndex);
  to[layout.cascade_updates] = kNoCascade;
  to[layout.cascade_deletes] = kNoCascade;
  if (!index.foreign_key) return;
  const ForeignKey& key = *index.foreign_key;
  to[layout.foreign_key] = key.referenced_side ? kForeignKeyReferenced : kForeignKeyReferencing;
  Store32(to + layout.other_index, key.other_index);
  Store32(to + layout.other_table, key.other_table);
  to[layout.cascade_updates] = key.cascade_updates ? 1 : 0;
  to[layout.cascade_deletes] = key.cascade_deletes ? 1 : 0;
}

bool NameLess(TextView left, TextView right) {
  return UpperCase(left) < UpperCase(right);
}

std::vector<const LogicalIndex*> ByName(const TableDefinition& table) {
  std::vector<const LogicalIndex*> indexes;
  for (const LogicalIndex& index : table.logical_indexes) indexes.push_back(&index);
  std::ranges::stable_sort(indexes, [](const LogicalIndex* left, const LogicalIndex* right) {
    return NameLess(left->name, right->name);
  });
  return indexes;
}

void EncodeHeader(const TableDefinition& table, uint8_t* to) {
  assert(table.owned_map && table.free_map);
  assert(table.columns.size() <= kMaxColumns && table.indexes.size() <= kMaxIndexes);
  const auto& layout = kJet4.definition;
  to[0] = static_cast<uint8_t>(PageType::Definition);
  to[1] = kPageMark;
  Store32(to + layout.length + 4, kDefinitionConstant);
  Store32(to + layout.row_count, table.row_count);
  Store32(to + layout.last_autonumber, table.last_autonumber);
  Store32(to + layout.autonumber_increment, table.autonumber_increment);
  to[layout.table_type] = table.system ? kSystemTable : kUserTable;
  Store16(to + layout.max_columns, table.max_columns);
  Store16(to + layout.variable_columns, table.variable_columns);
  Store16(to + layout.column_count, static_cast<uint16_t>(table.columns.size()));
  Store32(to + layout.logical_index_count, static_cast<uint32_t>(table.logical_indexes.size()));
  Store32(to + layout.real_index_count, static_cast<uint32_t>(table.indexes.size()));
  StoreRowPointer(to + layout.owned_map, table.owned_map);
  StoreRowPointer(to + layout.free_map, table.free_map);
}

void StoreLength(std::vector<uint8_t>& definition) {
  Store32(definition.data() + kJet4.definition.length, static_cast<uint32_t>(definition.size()));
}

}  // namespace

void AppendColumn(TableDefinition& table, Column column) {
  column.number = table.max_columns++;
  if (!column.fixed) {
    column.variable_index = table.variable_columns++;
  } else if (column.type != ColumnType::Boolean) {
    for (const Column& other : table.columns) {
      if (!other.fixed) continue;
      const size_t end = other.fixed_offset + FixedSize(other);
      column.fixed_offset = std::max(column.fixed_offset, static_cast<uint16_t>(end));
    }
  }
  table.columns.push_back(std::move(column));
}

void AppendIndex(TableDefinition& table, RealIndex index, TextView name, bool primary) {
  index.position = table.indexes.size();
  LogicalIndex logical;
  logical.name = name;
  logical.number = static_cast<uint32_t>(index.position);
  logical.real_index = index.position;
  logical.kind = primary ? LogicalIndexKind::Primary : LogicalIndexKind::Plain;
  table.indexes.push_back(std::move(index));
  table.logical_indexes.push_back(std::move(logical));
}

std::vector<uint8_t> EncodeDefinition(const TableDefinition& table) {
  std::vector<uint8_t> bytes;
  Appender append(bytes);
  EncodeHeader(table, append.Block(kJet4.definition.statistics));
  append.Block(table.indexes.size() * kJet4.definition.statistics_size);
  const std::vector<const Column*> columns = InOrderOfDisplay(table);
  for (const Column* column : columns)
    EncodeColumn(table, *column, append.Block(kJet4.column.size));
  for (const Column* column : columns) append.Name(column->name);
  for (const RealIndex& index : table.indexes)
    EncodeRealIndex(table, index, append.Block(kJet4.real_index.size));
  const std::vector<const LogicalIndex*> logical = ByName(table);
  for (const LogicalIndex* index : logical)
    EncodeLogicalIndex(*index, append.Block(kJet4.logical_index.size));
  for (const LogicalIndex* index : logical) append.Name(index->name);
  for (const Column* column : columns) {
    if (!column->IsLongValue()) continue;
    uint8_t* maps = append.Block(kLongValueMapSize);
    Store16(maps, column->number);
    StoreRowPointer(maps + 2, column->owned_map);
    StoreRowPointer(maps + 2 + kRowPointerSize, column->free_map);
  }
  Store16(append.Block(2), kDefinitionEnd);
  StoreLength(bytes);
  return bytes;
}

std::vector<uint32_t> StoreDefinition(const WriteContext& context, PageAllocator& allocator,
                                      Bytes definition, std::vector<uint32_t> pages) {
  const auto& layout = kJet4.definition;
  assert(definition.size() > layout.statistics &&
         Load32(definition.data() + layout.length) == definition.size());
  const size_t page_size = kJet4.page_size;
  const size_t capacity = page_size - layout.continuation;
  const size_t needed = (definition.size() - layout.continuation + capacity - 1) / capacity;
  for (; pages.size() > needed; pages.pop_back()) allocator.Free(pages.back());
  while (pages.size() < needed) pages.push_back(allocator.Allocate());
  Bytes rest = definition.subspan(layout.continuation);
  for (size_t i = 0; i < needed; ++i) {
    const Bytes part = rest.first(std::min(rest.size(), capacity));
    rest = rest.subspan(part.size());
    uint8_t* page = context.pager.Edit(pages[i]);
    std::memset(page, 0, page_size);
    page[0] = static_cast<uint8_t>(PageType::Definition);
    page[1] = kPageMark;
    const size_t free = capacity - part.size();
    Store16(page + kPageFreeBytes,
            static_cast<uint16_t>(free > kLongestPart ? free - kDefinitionFreeReserve : 0));
    Store32(page + layout.next_page, i + 1 < needed ? pages[i + 1] : 0);
    std::memcpy(page + layout.continuation, part.data(), part.size());
  }
  return pages;
}

std::vector<uint8_t> AddIndexToDefinition(Bytes definition, const TableDefinition& table,
                                          const LogicalIndex& logical, const RealIndex* real) {
  const auto& layout = kJet4.definition;
  std::vector<uint8_t> bytes(definition.begin(), definition.end());
  size_t position = layout.statistics;
  const auto skip_names = [&](size_t count) {
    for (; count > 0; --count) position += 2 + size_t{Load16(&bytes[position])};
  };
  // Makes room for a structure in front of `position` and moves on behind it.
  const auto insert = [&](size_t size) {
    assert(position <= bytes.size());
    bytes.insert(bytes.begin() + static_cast<ptrdiff_t>(position), size, 0);
    position += size;
    return &bytes[position - size];
  };
  position += table.indexes.size() * layout.statistics_size;
  if (real) insert(layout.statistics_size);
  position += table.columns.size() * kJet4.column.size;
  skip_names(table.columns.size());
  position += table.indexes.size() * kJet4.real_index.size;
  if (real) EncodeRealIndex(table, *real, insert(kJet4.real_index.size));

  const auto& present = table.logical_indexes;
  const auto place = static_cast<size_t>(std::ranges::count_if(
      present, [&](const LogicalIndex& other) { return NameLess(other.name, logical.name); }));
  position += place * kJet4.logical_index.size;
  EncodeLogicalIndex(logical, insert(kJet4.logical_index.size));
  position += (present.size() - place) * kJet4.logical_index.size;
  skip_names(place);
  std::vector<uint8_t> name;
  Appender(name).Name(logical.name);
  std::ranges::copy(name, insert(name.size()));

  Store32(&bytes[layout.logical_index_count], static_cast<uint32_t>(present.size() + 1));
  Store32(&bytes[layout.real_index_count],
          static_cast<uint32_t>(table.indexes.size() + (real ? 1 : 0)));
  StoreLength(bytes);
  return bytes;
}

}  // namespace rdv::jet
