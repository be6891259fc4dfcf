// Values for columns of every type, the same for the same seed.
#pragma once

#include <algorithm>
#include <random>

#include "data/jet/format/schema.h"
#include "runtime/value.h"

namespace rdv::jet {

class RandomValues {
 public:
  explicit RandomValues(uint32_t seed) : random_(seed) {}

  size_t Below(size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random_);
  }
  bool OneIn(size_t count) { return Below(count) == 0; }

  // Values repeat now and then, so that unique indexes have something to refuse.
  Value For(const Column& column) {
    if (OneIn(8) && !column.required) return Null();
    switch (column.type) {
      case ColumnType::Boolean:
        return OneIn(2);
      case ColumnType::Byte:
        return static_cast<uint8_t>(Below(256));
      case ColumnType::Integer:
        return static_cast<int16_t>(static_cast<int>(Below(4000)) - 2000);
      case ColumnType::Long:
        return static_cast<int32_t>(Below(100000)) - 50000;
      case ColumnType::Currency:
        return Currency{static_cast<int64_t>(Below(1'000'000)) - 500'000};
      case ColumnType::Single:
        return static_cast<float>(Below(10000)) / 8 - 600;
      case ColumnType::Double:
        return static_cast<double>(Below(10000)) / 8 - 600;
      case ColumnType::DateTime:
        return DateTime{static_cast<double>(Below(80000)) / 2};
      case ColumnType::Guid:
        return RandomGuid();
      case ColumnType::Numeric:
        return DecimalNumber{OneIn(2), column.scale, {0, 0, 0, static_cast<uint32_t>(Below(9999))}};
      case ColumnType::Text:
        return RandomText(column.fixed ? 1 : 0, column.length / 2);
      case ColumnType::Memo:
        return RandomText(0, OneIn(10) ? 9000 : OneIn(3) ? 700 : 40);
      case ColumnType::Binary:
        return RandomBytes(column.length);
      case ColumnType::Ole:
        return RandomBytes(OneIn(10) ? 20000 : 200);
    }
    return Null();
  }

 private:
  Guid RandomGuid() {
    Guid guid;
    for (uint8_t& byte : guid.bytes) byte = static_cast<uint8_t>(Below(256));
    return guid;
  }
  Binary RandomBytes(size_t longest) {
    Binary bytes(Below(longest + 1));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(Below(256));
    return bytes;
  }
  Text RandomText(size_t shortest, size_t longest) {
    if (longest == 0) return {};
    if (longest <= 255 && OneIn(2)) longest = std::min<size_t>(longest, 12);
    constexpr TextView kLetters = u"aAbBcCeE \u00E9\u00C4\u00DF-'12 .\u0141\u03A9\u0416xyz";
    Text text(std::max(shortest, Below(longest + 1)), u' ');
    const bool plain = OneIn(2);
    for (char16_t& unit : text)
      unit = plain ? static_cast<char16_t>(u'a' + Below(26)) : kLetters[Below(kLetters.size())];
    // A column of a fixed length fills up with blanks.
    return text;
  }

  std::mt19937 random_;
};

}  // namespace rdv::jet
