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
  size_t byte = from / 8;
  if (byte >= bits.size()) return std::nullopt;
  const unsigned first = unsigned{bits[byte]} >> (from % 8);
  if (first != 0) return from + static_cast<size_t>(std::countr_zero(first));
  for (++byte; byte + sizeof(uint64_t) <= bits.size(); byte += sizeof(uint64_t)) {
    const uint64_t word = Load64(&bits[byte]);
    if (word != 0) return byte * 8 + static_cast<size_t>(std::countr_zero(word));
  }
  for (; byte < bits.size(); ++byte) {
    const unsigned last = bits[byte];
    if (last != 0) return byte * 8 + static_cast<size_t>(std::countr_zero(last));
  }
  return std::nullopt;
}

// The highest bit that is set below `limit`.
inline std::optional<size_t> HighestBit(Bytes bits, size_t limit) {
  size_t byte = std::min(bits.size(), limit / 8);
  if (byte < bits.size()) {
    const unsigned first = bits[byte] & ((1u << (limit % 8)) - 1);
    if (first != 0) return byte * 8 + static_cast<size_t>(std::bit_width(first)) - 1;
  }
  for (; byte >= sizeof(uint64_t); byte -= sizeof(uint64_t)) {
    const uint64_t word = Load64(&bits[byte - sizeof(uint64_t)]);
    if (word != 0)
      return (byte - sizeof(uint64_t)) * 8 + static_cast<size_t>(std::bit_width(word)) - 1;
  }
  while (byte-- > 0) {
    const unsigned last = bits[byte];
    if (last != 0) return byte * 8 + static_cast<size_t>(std::bit_width(last)) - 1;
  }
  return std::nullopt;
}

}  // namespace rdv::jet
