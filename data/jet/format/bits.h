// Searching strings of bits: maps of pages, masks of index entries. Bit k is bit k % 8 of byte
// k / 8. Long runs of zeros are passed over in words.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "data/jet/format/bytes.h"

namespace rdv::jet {

// The lowest bit that is set and not below `from`.
inline std::optional<size_t> LowestBit(Bytes bits, size_t from) {
  constexpr size_t kWord = sizeof(uint64_t);
  size_t byte = from / 8;
  for (; byte + kWord <= bits.size(); byte += kWord, from = byte * 8) {
    const uint64_t word = Load64(bits.data() + byte) >> (from % 8);
    if (word != 0) return from + static_cast<size_t>(std::countr_zero(word));
  }
  for (; byte < bits.size(); ++byte, from = byte * 8) {
    const unsigned last = unsigned{bits[byte]} >> (from % 8);
    if (last != 0) return from + static_cast<size_t>(std::countr_zero(last));
  }
  return std::nullopt;
}

// The highest bit that is set below `limit`.
inline std::optional<size_t> HighestBit(Bytes bits, size_t limit) {
  constexpr size_t kWord = sizeof(uint64_t);
  limit = std::min(limit, bits.size() * 8);
  size_t byte = (limit + 7) / 8;  // behind the one with the highest bit
  for (; byte >= kWord; byte -= kWord, limit = byte * 8) {
    const uint64_t word = Load64(bits.data() + byte - kWord) << (byte * 8 - limit);
    if (word != 0) return limit - 1 - static_cast<size_t>(std::countl_zero(word));
  }
  for (; byte > 0; --byte, limit = byte * 8) {
    const unsigned last = bits[byte - 1] & (0xFFu >> (byte * 8 - limit));
    if (last != 0) return byte * 8 - 8 + static_cast<size_t>(std::bit_width(last)) - 1;
  }
  return std::nullopt;
}

}  // namespace rdv::jet
