#include "runtime/conversion.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

#include "runtime/error.h"

namespace rdv {
namespace {

// sign? (digits (. digits?)? | . digits) ((e|d) sign? digits)?
bool IsNumberShape(TextView text) {
  size_t i = 0;
  const auto digits = [&] {
    const size_t start = i;
    while (i < text.size() && IsDigit(text[i])) ++i;
    return i - start;
  };
  const auto sign = [&] {
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) ++i;
  };
  sign();
  size_t mantissa = digits();
  if (i < text.size() && text[i] == u'.') {
    ++i;
    mantissa += digits();
  }
  if (mantissa == 0) return false;
  if (i < text.size() && (UpperCase(text[i]) == u'E' || UpperCase(text[i]) == u'D')) {
    ++i;
    sign();
    if (digits() == 0) return false;
  }
  return i == text.size();
}

template <typename Integer>
Integer RoundInRange(double number) {
  const double rounded = std::nearbyint(number);
  if (!(rounded >= std::numeric_limits<Integer>::min() &&
        rounded <= std::numeric_limits<Integer>::max())) {
    Raise(LanguageError::Overflow);
  }
  return static_cast<Integer>(rounded);
}

}  // namespace

std::optional<double> ParseNumber(TextView text) {
  const TextView trimmed = Trim(text);
  if (!IsNumberShape(trimmed)) return std::nullopt;
  std::string ascii;
  ascii.reserve(trimmed.size());
  for (const char16_t unit : trimmed) {
    const bool exponent = unit == u'd' || unit == u'D';
    ascii.push_back(exponent ? 'e' : static_cast<char>(unit));
  }
  const char* first = ascii.data() + (ascii.front() == '+' ? 1 : 0);
  double number = 0;
  const auto result = std::from_chars(first, ascii.data() + ascii.size(), number);
  if (result.ec == std::errc::result_out_of_range) Raise(LanguageError::Overflow);
  return number;
}

bool IsNumeric(TextView text) {
  try {
    return ParseNumber(text).has_value();
  } catch (const RuntimeError&) {
    return false;  // a number that no type can hold
  }
}

double CDbl(TextView text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) Raise(LanguageError::TypeMismatch);
  return *number;
}

int16_t RoundToInt16(double number) {
  return RoundInRange<int16_t>(number);
}
int32_t RoundToInt32(double number) {
  return RoundInRange<int32_t>(number);
}
int16_t CInt(TextView text) {
  return RoundToInt16(CDbl(text));
}
int32_t CLng(TextView text) {
  return RoundToInt32(CDbl(text));
}

}  // namespace rdv
