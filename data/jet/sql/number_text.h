// Numbers written as text, kept exactly: an optional sign, digits with an optional decimal point,
// an optional exponent, blanks around it allowed.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "runtime/text.h"

namespace rdv::jet::sql {

// `digits` times ten to the power of `exponent`; no leading zeros, and no digits for zero.
struct NumberText {
  bool negative = false;
  std::string digits;
  int64_t exponent = 0;

  bool IsZero() const { return digits.empty(); }
};

// Nothing for a text that is no number.
std::optional<NumberText> ParseNumberText(TextView text);

// The most significant word comes first.
using Magnitude = std::array<uint32_t, 4>;

// The magnitude of the number times ten to the power of `scale`, a half rounded to even. Nothing
// when it does not fit.
std::optional<Magnitude> ScaledMagnitude(const NumberText& number, int scale);

// Where the number lies beside what ScaledMagnitude makes of it: below (-1), there (0) or above
// (1).
int BesideScaled(const NumberText& number, int scale);

// The nearest number of the type. Nothing when it is outside the type's range; what is too small
// becomes zero.
std::optional<int64_t> NearestInteger(const NumberText& number, int scale = 0);
std::optional<float> NearestSingle(const NumberText& number);
std::optional<double> NearestDouble(const NumberText& number);

}  // namespace rdv::jet::sql
