// One field of a database row: Null or a value of one of the column types.
#pragma once

#include <array>
#include <cstdint>
#include <variant>
#include <vector>

#include "runtime/text.h"

namespace rdv {

struct Null {
  bool operator==(const Null&) const = default;
};

struct Currency {
  int64_t ten_thousandths = 0;
  bool operator==(const Currency&) const = default;
};

// Days since 1899-12-30. For negative values the integer part is the day and the absolute
// fraction the time of day.
struct DateTime {
  double days = 0;
  bool operator==(const DateTime&) const = default;
};

// magnitude / 10^scale, negated when `negative`. The most significant word comes first.
struct DecimalNumber {
  bool negative = false;
  uint8_t scale = 0;
  std::array<uint32_t, 4> magnitude{};
  bool operator==(const DecimalNumber&) const = default;
};

// In the order of the bytes in memory: u32, u16, u16 little-endian, then eight bytes.
struct Guid {
  std::array<uint8_t, 16> bytes{};
  bool operator==(const Guid&) const = default;
};

using Binary = std::vector<uint8_t>;

using Value = std::variant<Null, bool, uint8_t, int16_t, int32_t, Currency, float, double, DateTime,
                           DecimalNumber, Guid, Text, Binary>;

inline bool IsNull(const Value& value) {
  return std::holds_alternative<Null>(value);
}

// What a procedure gets when it assigns a field to a variable of its own: all raise 94 for Null,
// 13 for what has no such value, 6 outside the range.
int16_t ToInteger(const Value& value);
int32_t ToLong(const Value& value);
bool ToBoolean(const Value& value);
Text ToText(const Value& value);

// The decimal digits of a Decimal or Currency value with all its decimals ("-0.0001").
Text ToDigits(const DecimalNumber& number);
Text ToDigits(Currency amount);

}  // namespace rdv
