#include "data/jet/rows/row_codec.h"

#include <algorithm>
#include <array>
#include <limits>

#include "data/jet/rows/data_page.h"
#include "data/jet/rows/long_value.h"

namespace rdv::jet {
namespace {

constexpr uint8_t kNoJump = 0xFF;
constexpr size_t kJumpDistance = 256;  // what a jump adds to the offsets behind it
constexpr size_t kBitsPerByte = 8;
constexpr size_t kNumericWords = 4;
// What one walk may read, in sizes of the file: it may grow meanwhile, and a condition and an order
// may read each value again.
constexpr uint64_t kRowsOfWalk = 2;
constexpr uint64_t kValuesOfWalk = 8;

uint64_t SizeOf(const FileReader& file) {
  return uint64_t{file.PageCount()} * file.Layout().page_size;
}

size_t MaskSize(size_t column_count) {
  return (column_count + kBitsPerByte - 1) / kBitsPerByte;
}

DecimalNumber LoadNumeric(const uint8_t* from, uint8_t scale) {
  DecimalNumber number;
  number.negative = (from[0] & kNumericNegative) != 0;
  number.scale = scale;
  for (size_t i = 0; i < kNumericWords; ++i) number.magnitude[i] = Load32(from + 1 + 4 * i);
  return number;
}

Guid LoadGuid(const uint8_t* from) {
  Guid guid;
  std::copy_n(from, guid.bytes.size(), guid.bytes.begin());
  return guid;
}

void AppendHex(uint8_t byte, const char* digits, Text& to) {
  to.push_back(static_cast<char16_t>(digits[byte >> 4]));
  to.push_back(static_cast<char16_t>(digits[byte & 0x0F]));
}

}  // namespace

void AppendGuid(const uint8_t* bytes, Text& to) {
  to.push_back(u'{');
  for (size_t i = 0; i < kGuidOrder.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) to.push_back(u'-');
    AppendHex(bytes[kGuidOrder[i]], "0123456789ABCDEF", to);
  }
  to.push_back(u'}');
}

void AppendBinary(Bytes bytes, Text& to) {
  for (const uint8_t byte : bytes) AppendHex(byte, "0123456789abcdef", to);
}

RowView::RowView(const FileReader& file, const TableDefinition& table)
    : file_(&file),
      format_(&file.Layout()),
      rows_left_(kRowsOfWalk * SizeOf(file)),
      values_left_(kValuesOfWalk * SizeOf(file)),
      first_variable_(std::numeric_limits<size_t>::max()) {
  for (const Column& column : table.columns) {
    if (!column.fixed) first_variable_ = std::min<size_t>(first_variable_, column.number);
  }
}

inline size_t RowView::LoadOffset(size_t position) const {
  return format_->IsJet4() ? Load16(&row_[position]) : row_[position];
}

// Where variable column `index` starts; behind the last one, the end of the data. ParseVariablePart
// has seen that the offsets lie in the row.
inline size_t RowView::VariableOffset(size_t index) const {
  if (format_->IsJet4()) return Load16(row_.data() + offsets_end_ - (index + 1) * sizeof(uint16_t));
  size_t offset = row_[offsets_end_ - (index + 1)];
  for (size_t jump = 1; jump <= jumps_; ++jump) {
    const uint8_t first_behind = row_[jumps_end_ - jump];
    if (first_behind == kNoJump || first_behind > index) break;
    offset += kJumpDistance;
  }
  return offset;
}

void RowView::Reset(RowId id, Bytes row) {
  if (row.size() > rows_left_) file_->Damaged(u"More rows are led to than the file has");
  rows_left_ -= row.size();
  id_ = id;
  row_ = row;
  const size_t count_size = format_->row.count_size;
  if (row.size() < count_size) DamagedRow();
  column_count_ = format_->IsJet4() ? Load16(row.data()) : row[0];
  const size_t mask_size = MaskSize(column_count_);
  if (row.size() < count_size + mask_size) DamagedRow();
  mask_ = row.size() - mask_size;
  variable_count_ = 0;
  end_of_data_ = mask_;
  if (first_variable_ < column_count_) ParseVariablePart();
}

// From the end of the row backwards: count, [jumps,] offsets, end of data.
void RowView::ParseVariablePart() {
  const size_t size = format_->row.offset_size;
  const size_t start = format_->row.count_size;
  if (mask_ < start + size) DamagedRow();
  offsets_end_ = mask_ - size;
  variable_count_ = LoadOffset(offsets_end_);
  if (!format_->IsJet4()) {
    jumps_ = (row_.size() - 1) / kJumpDistance;
    if (offsets_end_ < start + jumps_) DamagedRow();
    jumps_end_ = offsets_end_;
    offsets_end_ -= jumps_;
  }
  const size_t table_size = (variable_count_ + 1) * size;  // with the end of data
  if (offsets_end_ < start + table_size) DamagedRow();
  end_of_data_ = VariableOffset(variable_count_);
  if (end_of_data_ > offsets_end_ - table_size) DamagedRow();
}

// Inline for what this file has of it.
inline std::optional<Bytes> RowView::StoredField(const Column& column) const {
  if (!Has(column)) return std::nullopt;
  if (column.type == ColumnType::Boolean) return Bytes();
  if (column.fixed) {
    const size_t size = FixedSize(column);
    return Bytes(FixedField(column, size), size);
  }
  if (column.variable_index >= variable_count_) return std::nullopt;
  const size_t start = VariableOffset(column.variable_index);
  const size_t end = VariableOffset(column.variable_index + size_t{1});
  if (start < format_->row.count_size || start > end || end > end_of_data_) DamagedField(column);
  return row_.subspan(start, end - start);
}

std::optional<Bytes> RowView::Field(const Column& column) const {
  return StoredField(column);
}

bool RowView::IsNull(const Column& column) const {
  return column.type != ColumnType::Boolean && !Field(column);
}

// The field, paid for before its value is fetched.
Bytes RowView::LongField(Bytes field) const {
  const uint64_t size = ParseLongValue(*file_, field).length;
  if (size > values_left_) file_->Damaged(u"More long values are led to than the file has");
  values_left_ -= size;
  file_->Charge(size);
  return field;
}

const uint8_t* RowView::Require(const Column& column, Bytes field) const {
  if (field.size() != FixedSize(column)) DamagedField(column);
  return field.data();
}

// Whole numbers, which most columns hold, take the short way.
void RowView::Read(const Column& column, Value& value) const {
  if (IsFixedNumber(column)) {
    if (!Has(column)) {
      value = Null();
    } else if (column.type == ColumnType::Integer) {
      value = static_cast<int16_t>(FixedNumber(column));
    } else {
      value = FixedNumber(column);
    }
    return;
  }
  const std::optional<Bytes> field = StoredField(column);
  if (column.type == ColumnType::Boolean) {
    value = field.has_value();
  } else if (!field) {
    value = Null();
  } else if (column.type == ColumnType::Text) {
    file_->AppendText(*field, value.emplace<Text>());
  } else {
    value = ValueOf(column, *field);
  }
}

Value RowView::ValueOf(const Column& column, Bytes field) const {
  switch (column.type) {
    case ColumnType::Byte:
      return *Require(column, field);
    case ColumnType::Integer:
      return static_cast<int16_t>(Load16(Require(column, field)));
    case ColumnType::Long:
      return static_cast<int32_t>(Load32(Require(column, field)));
    case ColumnType::Currency:
      return Currency{static_cast<int64_t>(Load64(Require(column, field)))};
    case ColumnType::Single:
      return LoadFloat(Require(column, field));
    case ColumnType::Double:
      return LoadDouble(Require(column, field));
    case ColumnType::DateTime:
      return DateTime{LoadDouble(Require(column, field))};
    case ColumnType::Guid:
      return LoadGuid(Require(column, field));
    case ColumnType::Numeric:
      return LoadNumeric(Require(column, field), column.scale);
    case ColumnType::Text:
      return file_->DecodeText(field);
    case ColumnType::Memo:
      return ReadMemo(*file_, LongField(field));
    case ColumnType::Ole:
      return ReadLongValue(*file_, LongField(field));
    default:
      return Binary(field.begin(), field.end());
  }
}

bool RowView::Holds(const Column& column, const Value& value) const {
  if (!IsFixedNumber(column)) return Get(column) == value;
  if (!Has(column)) return rdv::IsNull(value);
  const int32_t number = FixedNumber(column);
  if (column.type == ColumnType::Long) {
    const auto* held = std::get_if<int32_t>(&value);
    return held != nullptr && *held == number;
  }
  const auto* held = std::get_if<int16_t>(&value);
  return held != nullptr && *held == number;
}

std::optional<int32_t> RowView::WholeNumber(const Column& column) const {
  if (!Has(column)) return std::nullopt;
  if (column.fixed) return FixedNumber(column);
  const std::optional<Bytes> field = Field(column);
  if (!field) return std::nullopt;
  const uint8_t* bytes = Require(column, *field);
  const bool is_short = column.type == ColumnType::Integer;
  return is_short ? static_cast<int16_t>(Load16(bytes)) : static_cast<int32_t>(Load32(bytes));
}

void RowView::AppendDigits(int32_t number, Text& to) {
  std::array<char16_t, std::numeric_limits<int32_t>::digits10 + 2> digits;
  char16_t* first = digits.data() + digits.size();
  auto rest = static_cast<uint32_t>(number);
  if (number < 0) rest = ~rest + 1;
  do {
    *--first = static_cast<char16_t>(u'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (number < 0) *--first = u'-';
  to.append(first, static_cast<size_t>(digits.data() + digits.size() - first));
}

void RowView::AppendOtherText(const Column& column, Text& to) const {
  const std::optional<Bytes> field = StoredField(column);
  if (column.type == ColumnType::Boolean) {
    to += field ? TextView(u"True") : TextView(u"False");
    return;
  }
  if (!field) return;
  switch (column.type) {
    case ColumnType::Text:
      return file_->AppendText(*field, to);
    case ColumnType::Guid:
      return AppendGuid(Require(column, *field), to);
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Byte:
    case ColumnType::Currency:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::Numeric:
    case ColumnType::Memo:
      to += ToText(Get(column));
      return;
    case ColumnType::Ole:
      return AppendBinary(ReadLongValue(*file_, LongField(*field)), to);
    default:
      return AppendBinary(*field, to);
  }
}

void RowView::DamagedRow() const {
  file_->DamagedPage(
      id_.page, u"holds a row, number " + Decimal(id_.row) + u", whose parts do not fit into it");
}

void RowView::DamagedField(const Column& column) const {
  file_->DamagedPage(id_.page, u"holds a row, number " + Decimal(id_.row) +
                                   u", with a field outside of it or of the wrong size: " +
                                   column.name);
}

}  // namespace rdv::jet
