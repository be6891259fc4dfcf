#include "data/jet/sql/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace rdv::jet::sql {
namespace {

// Beyond it a number is zero or infinite for every type; keeps sums of exponents in range.
constexpr int64_t kMaxExponent = 1000000;

// Digits of the largest magnitude.
constexpr int64_t kMaxMagnitudeDigits = 39;

class NumberParser {
 public:
  explicit NumberParser(TextView text) : text_(Trim(text)) {}

  std::optional<NumberText> Parse() {
    number_.negative = TakeSign();
    const size_t whole = TakeDigits();
    size_t fraction = 0;
    if (Take(u'.')) fraction = TakeDigits();
    if (whole + fraction == 0) return std::nullopt;
    int64_t exponent = 0;
    if (Take(u'E') || Take(u'D')) {
      const auto given = ParseExponent();
      if (!given) return std::nullopt;
      exponent = *given;
    }
    if (position_ != text_.size()) return std::nullopt;
    number_.exponent = exponent - static_cast<int64_t>(fraction);
    number_.digits.erase(0, std::min(number_.digits.find_first_not_of('0'), number_.digits.size()));
    return number_;
  }

 private:
  bool Take(char16_t unit) {
    if (position_ >= text_.size() || UpperCase(text_[position_]) != unit) return false;
    ++position_;
    return true;
  }

  bool TakeSign() {
    if (Take(u'-')) return true;
    Take(u'+');
    return false;
  }

  size_t TakeDigits() {
    const size_t start = position_;
    for (; position_ < text_.size() && IsDigit(text_[position_]); ++position_)
      number_.digits.push_back(static_cast<char>(text_[position_]));
    return position_ - start;
  }

  std::optional<int64_t> ParseExponent() {
    const bool negative = TakeSign();
    const size_t start = position_;
    int64_t exponent = 0;
    for (; position_ < text_.size() && IsDigit(text_[position_]); ++position_)
      exponent = std::min(exponent * 10 + (text_[position_] - u'0'), kMaxExponent);
    if (position_ == start) return std::nullopt;
    return negative ? -exponent : exponent;
  }

  TextView text_;
  size_t position_ = 0;
  NumberText number_;
};

// False when the result does not fit.
bool MultiplyAndAdd(Magnitude& magnitude, uint32_t factor, uint32_t summand) {
  uint64_t carry = summand;
  for (auto word = magnitude.rbegin(); word != magnitude.rend(); ++word) {
    carry += uint64_t{*word} * factor;
    *word = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
  return carry == 0;
}

// Whether cutting `digits` down to its first `kept` rounds the last of them up.
bool RoundsUp(const std::string& digits, size_t kept) {
  if (digits[kept] != '5') return digits[kept] > '5';
  const bool more_than_half = digits.find_first_not_of('0', kept + 1) != std::string::npos;
  const bool odd = kept > 0 && (digits[kept - 1] - '0') % 2 != 0;
  return more_than_half || odd;
}

template <typename Real>
std::optional<Real> NearestReal(const NumberText& number) {
  if (number.IsZero()) return Real{0};
  const std::string text =
      (number.negative ? "-" : "") + number.digits + "e" + std::to_string(number.exponent);
  Real result = 0;
  const auto status = std::from_chars(text.data(), text.data() + text.size(), result);
  if (status.ec != std::errc::result_out_of_range) return result;
  if (static_cast<int64_t>(number.digits.size()) + number.exponent > 0) return std::nullopt;
  return Real{0};
}

}  // namespace

std::optional<NumberText> ParseNumberText(TextView text) {
  return NumberParser(text).Parse();
}

std::optional<Magnitude> ScaledMagnitude(const NumberText& number, int scale) {
  Magnitude magnitude{};
  const auto count = static_cast<int64_t>(number.digits.size());
  const int64_t shift = number.exponent + scale;
  if (number.IsZero() || count + shift < 0) return magnitude;
  if (count + shift > kMaxMagnitudeDigits) return std::nullopt;
  const auto kept = static_cast<size_t>(std::min(count + shift, count));
  for (size_t i = 0; i < kept; ++i) {
    if (!MultiplyAndAdd(magnitude, 10, static_cast<uint32_t>(number.digits[i] - '0')))
      return std::nullopt;
  }
  for (int64_t i = 0; i < shift; ++i) {
    if (!MultiplyAndAdd(magnitude, 10, 0)) return std::nullopt;
  }
  if (shift < 0 && RoundsUp(number.digits, kept) && !MultiplyAndAdd(magnitude, 1, 1))
    return std::nullopt;
  return magnitude;
}

int BesideScaled(const NumberText& number, int scale) {
  const auto kept = static_cast<int64_t>(number.digits.size()) + number.exponent + scale;
  if (number.IsZero() || number.exponent + scale >= 0) return 0;
  bool up = false;
  if (kept >= 0) {
    const auto place = static_cast<size_t>(kept);
    if (number.digits.find_first_not_of('0', place) == std::string::npos) return 0;
    up = RoundsUp(number.digits, place);
  }
  return up == number.negative ? 1 : -1;
}

std::optional<int64_t> NearestInteger(const NumberText& number, int scale) {
  const auto magnitude = ScaledMagnitude(number, scale);
  if (!magnitude || (*magnitude)[0] != 0 || (*magnitude)[1] != 0) return std::nullopt;
  const uint64_t bits = (uint64_t{(*magnitude)[2]} << 32) | (*magnitude)[3];
  constexpr uint64_t kLargest = std::numeric_limits<int64_t>::max();
  if (bits <= kLargest) {
    const auto value = static_cast<int64_t>(bits);
    return number.negative ? -value : value;
  }
  if (number.negative && bits == kLargest + 1) return std::numeric_limits<int64_t>::min();
  return std::nullopt;
}

std::optional<float> NearestSingle(const NumberText& number) {
  return NearestReal<float>(number);
}

std::optional<double> NearestDouble(const NumberText& number) {
  return NearestReal<double>(number);
}

}  // namespace rdv::jet::sql
