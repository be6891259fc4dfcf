#include <algorithm>
#include <utility>

#include "data/jet/catalog/catalog.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/row_codec.h"

namespace rdv::jet {
namespace {

// Of a table with everything that the format allows.
size_t LongestDefinition(const Format& format) {
  const size_t name = format.definition.name_length_size + kMaxNameUnits * format.UnitSize();
  return format.definition.statistics +
         kMaxColumns * (format.column.size + name + kLongValueMapSize) +
         kMaxIndexes * (format.definition.statistics_size + format.real_index.size +
                        format.logical_index.size + name) +
         sizeof kDefinitionEnd;
}

// Reads one definition from its bytes, front to back. A definition that it lets pass is one that
// rows can be written by: each column has a place of its own in the row, of the size of its type.
class DefinitionParser {
 public:
  DefinitionParser(const FileReader& file, uint32_t page, Bytes bytes, TableDefinition& table)
      : file_(file),
        format_(file.Layout()),
        page_(page),
        bytes_(bytes),
        reader_(bytes, format_.definition.statistics),
        table_(table) {}

  void Parse() {
    const auto& layout = format_.definition;
    if (bytes_.size() < layout.statistics) Fail();
    table_.system = bytes_[layout.table_type] == kSystemTable;
    table_.row_count = U32(layout.row_count);
    table_.last_autonumber = U32(layout.last_autonumber);
    if (format_.IsJet4()) table_.autonumber_increment = U32(layout.autonumber_increment);
    table_.max_columns = Load16(&bytes_[layout.max_columns]);
    table_.variable_columns = Load16(&bytes_[layout.variable_columns]);
    table_.owned_map = LoadRowPointer(&bytes_[layout.owned_map]);
    table_.free_map = LoadRowPointer(&bytes_[layout.free_map]);
    const size_t column_count = Load16(&bytes_[layout.column_count]);
    const size_t real_count = U32(layout.real_index_count);
    const size_t logical_count = U32(layout.logical_index_count);
    const bool too_many = table_.max_columns > kMaxColumns || column_count > kMaxColumns ||
                          table_.variable_columns > kMaxColumns || real_count > kMaxIndexes ||
                          logical_count > kMaxIndexes;
    if (too_many) Fail();

    Array(real_count, layout.statistics_size);  // the statistics
    ParseColumns(column_count);
    ParseRealIndexes(real_count);
    ParseLogicalIndexes(logical_count);
    ParseLongValueMaps();
    if (reader_.Failed()) Fail();
  }

 private:
  [[noreturn]] void Fail() const {
    file_.DamagedPage(page_, u"starts the definition of a table that cannot be");
  }

  uint32_t U32(size_t offset) const { return Load32(&bytes_[offset]); }

  // `count` structures one behind the other.
  Bytes Array(size_t count, size_t size) {
    if (count > reader_.Left() / size) Fail();
    return reader_.Take(count * size);
  }

  Text Name() {
    const size_t size =
        format_.definition.name_length_size == 1 ? size_t{reader_.U8()} : size_t{reader_.U16()};
    if (size > kMaxNameUnits * format_.UnitSize()) Fail();
    return file_.DecodeName(reader_.Take(size));
  }

  void ParseColumns(size_t count) {
    const Bytes descriptors = Array(count, format_.column.size);
    table_.columns.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      table_.columns.push_back(ParseColumn(descriptors.subspan(i * format_.column.size)));
    }
    for (Column& column : table_.columns) column.name = Name();
    SortColumns();
    const auto same = [](const Column& left, const Column& right) {
      return left.number == right.number;
    };
    const auto twice = std::adjacent_find(table_.columns.begin(), table_.columns.end(), same);
    if (twice != table_.columns.end()) Fail();
    RequireOwnPlaces();
  }

  // By number; each column moves once at most, as they are large.
  void SortColumns() {
    std::vector<Column>& columns = table_.columns;
    if (std::ranges::is_sorted(columns, {}, &Column::number)) return;
    std::vector<Column*> order;
    order.reserve(columns.size());
    for (Column& column : columns) order.push_back(&column);
    std::ranges::sort(order, {}, &Column::number);
    std::vector<Column> sorted;
    sorted.reserve(columns.size());
    for (Column* column : order) sorted.push_back(std::move(*column));
    columns = std::move(sorted);
  }

  // No two columns share bytes of the fixed area or a place among the variable ones.
  void RequireOwnPlaces() const {
    std::vector<bool> fixed_bytes(format_.row.max_size, false);
    std::vector<bool> variable_places(table_.variable_columns, false);
    const auto take = [this](std::vector<bool>& places, size_t first, size_t count) {
      for (size_t i = first; i < first + count; ++i) {
        if (places[i]) Fail();
        places[i] = true;
      }
    };
    for (const Column& column : table_.columns) {
      if (column.fixed) {
        take(fixed_bytes, column.fixed_offset, FixedSize(column));
      } else {
        take(variable_places, column.variable_index, 1);
      }
    }
  }

  Column ParseColumn(Bytes descriptor) const {
    const auto& layout = format_.column;
    Column column;
    column.type = static_cast<ColumnType>(descriptor[layout.type]);
    column.number = Load16(&descriptor[layout.number]);
    column.ordinal = Load16(&descriptor[layout.ordinal]);
    column.length = Load16(&descriptor[layout.length]);
    const uint8_t flags = descriptor[layout.flags];
    column.fixed = (flags & kColumnFixed) != 0;
    const uint8_t automatic = column.type == ColumnType::Guid ? kColumnAutoGuid : kColumnAutonumber;
    column.autonumber = (flags & automatic) != 0;
    column.sid = (flags & kColumnSid) != 0;
    if (column.type == ColumnType::Numeric) {
      column.precision = descriptor[layout.precision];
      column.scale = descriptor[layout.scale];
    } else {
      column.sort_order = Load16(&descriptor[layout.sort_order]);
      if (format_.IsJet4()) column.sort_version = descriptor[layout.sort_version];
    }
    if (format_.IsJet4()) {
      column.compressible = (descriptor[layout.extended_flags] & kColumnExtendedCompressible) != 0;
    }
    if (!column.fixed) {
      column.variable_index = Load16(&descriptor[layout.variable_index]);
    } else if (column.type != ColumnType::Boolean) {  // which takes no bytes, wherever it says
      column.fixed_offset = Load16(&descriptor[layout.fixed_offset]);
    }
    CheckPlace(column);
    return column;
  }

  void CheckPlace(const Column& column) const {
    const bool in_row = column.fixed
                            ? column.fixed_offset + FixedSize(column) < format_.row.max_size
                            : column.variable_index < table_.variable_columns;
    const size_t longest = kMaxTextUnits * format_.UnitSize();
    const bool bounded = column.type == ColumnType::Text || column.type == ColumnType::Binary;
    if (column.number >= table_.max_columns || !in_row) Fail();
    if (column.fixed && column.IsLongValue()) Fail();
    if (bounded && column.length > longest) Fail();
  }

  void ParseRealIndexes(size_t count) {
    const Bytes blocks = Array(count, format_.real_index.size);
    for (size_t i = 0; i < count; ++i) {
      table_.indexes.push_back(ParseRealIndex(i, blocks.subspan(i * format_.real_index.size)));
    }
  }

  RealIndex ParseRealIndex(size_t position, Bytes block) const {
    const auto& layout = format_.real_index;
    RealIndex index;
    index.position = position;
    for (size_t i = 0; i < kIndexMaxColumns; ++i) {
      const uint8_t* part = &block[layout.columns + i * kIndexColumnSize];
      const uint16_t number = Load16(part);
      if (number == kIndexNoColumn) continue;
      index.columns.push_back({ColumnPosition(number), part[2] == kIndexDescending});
    }
    if (index.columns.empty()) Fail();
    index.map = LoadRowPointer(&block[layout.map]);
    index.root = Load32(&block[layout.root]);
    const uint8_t flags = block[layout.flags];
    index.unique = (flags & kIndexUnique) != 0;
    index.ignore_nulls = (flags & kIndexIgnoreNulls) != 0;
    index.required = (flags & kIndexRequired) != 0;
    return index;
  }

  size_t ColumnPosition(uint16_t number) const {
    const auto column =
        std::find_if(table_.columns.begin(), table_.columns.end(),
                     [number](const Column& candidate) { return candidate.number == number; });
    if (column == table_.columns.end()) Fail();
    return static_cast<size_t>(column - table_.columns.begin());
  }

  void ParseLogicalIndexes(size_t count) {
    const Bytes blocks = Array(count, format_.logical_index.size);
    for (size_t i = 0; i < count; ++i) {
      table_.logical_indexes.push_back(
          ParseLogicalIndex(blocks.subspan(i * format_.logical_index.size)));
    }
    for (LogicalIndex& index : table_.logical_indexes) index.name = Name();
  }

  LogicalIndex ParseLogicalIndex(Bytes block) const {
    const auto& layout = format_.logical_index;
    LogicalIndex index;
    index.number = Load32(&block[layout.number]);
    index.real_index = Load32(&block[layout.real_index]);
    if (index.real_index >= table_.indexes.size()) Fail();
    index.kind = static_cast<LogicalIndexKind>(block[layout.kind]);
    const uint8_t side = block[layout.foreign_key];
    if (side == kForeignKeyReferenced || side == kForeignKeyReferencing) {
      ForeignKey key;
      key.referenced_side = side == kForeignKeyReferenced;
      key.other_index = Load32(&block[layout.other_index]);
      key.other_table = Load32(&block[layout.other_table]);
      key.cascade_updates = block[layout.cascade_updates] == 1;
      key.cascade_deletes = block[layout.cascade_deletes] == 1;
      // What depends on a row is found by a key that no other row has.
      if (key.referenced_side && !table_.indexes[index.real_index].unique) Fail();
      index.foreign_key = key;
    }
    return index;
  }

  // One entry for each memo or OLE column, deleted ones possibly included.
  void ParseLongValueMaps() {
    while (!reader_.Failed()) {
      const uint16_t number = reader_.U16();
      if (number == kDefinitionEnd) return;
      const Bytes pointers = reader_.Take(2 * kRowPointerSize);
      if (pointers.empty()) return;
      for (Column& column : table_.columns) {
        if (column.number != number) continue;
        column.owned_map = LoadRowPointer(pointers.data());
        column.free_map = LoadRowPointer(pointers.data() + kRowPointerSize);
      }
    }
  }

  const FileReader& file_;
  const Format& format_;
  uint32_t page_;
  Bytes bytes_;
  ByteReader reader_;
  TableDefinition& table_;
};

}  // namespace

std::vector<uint8_t> ReadDefinitionBytes(const FileReader& file, uint32_t page,
                                         std::vector<uint32_t>& pages) {
  const auto& layout = file.Layout().definition;
  const Bytes first = file.Page(page, PageType::Definition);
  const size_t length = Load32(&first[layout.length]);
  if (length > LongestDefinition(file.Layout()))
    file.DamagedPage(page, u"starts a longer definition than a table can have");
  std::vector<uint8_t> bytes(first.begin(), first.end());
  pages.assign(1, page);
  uint32_t next = Load32(&first[layout.next_page]);
  while (bytes.size() < length) {
    if (next == 0 || std::ranges::find(pages, next) != pages.end()) {
      file.DamagedPage(page, u"starts the definition of a table that has no end");
    }
    const Bytes more = file.Page(next, PageType::Definition);
    pages.push_back(next);
    bytes.insert(bytes.end(), more.begin() + static_cast<std::ptrdiff_t>(layout.continuation),
                 more.end());
    next = Load32(&more[layout.next_page]);
  }
  bytes.resize(length);
  return bytes;
}

TableDefinition ReadTableDefinition(const FileReader& file, uint32_t page, TextView name) {
  TableDefinition table;
  table.name = name;
  const std::vector<uint8_t> bytes = ReadDefinitionBytes(file, page, table.pages);
  DefinitionParser(file, page, bytes, table).Parse();
  return table;
}

}  // namespace rdv::jet
