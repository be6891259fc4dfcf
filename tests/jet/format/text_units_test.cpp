// Units and single bytes: every length around the steps in which they are turned into each other.
#include "data/jet/format/text_units.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace rdv::jet {
namespace {

constexpr size_t kLongest = 3 * kUnitStep + 1;
constexpr uint8_t kUntouched = 0xEE;

// All values of a byte but 0, in turn.
std::u16string UnitsOf(size_t count) {
  std::u16string units;
  for (size_t i = 0; i < count; ++i) units.push_back(static_cast<char16_t>(1 + i * 37 % 0xFF));
  return units;
}

TEST(TextUnits, EveryLengthIsNarrowedAndWidenedAgainAndNothingBehindIsTouched) {
  for (size_t count = 0; count <= kLongest; ++count) {
    const std::u16string units = UnitsOf(count);
    std::vector<uint8_t> bytes(count + 1, kUntouched);
    ASSERT_TRUE(NarrowUnits(units.data(), count, bytes.data())) << count;
    EXPECT_EQ(bytes[count], kUntouched) << count;
    std::u16string widened(count + 1, kUntouched);
    EXPECT_TRUE(WidenBytes(bytes.data(), count, widened.data())) << count;
    EXPECT_EQ(widened[count], kUntouched) << count;
    EXPECT_EQ(widened.substr(0, count), units) << count;
  }
}

TEST(TextUnits, OneUnitThatIsNoByteIsNoticedAnywhere) {
  for (size_t count = 1; count <= kLongest; ++count) {
    for (size_t place = 0; place < count; ++place) {
      for (const char16_t unit : {u'\0', u'\u0100', u'\u0101', u'\uFF01', u'\uFFFF'}) {
        std::u16string units = UnitsOf(count);
        units[place] = unit;
        std::vector<uint8_t> bytes(count);
        EXPECT_FALSE(NarrowUnits(units.data(), count, bytes.data()))
            << count << ' ' << place << ' ' << static_cast<unsigned>(unit);
      }
    }
  }
}

TEST(TextUnits, AZeroAmongTheBytesIsNoticedAnywhereAndNothingElseIs) {
  for (size_t count = 1; count <= kLongest; ++count) {
    for (size_t place = 0; place < count; ++place) {
      for (const int filling : {0x01, 0x7F, 0x80, 0x81, 0xFF}) {
        std::vector<uint8_t> bytes(count, static_cast<uint8_t>(filling));
        std::u16string widened(count, u'?');
        EXPECT_TRUE(WidenBytes(bytes.data(), count, widened.data())) << count << ' ' << filling;
        bytes[place] = 0;
        EXPECT_FALSE(WidenBytes(bytes.data(), count, widened.data()))
            << count << ' ' << place << ' ' << filling;
        EXPECT_EQ(widened[place], 0);
      }
    }
  }
}

TEST(TextUnits, TheHighestByteIsOne) {
  const std::u16string units(kUnitStep, u'\u00FF');
  std::vector<uint8_t> bytes(kUnitStep);
  EXPECT_TRUE(NarrowUnits(units.data(), units.size(), bytes.data()));
  EXPECT_TRUE(std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0xFF; }));
}

}  // namespace
}  // namespace rdv::jet
