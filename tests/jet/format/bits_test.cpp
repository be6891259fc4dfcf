// Searching strings of bits in words against looking at one bit after the other.
#include "data/jet/format/bits.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace rdv::jet {
namespace {

bool IsSet(Bytes bits, size_t bit) {
  return (bits[bit / 8] >> (bit % 8) & 1) != 0;
}

std::optional<size_t> LowestBitByBit(Bytes bits, size_t from) {
  for (size_t bit = from; bit < bits.size() * 8; ++bit) {
    if (IsSet(bits, bit)) return bit;
  }
  return std::nullopt;
}

std::optional<size_t> HighestBitByBit(Bytes bits, size_t limit) {
  for (size_t bit = std::min(limit, bits.size() * 8); bit-- > 0;) {
    if (IsSet(bits, bit)) return bit;
  }
  return std::nullopt;
}

// Of every length up to some words, with few bits, many, one and none.
TEST(Bits, AreFoundInWordsWhereTheyAreOneByOne) {
  std::mt19937 random(5);
  for (size_t size = 0; size <= 27; ++size) {
    for (int round = 0; round < 12; ++round) {
      std::vector<uint8_t> bits(size);
      const size_t count = round == 0 || size == 0 ? 0 : random() % (size * (round < 6 ? 1 : 6));
      for (size_t i = 0; i < count; ++i) {
        const size_t bit = random() % (size * 8);
        bits[bit / 8] = static_cast<uint8_t>(bits[bit / 8] | 1 << (bit % 8));
      }
      for (size_t place = 0; place <= size * 8 + 9; ++place) {
        ASSERT_EQ(LowestBit(bits, place), LowestBitByBit(bits, place)) << size << " " << place;
        ASSERT_EQ(HighestBit(bits, place), HighestBitByBit(bits, place)) << size << " " << place;
      }
    }
  }
}

}  // namespace
}  // namespace rdv::jet
