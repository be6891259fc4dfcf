#include "data/jet/sql/value_order.h"

#include <compare>
#include <optional>

#include "data/jet/format/errors.h"
#include "data/jet/format/format.h"
#include "data/jet/index/index_key.h"
#include "data/jet/sql/number_text.h"

namespace rdv::jet::sql {
namespace {

int Sign(std::weak_ordering order) {
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int CompareNumbers(double left, double right) {
  return Sign(std::weak_order(left, right));
}

// As a number, which all but texts, GUIDs and bytes are.
std::optional<double> NumberOf(const Value& value) {
  if (IsNull(value) || std::holds_alternative<Text>(value) || std::holds_alternative<Guid>(value) ||
      std::holds_alternative<Binary>(value)) {
    return std::nullopt;
  }
  if (const bool* flag = std::get_if<bool>(&value)) return *flag ? -1 : 0;
  const auto number = ParseNumberText(ToText(value));
  return number ? NearestDouble(*number) : std::nullopt;
}

int CompareDecimals(const DecimalNumber& left, const DecimalNumber& right) {
  const auto sign = [](const DecimalNumber& number) {
    if (number.magnitude == Magnitude{}) return 0;
    return number.negative ? -1 : 1;
  };
  if (sign(left) != sign(right)) return sign(left) < sign(right) ? -1 : 1;
  const int order = Sign(left.magnitude <=> right.magnitude);
  return left.negative ? -order : order;
}

// In the order in which they are written.
int CompareGuids(const Guid& left, const Guid& right) {
  for (const uint8_t place : kGuidOrder) {
    if (left.bytes[place] != right.bytes[place])
      return left.bytes[place] < right.bytes[place] ? -1 : 1;
  }
  return 0;
}

struct SameTypeComparison {
  int operator()(Null, Null) const { return 0; }
  int operator()(bool left, bool right) const { return int{right} - int{left}; }
  int operator()(Currency left, Currency right) const {
    return Sign(left.ten_thousandths <=> right.ten_thousandths);
  }
  int operator()(DateTime left, DateTime right) const {
    return CompareNumbers(left.days, right.days);
  }
  int operator()(const DecimalNumber& left, const DecimalNumber& right) const {
    if (left.scale == right.scale) return CompareDecimals(left, right);
    return CompareNumbers(NumberOf(left).value_or(0), NumberOf(right).value_or(0));
  }
  int operator()(const Guid& left, const Guid& right) const { return CompareGuids(left, right); }
  int operator()(const Text& left, const Text& right) const { return CompareTexts(left, right); }
  int operator()(const Binary& left, const Binary& right) const { return Sign(left <=> right); }
  template <typename Number>
  int operator()(Number left, Number right) const {
    return Sign(std::weak_order(left, right));
  }
  template <typename Left, typename Right>
  int operator()(const Left&, const Right&) const {
    RaiseTypeMismatch();
  }
};

}  // namespace

int CompareValues(const Value& left, const Value& right) {
  if (left.index() == right.index()) return std::visit(SameTypeComparison{}, left, right);
  const auto left_number = NumberOf(left);
  const auto right_number = NumberOf(right);
  if (!left_number || !right_number) RaiseTypeMismatch();
  return CompareNumbers(*left_number, *right_number);
}

int CompareForOrder(const Value& left, const Value& right) {
  if (IsNull(left) || IsNull(right)) return int{IsNull(right)} - int{IsNull(left)};
  return CompareValues(left, right);
}

}  // namespace rdv::jet::sql
