#include "data/jet/table/default_value.h"

#include <cmath>
#include <limits>
#include <optional>

#include "runtime/conversion.h"

namespace rdv::jet {
namespace {

template <typename Integer>
Value WholeNumber(double number) {
  const double rounded = std::nearbyint(number);
  const bool fits = rounded >= double{std::numeric_limits<Integer>::min()} &&
                    rounded <= double{std::numeric_limits<Integer>::max()};
  return fits ? Value(static_cast<Integer>(rounded)) : Value(Null());
}

Value CurrencyNumber(double number) {
  constexpr double kPerUnit = 10000;
  constexpr double kLargestAmount = 9.2e18;
  const double amount = std::nearbyint(number * kPerUnit);
  if (std::abs(amount) > kLargestAmount) return Null();
  return Currency{static_cast<int64_t>(amount)};
}

Value NumberDefault(const Column& column, TextView literal) {
  const std::optional<double> number = ParseNumber(literal);
  if (!number) return Null();
  switch (column.type) {
    case ColumnType::Byte:
      return WholeNumber<uint8_t>(*number);
    case ColumnType::Integer:
      return WholeNumber<int16_t>(*number);
    case ColumnType::Long:
      return WholeNumber<int32_t>(*number);
    case ColumnType::Currency:
      return CurrencyNumber(*number);
    case ColumnType::Single:
      return static_cast<float>(*number);
    case ColumnType::Double:
      return *number;
    default:
      return Null();
  }
}

bool BooleanDefault(TextView literal) {
  for (const TextView word : {u"yes", u"true", u"on"}) {
    if (EqualsIgnoringCase(literal, word)) return true;
  }
  const std::optional<double> number = ParseNumber(literal);
  return number && *number != 0;
}

// A quote within the text is doubled.
Value TextDefault(TextView literal) {
  const bool quoted = literal.size() >= 2 &&
                      (literal.front() == u'"' || literal.front() == u'\'') &&
                      literal.back() == literal.front();
  if (!quoted) return ParseNumber(literal) ? Value(Text(literal)) : Value(Null());
  const char16_t quote = literal.front();
  Text text;
  for (size_t i = 1; i + 1 < literal.size(); ++i) {
    text.push_back(literal[i]);
    const bool doubled = literal[i] == quote && literal[i + 1] == quote;
    if (doubled && i + 2 < literal.size()) ++i;
  }
  return text;
}

}  // namespace

Value DefaultValue(const Column& column) {
  TextView literal = Trim(column.default_value);
  if (literal.starts_with(u'=')) literal = Trim(literal.substr(1));
  if (column.type == ColumnType::Boolean) return BooleanDefault(literal);
  if (literal.empty()) return Null();
  if (column.IsText()) return TextDefault(literal);
  return NumberDefault(column, literal);
}

}  // namespace rdv::jet
