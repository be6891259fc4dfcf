#include <algorithm>

#include "data/jet/errors.h"
#include "data/jet/row_codec.h"

namespace rdv::jet {
namespace {

constexpr size_t kShortestCompressed = 3;  // units; compressing fewer saves nothing
constexpr char16_t kLastOneByteUnit = 0xFF;
constexpr char16_t kCompressedMarkUnit = 0xFEFF;
constexpr size_t kUnitSize = sizeof(char16_t);
constexpr uint8_t kBlank[] = {' ', 0};
constexpr size_t kTypicalRow = 256;  // what is set aside for one at first

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

// Room for `size` more bytes at the end.
uint8_t* Extend(std::vector<uint8_t>& to, size_t size) {
  const size_t old_size = to.size();
  to.resize(old_size + size);
  return to.data() + old_size;
}

void AppendNumeric(const Column& column, const DecimalNumber& number, std::vector<uint8_t>& to) {
  if (number.scale != column.scale) RaiseTypeMismatch();
  uint8_t* bytes = Extend(to, kNumericSize);
  bytes[0] = number.negative ? kNumericNegative : uint8_t{0};
  for (size_t i = 0; i < number.magnitude.size(); ++i)
    Store32(&bytes[1 + 4 * i], number.magnitude[i]);
}

void AppendEncodedText(TextView text, bool compressible, std::vector<uint8_t>& to) {
  if (compressible && CanBeCompressed(text)) {
    uint8_t* bytes = Extend(to, kUnitSize + text.size());
    Store16(bytes, kCompressedMarkUnit);
    std::ranges::transform(text, bytes + kUnitSize,
                           [](char16_t unit) { return static_cast<uint8_t>(unit); });
    return;
  }
  // Such a text would be taken for a compressed one.
  if (!text.empty() && text.front() == kCompressedMarkUnit) RaiseUnstorableText();
  uint8_t* bytes = Extend(to, kUnitSize * text.size());
  for (size_t i = 0; i < text.size(); ++i) Store16(bytes + kUnitSize * i, text[i]);
}

void AppendTextField(const Column& column, const Text& text, std::vector<uint8_t>& to) {
  if (text.size() * kUnitSize > column.length) RaiseFieldTooSmall();
  const size_t start = to.size();
  AppendEncodedText(text, column.compressible && !column.fixed, to);
  if (column.fixed) {
    while (to.size() - start < column.length) to.insert(to.end(), kBlank, kBlank + kUnitSize);
  }
}

void AppendBinaryField(const Column& column, const Binary& binary, std::vector<uint8_t>& to) {
  if (binary.size() > column.length) RaiseFieldTooSmall();
  to.insert(to.end(), binary.begin(), binary.end());
  if (column.fixed) Extend(to, column.length - binary.size());
}

// A value that is not Null; a Boolean has no bytes.
void AppendField(const Column& column, const Value& value, std::vector<uint8_t>& to) {
  switch (column.type) {
    case ColumnType::Boolean:
      return;
    case ColumnType::Byte:
      return to.push_back(As<uint8_t>(value));
    case ColumnType::Integer:
      return Store16(Extend(to, 2), static_cast<uint16_t>(As<int16_t>(value)));
    case ColumnType::Long:
      return Store32(Extend(to, 4), static_cast<uint32_t>(As<int32_t>(value)));
    case ColumnType::Currency:
      return Store64(Extend(to, 8), static_cast<uint64_t>(As<Currency>(value).ten_thousandths));
    case ColumnType::Single:
      return StoreFloat(Extend(to, 4), As<float>(value));
    case ColumnType::Double:
      return StoreDouble(Extend(to, 8), As<double>(value));
    case ColumnType::DateTime:
      return StoreDouble(Extend(to, 8), As<DateTime>(value).days);
    case ColumnType::Guid:
      std::ranges::copy(As<Guid>(value).bytes, Extend(to, kGuidSize));
      return;
    case ColumnType::Numeric:
      return AppendNumeric(column, As<DecimalNumber>(value), to);
    case ColumnType::Text:
      return AppendTextField(column, As<Text>(value), to);
    case ColumnType::Binary:
      return AppendBinaryField(column, As<Binary>(value), to);
    default:
      RaiseTypeMismatch();
  }
}

bool IsStoredAsNull(const Column& column, const Value& value) {
  if (IsNull(value)) return true;
  return column.type == ColumnType::Boolean && !As<bool>(value);
}

// Copies the fixed columns behind the column count.
void AppendFixedArea(const TableDefinition& table, const RowFields& fields,
                     std::vector<uint8_t>& row) {
  size_t size = 0;
  for (const Column& column : table.columns) {
    if (column.fixed) size = std::max(size, column.fixed_offset + FixedSize(column));
  }
  uint8_t* area = Extend(row, size);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    if (!column.fixed) continue;
    if (const auto field = fields[i]) std::ranges::copy(*field, area + column.fixed_offset);
  }
}

void AppendVariablePart(const TableDefinition& table, const RowFields& fields,
                        std::vector<uint8_t>& row) {
  if (table.variable_columns == 0) return;
  std::vector<std::optional<Bytes>> by_index(table.variable_columns);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    if (!column.fixed) by_index[column.variable_index] = fields[i];
  }
  std::vector<size_t> offsets;
  offsets.reserve(by_index.size());
  for (const std::optional<Bytes>& field : by_index) {
    offsets.push_back(row.size());
    if (field) row.insert(row.end(), field->begin(), field->end());
  }
  if (row.size() > kJet4.row.max_size) RaiseRecordTooLarge();
  Append16(row, row.size());
  for (auto offset = offsets.rbegin(); offset != offsets.rend(); ++offset) Append16(row, *offset);
  Append16(row, offsets.size());
}

void AppendMask(const TableDefinition& table, const RowFields& fields, std::vector<uint8_t>& row) {
  uint8_t* mask = Extend(row, (table.max_columns + size_t{7}) / 8);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const size_t number = table.columns[i].number;
    if (fields[i]) mask[number / 8] |= static_cast<uint8_t>(1 << (number % 8));
  }
}

}  // namespace

std::vector<uint8_t> EncodeText(TextView text, bool compressible) {
  std::vector<uint8_t> bytes;
  AppendEncodedText(text, compressible, bytes);
  return bytes;
}

std::optional<Bytes> RowFields::operator[](size_t column) const {
  const Place& place = places_[column];
  if (!place.present) return std::nullopt;
  return Bytes(bytes_).subspan(place.start, place.size);
}

void RowFields::Set(size_t column, Bytes stored) {
  places_[column] = {.start = bytes_.size(), .size = stored.size(), .present = true};
  bytes_.insert(bytes_.end(), stored.begin(), stored.end());
}

void RowFields::Encode(size_t column, const Column& definition, const Value& value) {
  const size_t start = bytes_.size();
  const bool present = !IsStoredAsNull(definition, value);
  if (present) AppendField(definition, value, bytes_);
  places_[column] = {.start = start, .size = bytes_.size() - start, .present = present};
}

std::vector<uint8_t> EncodeRow(const TableDefinition& table, const RowFields& fields) {
  std::vector<uint8_t> row;
  row.reserve(kTypicalRow);
  Append16(row, table.max_columns);
  AppendFixedArea(table, fields, row);
  AppendVariablePart(table, fields, row);
  AppendMask(table, fields, row);
  if (row.size() > kJet4.row.max_size) RaiseRecordTooLarge();
  return row;
}

}  // namespace rdv::jet
