#include "data/jet/format/schema.h"

namespace rdv::jet {

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
