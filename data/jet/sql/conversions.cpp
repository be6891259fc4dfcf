#include "data/jet/sql/conversions.h"

#include <optional>
#include <utility>

#include "data/jet/format/errors.h"
#include "data/jet/format/format.h"
#include "data/jet/sql/date_text.h"
#include "data/jet/sql/number_text.h"

namespace rdv::jet::sql {
namespace {

constexpr int kCurrencyDecimals = 4;

// How a text became a value of a column's type.
struct Conversion {
  enum Outcome { kDone, kMismatch, kOutOfRange } outcome = kMismatch;
  Value value;            // when done
  bool negative = false;  // when out of range
};

Conversion Done(Value value) {
  return {Conversion::kDone, std::move(value), false};
}

Conversion OutOfRange(const NumberText& number) {
  return {Conversion::kOutOfRange, {}, number.negative};
}

template <typename Integer>
Conversion ToInteger(const NumberText& number) {
  const auto value = NearestInteger(number);
  if (!value || !std::in_range<Integer>(*value)) return OutOfRange(number);
  return Done(static_cast<Integer>(*value));
}

Conversion ToCurrency(const NumberText& number) {
  const auto value = NearestInteger(number, kCurrencyDecimals);
  return value ? Done(Currency{*value}) : OutOfRange(number);
}

Conversion ToSingle(const NumberText& number) {
  const auto value = NearestSingle(number);
  return value ? Done(*value) : OutOfRange(number);
}

Conversion ToDouble(const NumberText& number) {
  const auto value = NearestDouble(number);
  return value ? Done(*value) : OutOfRange(number);
}

Conversion ToNumeric(const Column& column, const NumberText& number) {
  DecimalNumber decimal;
  decimal.scale = column.scale;
  const auto magnitude = ScaledMagnitude(number, column.scale);
  if (!magnitude) return OutOfRange(number);
  decimal.magnitude = *magnitude;
  // The digits that the definition allows, the decimals among them.
  const NumberText limit{false, "1", column.precision};
  const auto bound = ScaledMagnitude(limit, 0);
  if (bound && *magnitude >= *bound) return OutOfRange(number);
  decimal.negative = number.negative && *magnitude != Magnitude{};
  return Done(decimal);
}

Conversion ToDate(TextView text) {
  if (const auto days = ParseDateText(text)) return Done(DateTime{*days});
  const auto number = ParseNumberText(text);
  if (!number) return {};
  const auto days = NearestDouble(*number);
  return days && IsDateInRange(*days) ? Done(DateTime{*days}) : OutOfRange(*number);
}

Conversion ToBoolean(TextView text) {
  if (EqualsIgnoringCase(Trim(text), u"True")) return Done(true);
  if (EqualsIgnoringCase(Trim(text), u"False")) return Done(false);
  const auto number = ParseNumberText(text);
  return number ? Done(!number->IsZero()) : Conversion{};
}

int HexadecimalDigit(char16_t unit) {
  if (IsDigit(unit)) return unit - u'0';
  const char16_t letter = UpperCase(unit);
  return letter >= u'A' && letter <= u'F' ? letter - u'A' + 10 : -1;
}

// {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}, the braces may be absent.
Conversion ToGuid(TextView text) {
  constexpr TextView kShape = u"00000000-0000-0000-0000-000000000000";
  TextView digits = Trim(text);
  if (digits.size() == kShape.size() + 2 && digits.front() == u'{' && digits.back() == u'}')
    digits = digits.substr(1, kShape.size());
  if (digits.size() != kShape.size()) return {};
  Guid guid;
  size_t nibble = 0;
  for (size_t i = 0; i < kShape.size(); ++i) {
    if (kShape[i] == u'-') {
      if (digits[i] != u'-') return {};
      continue;
    }
    const int value = HexadecimalDigit(digits[i]);
    if (value < 0) return {};
    uint8_t& byte = guid.bytes[kGuidOrder[nibble++ / 2]];
    byte = static_cast<uint8_t>(byte << 4 | value);
  }
  return Done(guid);
}

// The text's own bytes.
Conversion ToBytes(TextView text) {
  Binary bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<uint8_t>(unit));
    bytes.push_back(static_cast<uint8_t>(unit >> 8));
  }
  return Done(std::move(bytes));
}

Conversion ToNumber(const Column& column, const NumberText& number) {
  switch (column.type) {
    case ColumnType::Byte:
      return ToInteger<uint8_t>(number);
    case ColumnType::Integer:
      return ToInteger<int16_t>(number);
    case ColumnType::Long:
      return ToInteger<int32_t>(number);
    case ColumnType::Currency:
      return ToCurrency(number);
    case ColumnType::Single:
      return ToSingle(number);
    case ColumnType::Double:
      return ToDouble(number);
    case ColumnType::Numeric:
      return ToNumeric(column, number);
    default:
      return {};
  }
}

// Most numbers are a few digits and nothing else, and most columns have whole ones: these take the
// short way. Nothing for all others.
std::optional<Value> FewDigits(const Column& column, TextView text) {
  constexpr size_t kFew = 4;
  if (text.empty() || text.size() > kFew) return std::nullopt;
  int16_t number = 0;
  for (const char16_t unit : text) {
    if (!IsDigit(unit)) return std::nullopt;
    number = static_cast<int16_t>(number * 10 + (unit - u'0'));
  }
  if (column.type == ColumnType::Integer) return number;
  if (column.type == ColumnType::Long) return int32_t{number};
  return std::nullopt;
}

Conversion Convert(const Column& column, TextView text) {
  switch (column.type) {
    case ColumnType::Boolean:
      return ToBoolean(text);
    case ColumnType::DateTime:
      return ToDate(text);
    case ColumnType::Guid:
      return ToGuid(text);
    case ColumnType::Text:
    case ColumnType::Memo:
      return Done(Text(text));
    case ColumnType::Binary:
    case ColumnType::Ole:
      return ToBytes(text);
    default:
      break;
  }
  if (auto value = FewDigits(column, text)) return Done(std::move(*value));
  const auto number = ParseNumberText(text);
  return number ? ToNumber(column, *number) : Conversion{};
}

Value NullFor(const Column& column) {
  return column.type == ColumnType::Boolean ? Value(false) : Value(Null{});
}

Value ToColumn(const Column& column, TextView text) {
  Conversion conversion = Convert(column, text);
  switch (conversion.outcome) {
    case Conversion::kDone:
      return std::move(conversion.value);
    case Conversion::kOutOfRange:
      RaiseOverflow();
    case Conversion::kMismatch:
      break;
  }
  RaiseTypeMismatch();
}

SearchValue SearchValueOf(const Column& column, TextView text) {
  Conversion conversion = Convert(column, text);
  switch (conversion.outcome) {
    case Conversion::kDone:
      return {.value = std::move(conversion.value)};
    case Conversion::kOutOfRange:
      return {.value = Null{}, .beyond = conversion.negative ? -1 : 1};
    case Conversion::kMismatch:
      break;
  }
  RaiseTypeMismatch();
}

// The decimals that the column's numbers have; nothing where they have any number of them.
std::optional<int> DecimalsOf(const Column& column) {
  switch (column.type) {
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
      return 0;
    case ColumnType::Currency:
      return kCurrencyDecimals;
    case ColumnType::Numeric:
      return column.scale;
    default:
      return std::nullopt;
  }
}

// A number beside true, which is -1, and false, which is 0.
SearchValue AmongBooleans(const NumberText& number) {
  const auto nearest = NearestInteger(number);
  const bool outside = !nearest || *nearest < -1 || *nearest > 0;
  const int beside = outside ? 0 : BesideScaled(number, 0);
  const bool below_true = !outside && *nearest == -1 && beside < 0;
  const bool above_false = !outside && *nearest == 0 && beside > 0;
  if (outside || below_true || above_false)
    return {.value = Null{}, .beyond = number.negative ? -1 : 1};
  return {.value = *nearest == -1, .beside = beside};
}

// Whether a literal is written as values of the column's type are.
bool IsWrittenLike(const Column& column, LiteralKind kind) {
  switch (column.type) {
    case ColumnType::Text:
    case ColumnType::Memo:
    case ColumnType::Guid:
    case ColumnType::Binary:
    case ColumnType::Ole:
      return kind == LiteralKind::Text;
    case ColumnType::DateTime:
      return kind == LiteralKind::Date || kind == LiteralKind::Number;
    default:
      return kind == LiteralKind::Number || kind == LiteralKind::Boolean;
  }
}

}  // namespace

Value ToColumn(const Column& column, const Argument& argument) {
  return argument ? ToColumn(column, TextView{*argument}) : NullFor(column);
}

Value ToColumn(const Column& column, const Literal& literal) {
  if (literal.kind == LiteralKind::Null) return NullFor(column);
  return ToColumn(column, TextView{literal.text});
}

Value ToColumn(const Column& column, const Value& value) {
  if (IsNull(value)) return NullFor(column);
  // A decimal number may have another scale.
  if (column.type != ColumnType::Numeric && HasTypeOf(column, value)) return value;
  if (const bool* flag = std::get_if<bool>(&value))
    return ToColumn(column, *flag ? TextView(u"-1") : TextView(u"0"));
  if (const auto* number = std::get_if<DecimalNumber>(&value))
    return ToColumn(column, TextView{ToDigits(*number)});
  if (std::holds_alternative<Guid>(value) || std::holds_alternative<Binary>(value))
    RaiseTypeMismatch();
  return ToColumn(column, TextView{ToText(value)});
}

SearchValue ToSearchValue(const Column& column, const Argument& argument) {
  return argument ? SearchValueOf(column, TextView{*argument}) : SearchValue{};
}

SearchValue ToSearchValue(const Column& column, const Literal& literal) {
  if (literal.kind == LiteralKind::Null) return {};
  if (!IsWrittenLike(column, literal.kind)) RaiseTypeMismatch();
  const auto number = ParseNumberText(literal.text);
  if (number && column.type == ColumnType::Boolean) return AmongBooleans(*number);
  SearchValue search = SearchValueOf(column, TextView{literal.text});
  const auto decimals = DecimalsOf(column);
  if (number && decimals && search.beyond == 0) search.beside = BesideScaled(*number, *decimals);
  return search;
}

Column ColumnFor(LiteralKind kind) {
  Column column;
  column.type = ColumnType::Text;
  if (kind == LiteralKind::Number) column.type = ColumnType::Double;
  if (kind == LiteralKind::Boolean) column.type = ColumnType::Boolean;
  if (kind == LiteralKind::Date) column.type = ColumnType::DateTime;
  return column;
}

}  // namespace rdv::jet::sql
