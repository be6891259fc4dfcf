#include <algorithm>
#include <cassert>
#include <cstring>

#include "data/jet/format/errors.h"
#include "data/jet/format/text_units.h"
#include "data/jet/rows/row_codec.h"

namespace rdv::jet {
namespace {

constexpr size_t kShortestCompressed = 3;  // units; compressing fewer saves nothing
constexpr size_t kOffsetSize = 2;          // of a variable column's place in the row

template <typename T>
const T& As(const Value& value) {
  const T* typed = std::get_if<T>(&value);
  if (typed == nullptr) RaiseTypeMismatch();
  return *typed;
}

void AppendNumeric(const Column& column, const DecimalNumber& number, FieldBuffer& to) {
  if (number.scale != column.scale) RaiseTypeMismatch();
  uint8_t* bytes = to.Extend(kNumericSize);
  bytes[0] = number.negative ? kNumericNegative : uint8_t{0};
  for (size_t i = 0; i < number.magnitude.size(); ++i)
    Store32(&bytes[1 + 4 * i], number.magnitude[i]);
}

void AppendEncodedText(TextView text, bool compressible, FieldBuffer& to) {
  if (compressible && text.size() >= kShortestCompressed) {
    uint8_t* bytes = to.Extend(kUnitSize + text.size());
    Store16(bytes, kCompressedMark);
    if (NarrowUnits(text.data(), text.size(), bytes + kUnitSize)) return;
    to.TakeBack(kUnitSize + text.size());
  }
  // Such a text would be taken for a compressed one.
  if (!text.empty() && text.front() == kCompressedMark) RaiseUnstorableText();
  uint8_t* bytes = to.Extend(kUnitSize * text.size());
  for (size_t i = 0; i < text.size(); ++i) Store16(bytes + kUnitSize * i, text[i]);
}

void AppendTextField(const Column& column, const Text& text, FieldBuffer& to) {
  if (text.size() * kUnitSize > column.length) RaiseFieldTooSmall();
  const size_t start = to.Size();
  AppendEncodedText(text, column.compressible && !column.fixed, to);
  if (!column.fixed) return;
  while (to.Size() - start + kUnitSize <= column.length) Store16(to.Extend(kUnitSize), u' ');
  // Half a unit, in a definition that no sound file has.
  if (to.Size() - start < column.length) *to.Extend(1) = 0;
}

void AppendBinaryField(const Column& column, const Binary& binary, FieldBuffer& to) {
  if (binary.size() > column.length) RaiseFieldTooSmall();
  std::ranges::copy(binary, to.Extend(binary.size()));
  if (column.fixed) {
    const size_t rest = column.length - binary.size();
    std::fill_n(to.Extend(rest), rest, uint8_t{0});
  }
}

// A value that is not Null; a Boolean has no bytes.
void AppendField(const Column& column, const Value& value, FieldBuffer& to) {
  switch (column.type) {
    case ColumnType::Boolean:
      return;
    case ColumnType::Byte:
      *to.Extend(1) = As<uint8_t>(value);
      return;
    case ColumnType::Integer:
      return Store16(to.Extend(2), static_cast<uint16_t>(As<int16_t>(value)));
    case ColumnType::Long:
      return Store32(to.Extend(4), static_cast<uint32_t>(As<int32_t>(value)));
    case ColumnType::Currency:
      return Store64(to.Extend(8), static_cast<uint64_t>(As<Currency>(value).ten_thousandths));
    case ColumnType::Single:
      return StoreFloat(to.Extend(4), As<float>(value));
    case ColumnType::Double:
      return StoreDouble(to.Extend(8), As<double>(value));
    case ColumnType::DateTime:
      return StoreDouble(to.Extend(8), As<DateTime>(value).days);
    case ColumnType::Guid:
      std::ranges::copy(As<Guid>(value).bytes, to.Extend(kGuidSize));
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

// Most fields are a number of two or four bytes.
void CopyField(Bytes field, uint8_t* to) {
  if (field.size() == sizeof(uint16_t)) {
    std::memcpy(to, field.data(), sizeof(uint16_t));
  } else if (field.size() == sizeof(uint32_t)) {
    std::memcpy(to, field.data(), sizeof(uint32_t));
  } else {
    std::ranges::copy(field, to);
  }
}

// Where the parts of a row lie.
struct RowLayout {
  size_t data = 0;         // of the variable columns
  size_t end_of_data = 0;  // where that is told
  size_t count = 0;        // of the variable columns
  size_t mask = 0;
  size_t size = 0;
};

RowLayout LayoutOf(const TableDefinition& table, const RowFields& fields) {
  RowLayout layout;
  layout.data = kJet4.row.count_size;
  size_t data_size = 0;
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    if (column.fixed) {
      const size_t end = kJet4.row.count_size + column.fixed_offset + FixedSize(column);
      layout.data = std::max(layout.data, end);
    } else if (const auto field = fields[i]) {
      data_size += field->size();
    }
  }
  layout.end_of_data = layout.data + data_size;
  layout.count = layout.mask = layout.end_of_data;
  if (table.variable_columns > 0) {
    layout.count += kOffsetSize * (table.variable_columns + size_t{1});
    layout.mask = layout.count + kOffsetSize;
  }
  layout.size = layout.mask + (table.max_columns + size_t{7}) / 8;
  return layout;
}

// Their data, and from its end backwards: where it ends, where each starts, their number. The place
// for where a column starts holds its size at first: the columns may come in any order.
void StoreVariableColumns(const TableDefinition& table, const RowFields& fields,
                          const RowLayout& layout, std::vector<uint8_t>& row) {
  if (table.variable_columns == 0) return;
  const auto place = [&](size_t index) {
    assert(index < table.variable_columns);
    return &row[layout.count - (index + 1) * kOffsetSize];
  };
  const auto for_each_field = [&](auto action) {
    for (size_t i = 0; i < table.columns.size(); ++i) {
      const Column& column = table.columns[i];
      // A Boolean's value is its bit, wherever the definition says that it lies.
      if (column.fixed || column.type == ColumnType::Boolean) continue;
      if (const auto field = fields[i]) action(place(column.variable_index), *field);
    }
  };
  Store16(&row[layout.count], table.variable_columns);
  Store16(&row[layout.end_of_data], static_cast<uint16_t>(layout.end_of_data));
  for_each_field(
      [](uint8_t* at, Bytes field) { Store16(at, static_cast<uint16_t>(field.size())); });
  size_t start = layout.data;
  for (size_t index = 0; index < table.variable_columns; ++index) {
    const size_t size = Load16(place(index));
    Store16(place(index), static_cast<uint16_t>(start));
    start += size;
  }
  for_each_field(
      [&](const uint8_t* at, Bytes field) { std::ranges::copy(field, &row[Load16(at)]); });
}

}  // namespace

std::vector<uint8_t> EncodeText(TextView text, bool compressible) {
  FieldBuffer bytes(kUnitSize * (text.size() + 1));
  AppendEncodedText(text, compressible, bytes);
  return {bytes.At(0), bytes.At(bytes.Size())};
}

void RowFields::SetPlace(size_t column, size_t start) {
  places_[column] = {.start = static_cast<uint32_t>(start),
                     .size = static_cast<uint32_t>(bytes_.Size() - start),
                     .present = true};
}

void RowFields::Set(size_t column, Bytes stored) {
  const size_t start = bytes_.Size();
  CopyField(stored, bytes_.Extend(stored.size()));
  SetPlace(column, start);
}

void RowFields::Encode(size_t column, const Column& definition, const Value& value) {
  if (IsStoredAsNull(definition, value)) return SetNull(column);
  const size_t start = bytes_.Size();
  AppendField(definition, value, bytes_);
  SetPlace(column, start);
}

std::vector<uint8_t> EncodeRow(const TableDefinition& table, const RowFields& fields) {
  std::vector<uint8_t> row;
  EncodeRow(table, fields, row);
  return row;
}

void EncodeRow(const TableDefinition& table, const RowFields& fields, std::vector<uint8_t>& row) {
  assert(fields.Count() == table.columns.size());
  const RowLayout layout = LayoutOf(table, fields);
  if (layout.size > kJet4.row.max_size) RaiseRecordTooLarge();
  row.assign(layout.size, 0);
  Store16(row.data(), table.max_columns);
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const auto field = fields[i];
    if (!field) continue;
    const Column& column = table.columns[i];
    row[layout.mask + column.number / 8] |= static_cast<uint8_t>(1 << (column.number % 8));
    if (!column.fixed) continue;
    assert(field->size() == FixedSize(column));
    CopyField(*field, row.data() + kJet4.row.count_size + column.fixed_offset);
  }
  StoreVariableColumns(table, fields, layout, row);
}

}  // namespace rdv::jet
