#include "runtime/value.h"

#include <algorithm>
#include <charconv>
#include <type_traits>

#include "runtime/conversion.h"
#include "runtime/error.h"

namespace rdv {
namespace {

template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

template <typename Real>
Text ShortestText(Real number) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return Text(buffer, result.ptr);
}

double ToNumber(const Value& value) {
  return std::visit(
      Overloaded{
          [](Null) -> double { Raise(LanguageError::InvalidUseOfNull); },
          [](bool flag) -> double { return flag ? -1 : 0; },
          [](Currency amount) -> double {
            return static_cast<double>(amount.ten_thousandths) / 10000;
          },
          [](DateTime date) -> double { return date.days; },
          [](const DecimalNumber& number) -> double { return CDbl(ToDigits(number)); },
          [](const Text& text) -> double { return CDbl(text); },
          [](const Guid&) -> double { Raise(LanguageError::TypeMismatch); },
          [](const Binary&) -> double { Raise(LanguageError::TypeMismatch); },
          [](auto number) -> double { return static_cast<double>(number); },
      },
      value);
}

Text WithDecimals(std::string digits, size_t scale, bool negative) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) digits.insert(digits.size() - scale, ".");
  if (negative) digits.insert(0, "-");
  return Text(digits.begin(), digits.end());
}

}  // namespace

int16_t ToInteger(const Value& value) {
  return RoundToInt16(ToNumber(value));
}
int32_t ToLong(const Value& value) {
  return RoundToInt32(ToNumber(value));
}

bool ToBoolean(const Value& value) {
  if (const Text* text = std::get_if<Text>(&value)) {
    if (EqualsIgnoringCase(*text, u"True")) return true;
    if (EqualsIgnoringCase(*text, u"False")) return false;
  }
  return ToNumber(value) != 0;
}

Text ToText(const Value& value) {
  return std::visit(Overloaded{
                        [](Null) -> Text { Raise(LanguageError::InvalidUseOfNull); },
                        [](bool flag) -> Text { return flag ? u"True" : u"False"; },
                        [](Currency amount) -> Text {
                          Text digits = ToDigits(amount);
                          while (digits.back() == u'0') digits.pop_back();
                          if (digits.back() == u'.') digits.pop_back();
                          return digits;
                        },
                        [](const DecimalNumber& number) -> Text { return ToDigits(number); },
                        [](DateTime date) -> Text { return ShortestText(date.days); },
                        [](float number) -> Text { return ShortestText(number); },
                        [](double number) -> Text { return ShortestText(number); },
                        [](const Text& text) -> Text { return text; },
                        [](const Guid&) -> Text { Raise(LanguageError::TypeMismatch); },
                        [](const Binary&) -> Text { Raise(LanguageError::TypeMismatch); },
                        [](auto number) -> Text { return Decimal(number); },
                    },
                    value);
}

Text ToDigits(const DecimalNumber& number) {
  std::array<uint32_t, 4> rest = number.magnitude;
  std::string digits;
  while (std::any_of(rest.begin(), rest.end(), [](uint32_t word) { return word != 0; })) {
    uint64_t remainder = 0;
    for (uint32_t& word : rest) {
      const uint64_t part = (remainder << 32) | word;
      word = static_cast<uint32_t>(part / 10);
      remainder = part % 10;
    }
    digits.push_back(static_cast<char>('0' + remainder));
  }
  if (digits.empty()) digits = "0";
  std::reverse(digits.begin(), digits.end());
  return WithDecimals(std::move(digits), number.scale, number.negative);
}

Text ToDigits(Currency amount) {
  const bool negative = amount.ten_thousandths < 0;
  const auto bits = static_cast<uint64_t>(amount.ten_thousandths);
  return WithDecimals(std::to_string(negative ? ~bits + 1 : bits), 4, negative);
}

}  // namespace rdv
