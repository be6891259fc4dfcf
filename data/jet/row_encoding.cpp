#include <algorithm>
#include <type_traits>

#include "data/jet/errors.h"
#include "data/jet/row_codec.h"

namespace rdv::jet {
namespace {

constexpr size_t kShortestCompressed = 3;  // units; compressing fewer saves nothing
constexpr char16_t kLastOneByteUnit = 0xFF;
constexpr char16_t kCompressedMarkUnit = 0xFEFF;
constexpr size_t kUnitSize = sizeof(char16_t);
constexpr uint8_t kBlank[] = {' ', 0};

void Append16(std::vector<uint8_t>& to, size_t value) {
  to.resize(to.size() + 2);
  Store16(&to[to.size() - 2], static_cast<uint16_t>(value));
}

bool CanBeCompressed(TextView text) {
  return text.size() >= kShortestCompressed &&
         std::all_of(text.begin(), text.end(),
                     [](char16_t unit) { return unit != 0 && unit <= kLastOneByteUnit; });
}

template <typename T>
const T& As(const Value& value) {
  const T* typed = std::get_if<T>(&value);
  if (typed == nullptr) RaiseTypeMismatch();
  return *typed;
}

std::vector<uint8_t> EncodeNumeric(const Column& column, const DecimalNumber& number) {
  if (number.scale != column.scale) RaiseTypeMismatch();
  std::vector<uint8_t> bytes(kNumericSize);
  bytes[0] = number.negative ? kNumericNegative : uint8_t{0};
  for (size_t i = 0; i < number.magnitude.size(); ++i)
    Store32(&bytes[1 + 4 * i], number.magnitude[i]);
  return bytes;
}

template <typename Store>
std::vector<uint8_t> Stored(size_t size, Store store) {
  std::vector<uint8_t> bytes(size);
  store(bytes.data());
  return bytes;
}

std::vector<uint8_t> EncodeTextField(const Column& column, const Text& text) {
  if (text.size() * kUnitSize > column.length) RaiseFieldTooSmall();
  std::vector<uint8_t> bytes = EncodeText(text, column.compressible && !column.fixed);
  if (column.fixed) {
    while (bytes.size() < column.length) bytes.insert(bytes.end(), kBlank, kBlank + kUnitSize);
  }
  return bytes;
}

std::vector<uint8_t> EncodeBinaryField(const Column& column, const Binary& binary) {
  if (binary.size() > column.length) RaiseFieldTooSmall();
  std::vector<uint8_t> bytes = binary;
  if (column.fixed) bytes.resize(column.length);
  return bytes;
}

// Copies the fixed columns behind the column count.
void AppendFixedArea(const TableDefinition& table, std::span<const FieldBytes> fields,
                     std::vector<uint8_t>& row) {
  const size_t start = row.size();
  for (const Column& column : table.columns) {
    if (column.fixed)
      row.resize(std::max(row.size(), start + column.fixed_offset + FixedSize(column)));
  }
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    if (!column.fixed || !fields[i]) continue;
    std::copy(fields[i]->begin(), fields[i]->end(),
              row.begin() + static_cast<std::ptrdiff_t>(start + column.fixed_offset));
  }
}

void AppendVariablePart(const TableDefinition& table, std::span<const FieldBytes> fields,
                        std::vector<uint8_t>& row) {
  if (table.variable_columns == 0) return;
  std::vector<const FieldBytes*> by_index(table.variable_columns, nullptr);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    if (!column.fixed) by_index[column.variable_index] = &fields[i];
  }
  std::vector<size_t> offsets;
  for (const FieldBytes* field : by_index) {
    offsets.push_back(row.size());
    if (field != nullptr && *field) row.insert(row.end(), (*field)->begin(), (*field)->end());
  }
  if (row.size() > kJet4.row.max_size) RaiseRecordTooLarge();
  Append16(row, row.size());
  for (auto offset = offsets.rbegin(); offset != offsets.rend(); ++offset) Append16(row, *offset);
  Append16(row, offsets.size());
}

void AppendMask(const TableDefinition& table, std::span<const FieldBytes> fields,
                std::vector<uint8_t>& row) {
  const size_t start = row.size();
  row.resize(start + (table.max_columns + size_t{7}) / 8);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const size_t number = table.columns[i].number;
    if (fields[i]) row[start + number / 8] |= static_cast<uint8_t>(1 << (number % 8));
  }
}

}  // namespace

std::vector<uint8_t> EncodeText(TextView text, bool compressible) {
  std::vector<uint8_t> bytes;
  if (compressible && CanBeCompressed(text)) {
    bytes.reserve(kUnitSize + text.size());
    Append16(bytes, kCompressedMarkUnit);
    for (const char16_t unit : text) bytes.push_back(static_cast<uint8_t>(unit));
    return bytes;
  }
  // Such a text would be taken for a compressed one.
  if (!text.empty() && text.front() == kCompressedMarkUnit) RaiseUnstorableText();
  bytes.reserve(kUnitSize * text.size());
  for (const char16_t unit : text) Append16(bytes, unit);
  return bytes;
}

FieldBytes EncodeField(const Column& column, const Value& value) {
  if (IsNull(value)) return std::nullopt;
  switch (column.type) {
    case ColumnType::Boolean:
      return As<bool>(value) ? FieldBytes(std::in_place) : std::nullopt;
    case ColumnType::Byte:
      return Stored(1, [&](uint8_t* to) { *to = As<uint8_t>(value); });
    case ColumnType::Integer:
      return Stored(2,
                    [&](uint8_t* to) { Store16(to, static_cast<uint16_t>(As<int16_t>(value))); });
    case ColumnType::Long:
      return Stored(4,
                    [&](uint8_t* to) { Store32(to, static_cast<uint32_t>(As<int32_t>(value))); });
    case ColumnType::Currency:
      return Stored(8, [&](uint8_t* to) {
        Store64(to, static_cast<uint64_t>(As<Currency>(value).ten_thousandths));
      });
    case ColumnType::Single:
      return Stored(4, [&](uint8_t* to) { StoreFloat(to, As<float>(value)); });
    case ColumnType::Double:
      return Stored(8, [&](uint8_t* to) { StoreDouble(to, As<double>(value)); });
    case ColumnType::DateTime:
      return Stored(8, [&](uint8_t* to) { StoreDouble(to, As<DateTime>(value).days); });
    case ColumnType::Guid: {
      const Guid& guid = As<Guid>(value);
      return std::vector<uint8_t>(guid.bytes.begin(), guid.bytes.end());
    }
    case ColumnType::Numeric:
      return EncodeNumeric(column, As<DecimalNumber>(value));
    case ColumnType::Text:
      return EncodeTextField(column, As<Text>(value));
    case ColumnType::Binary:
      return EncodeBinaryField(column, As<Binary>(value));
    default:
      RaiseTypeMismatch();
  }
}

std::vector<uint8_t> EncodeRow(const TableDefinition& table, std::span<const FieldBytes> fields) {
  std::vector<uint8_t> row;
  Append16(row, table.max_columns);
  AppendFixedArea(table, fields, row);
  AppendVariablePart(table, fields, row);
  AppendMask(table, fields, row);
  if (row.size() > kJet4.row.max_size) RaiseRecordTooLarge();
  return row;
}

}  // namespace rdv::jet
