#include "data/jet/format/schema.h"

#include "data/jet/format/bytes.h"
#include "data/jet/format/format.h"

namespace rdv::jet {

RowId LoadRowPointer(const uint8_t* from) {
  return {.page = Load24(from + 1), .row = from[0]};
}

void StoreRowPointer(uint8_t* to, RowId row) {
  to[0] = row.row;
  Store24(to + 1, row.page);
}

size_t FixedSize(const Column& column) {
  switch (column.type) {
    case ColumnType::Boolean:
      return 0;
    case ColumnType::Byte:
      return 1;
    case ColumnType::Integer:
      return 2;
    case ColumnType::Long:
    case ColumnType::Single:
      return 4;
    case ColumnType::Currency:
    case ColumnType::Double:
    case ColumnType::DateTime:
      return 8;
    case ColumnType::Guid:
      return kGuidSize;
    case ColumnType::Numeric:
      return kNumericSize;
    default:
      return column.length;
  }
}

const Column* TableDefinition::FindColumn(TextView column_name) const {
  for (const Column& column : columns) {
    if (EqualsIgnoringCase(column.name, column_name)) return &column;
  }
  return nullptr;
}

bool HasTypeOf(const Column& column, const Value& value) {
  switch (column.type) {
    case ColumnType::Boolean:
      return std::holds_alternative<bool>(value);
    case ColumnType::Byte:
      return std::holds_alternative<uint8_t>(value);
    case ColumnType::Integer:
      return std::holds_alternative<int16_t>(value);
    case ColumnType::Long:
      return std::holds_alternative<int32_t>(value);
    case ColumnType::Currency:
      return std::holds_alternative<Currency>(value);
    case ColumnType::Single:
      return std::holds_alternative<float>(value);
    case ColumnType::Double:
      return std::holds_alternative<double>(value);
    case ColumnType::DateTime:
      return std::holds_alternative<DateTime>(value);
    case ColumnType::Numeric:
      return std::holds_alternative<DecimalNumber>(value);
    case ColumnType::Guid:
      return std::holds_alternative<Guid>(value);
    case ColumnType::Text:
    case ColumnType::Memo:
      return std::holds_alternative<Text>(value);
    default:
      return std::holds_alternative<Binary>(value);
  }
}

}  // namespace rdv::jet
