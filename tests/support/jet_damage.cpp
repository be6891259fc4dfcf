#include "tests/support/jet_damage.h"

#include <algorithm>
#include <cassert>

#include "data/jet/format/format.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {
namespace {

constexpr size_t kPageSize = 4096;

void Append(std::vector<uint8_t>& to, uint32_t number, size_t size) {
  for (; size > 0; --size, number >>= 8) to.push_back(static_cast<uint8_t>(number));
}

void AppendName(std::vector<uint8_t>& to, std::string_view name) {
  Append(to, static_cast<uint32_t>(name.size() * sizeof(char16_t)), 2);
  for (const char letter : name) Append(to, static_cast<uint8_t>(letter), sizeof(char16_t));
}

// A new page at the file's end, and its number.
uint32_t AppendPage(std::vector<uint8_t>& file, PageType type) {
  const auto number = static_cast<uint32_t>(file.size() / kPageSize);
  file.resize(file.size() + kPageSize);
  file[number * kPageSize] = static_cast<uint8_t>(type);
  file[number * kPageSize + 1] = kPageMark;
  return number;
}

uint8_t* PageAt(std::vector<uint8_t>& file, uint32_t number) {
  return &file[size_t{number} * kPageSize];
}

bool IsValueOf(const FileField& field, const std::string& table, const std::string& column) {
  return field.name.starts_with(table + ".page") && field.name.ends_with(column + ".length");
}

}  // namespace

uint32_t PageOf(const std::vector<FileField>& fields, std::string_view field) {
  return static_cast<uint32_t>(FindField(fields, field).at / kPageSize);
}

std::vector<uint8_t> WideDefinition(uint16_t columns, uint32_t indexes) {
  const auto& layout = kJet4.definition;
  std::vector<uint8_t> bytes(layout.statistics + indexes * layout.statistics_size);
  bytes[0] = static_cast<uint8_t>(PageType::Definition);
  bytes[1] = kPageMark;
  bytes[layout.table_type] = kUserTable;
  Store16(&bytes[layout.max_columns], columns);
  Store16(&bytes[layout.column_count], columns);
  Store32(&bytes[layout.real_index_count], indexes);
  Store32(&bytes[layout.logical_index_count], indexes);
  for (uint16_t i = 0; i < columns; ++i) {
    std::vector<uint8_t> column(kJet4.column.size);
    column[kJet4.column.type] = static_cast<uint8_t>(ColumnType::Boolean);
    column[kJet4.column.flags] = kColumnFixed | kColumnAlways;
    Store16(&column[kJet4.column.number], i);
    Store16(&column[kJet4.column.length], 1);
    bytes.insert(bytes.end(), column.begin(), column.end());
  }
  for (uint16_t i = 0; i < columns; ++i) AppendName(bytes, i == 0 ? "id" : "b" + std::to_string(i));
  for (uint32_t i = 0; i < indexes; ++i) {
    std::vector<uint8_t> index(kJet4.real_index.size, 0xFF);
    Store16(&index[kJet4.real_index.columns], 0);
    bytes.insert(bytes.end(), index.begin(), index.end());
  }
  for (uint32_t i = 0; i < indexes; ++i) {
    std::vector<uint8_t> index(kJet4.logical_index.size);
    Store32(&index[kJet4.logical_index.number], i);
    Store32(&index[kJet4.logical_index.real_index], i);
    bytes.insert(bytes.end(), index.begin(), index.end());
  }
  for (uint32_t i = 0; i < indexes; ++i) AppendName(bytes, "i" + std::to_string(i));
  bytes.insert(bytes.end(), {0xFF, 0xFF});
  return bytes;
}

void Redefine(std::vector<uint8_t>& file, uint32_t page, std::vector<uint8_t> definition) {
  const auto& layout = kJet4.definition;
  Store32(&definition[layout.length], static_cast<uint32_t>(definition.size()));
  for (const size_t map : {layout.owned_map, layout.free_map})
    std::copy_n(PageAt(file, page) + map, kRowPointerSize, &definition[map]);
  size_t done = std::min(definition.size(), kPageSize);
  std::fill_n(PageAt(file, page), kPageSize, uint8_t{0});
  std::copy_n(definition.begin(), done, PageAt(file, page));
  for (uint32_t before = page; done < definition.size();) {
    const uint32_t next = AppendPage(file, PageType::Definition);
    Store32(PageAt(file, before) + layout.next_page, next);
    const size_t count = std::min(kPageSize - layout.continuation, definition.size() - done);
    std::copy_n(definition.begin() + static_cast<ptrdiff_t>(done), count,
                PageAt(file, next) + layout.continuation);
    done += count;
    before = next;
  }
}

void FillWithEmptyRows(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                       const std::string& table, uint32_t pages) {
  const uint32_t definition = PageOf(fields, table + ".rows");
  Redefine(file, definition, WideDefinition(kMaxColumns, 0));
  const auto& layout = kJet4.data;
  std::vector<uint32_t> numbers;
  for (uint32_t i = 0; i < pages; ++i) {
    numbers.push_back(AppendPage(file, PageType::Data));
    uint8_t* page = PageAt(file, numbers.back());
    Store32(page + kPageOwner, definition);
    Store16(page + layout.slot_count, kMaxSlots);
    for (size_t row = 0; row < kMaxSlots; ++row)
      Store16(page + layout.slots + row * kSlotSize,
              static_cast<uint16_t>(kPageSize - 2 * (row + 1)));
  }
  const uint32_t map_page = AppendPage(file, PageType::UsageMap);
  for (const uint32_t number : numbers)
    PageAt(file, map_page)[kMapPageBits + number / 8] |= static_cast<uint8_t>(1u << number % 8);
  // Of the row that the definition leads to, the first reference.
  const FileField& kind = FindField(fields, table + ".owned map.kind");
  file[kind.at] = kMapReference;
  for (size_t i = 0; FieldIsThere(fields, table + ".owned map.bits " + std::to_string(i)); i += 32)
    StoreField(file, FindField(fields, table + ".owned map.bits " + std::to_string(i)), 0);
  Store32(&file[kind.at + kMapReferences], map_page);
}

std::vector<uint8_t> PropertiesWithLongNames() {
  constexpr size_t kLongest = 0xFFFE;
  constexpr uint32_t kValues = 60000;
  std::vector<uint8_t> block = {'M', 'R', '2', 0};
  Append(block, 6 + 2 + kLongest, 4);
  Append(block, 0x80, 2);
  Append(block, kLongest, 2);
  block.resize(block.size() + kLongest, 'x');
  Append(block, 6 + 6 + kLongest + size_t{kValues} * 8, 4);
  Append(block, 0x01, 2);
  Append(block, 6 + kLongest, 4);
  Append(block, kLongest, 2);
  block.resize(block.size() + kLongest, 'x');
  for (uint32_t i = 0; i < kValues; ++i) {
    Append(block, 8, 2);
    Append(block, static_cast<uint32_t>(ColumnType::Text) << 8, 2);
    Append(block, 0, 4);
  }
  return block;
}

void ShareLongestValue(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                       const std::string& table, const std::string& column) {
  const FileField* longest = nullptr;
  uint32_t length = 0;
  for (const FileField& field : fields) {
    if (!IsValueOf(field, table, column)) continue;
    const uint32_t its_length = LoadField(file, field) & kLongValueLengthMask;
    if (its_length <= length) continue;
    length = its_length;
    longest = &field;
  }
  assert(longest != nullptr);
  const std::vector<uint8_t> descriptor(
      file.begin() + static_cast<ptrdiff_t>(longest->at),
      file.begin() + static_cast<ptrdiff_t>(longest->at + kLongValueDescriptorSize));
  for (const FileField& field : fields) {
    if (IsValueOf(field, table, column))
      std::ranges::copy(descriptor, file.begin() + static_cast<ptrdiff_t>(field.at));
  }
}

void CallFree(std::vector<uint8_t>& file, const std::vector<FileField>& fields, uint32_t page) {
  for (uint32_t first = 0;; first += 32) {
    const std::string name = "free pages.bits " + std::to_string(first);
    if (!FieldIsThere(fields, name)) return;
    const bool here = page >= first && page < first + 32;
    StoreField(file, FindField(fields, name), here ? 1u << (page - first) : 0);
  }
}

void StartFreePagesLate(std::vector<uint8_t>& file) {
  uint8_t* page = PageAt(file, kGlobalMapPage);
  const size_t slots = kJet4.data.slots;
  const size_t short_row = kPageSize - kMapInlineBits - 1;
  std::fill(page + slots, page + kPageSize, uint8_t{0});
  Store16(page + slots, static_cast<uint16_t>(short_row));
  Store16(page + slots + kSlotSize, static_cast<uint16_t>(slots + 2 * kSlotSize));
  Store32(page + short_row + kMapFirstPage, 32768);
}

void KeepFirstEntry(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                    const std::string& page) {
  uint8_t* mask = PageAt(file, PageOf(fields, page + ".type")) + kJet4.index.mask;
  bool first = true;
  for (size_t bit = 0; bit < kJet4.index.mask_size * 8; ++bit) {
    if ((mask[bit / 8] >> (bit % 8) & 1) == 0) continue;
    if (!first) mask[bit / 8] &= static_cast<uint8_t>(~(1u << (bit % 8)));
    first = false;
  }
}

void LeadRootToItself(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                      const std::string& root) {
  assert(LoadField(file, FindField(fields, root + ".type")) ==
         static_cast<uint32_t>(PageType::IndexNode));
  KeepFirstEntry(file, fields, root);
  StoreField(file, FindField(fields, root + ".tail"), PageOf(fields, root + ".type"));
}

void RelateToItself(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                    const std::string& table, const std::string& own, const std::string& other) {
  const auto set = [&](const std::string& name, uint32_t value) {
    StoreField(file, FindField(fields, table + ".logical index " + name), value);
  };
  const auto number = [&](const std::string& name) {
    return LoadField(file, FindField(fields, table + ".logical index " + name + ".number"));
  };
  set(own + ".foreign key", kForeignKeyReferenced);
  set(own + ".other index", number(other));
  set(own + ".other table", PageOf(fields, table + ".rows"));
  set(own + ".cascade deletes", 1);
  set(own + ".cascade updates", 1);
  set(other + ".foreign key", kForeignKeyReferencing);
  set(other + ".other index", number(own));
  set(other + ".other table", PageOf(fields, table + ".rows"));
}

}  // namespace rdv::jet
