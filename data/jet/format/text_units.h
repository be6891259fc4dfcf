// Texts as they are stored, and the way between their units and single bytes, eight at a time, in
// steps of a fixed size that a compiler turns into single instructions: the texts of lines are
// short, and many.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace rdv::jet {

inline constexpr size_t kUnitSize = sizeof(char16_t);
// What a compressed text begins with. No plain text may.
inline constexpr char16_t kCompressedMark = 0xFEFF;

inline constexpr size_t kUnitStep = 8;

// Writes as many units as there are bytes. False, and the units are written all the same, when one
// of the bytes is 0: then they may be no text of single bytes.
inline bool WidenBytes(const uint8_t* from, size_t count, char16_t* to) {
  constexpr uint64_t kOnes = 0x0101010101010101;
  uint64_t zeros = 0;
  const auto step = [&](size_t at) {
    std::array<uint8_t, kUnitStep> bytes;
    std::array<char16_t, kUnitStep> units;
    std::memcpy(bytes.data(), from + at, sizeof bytes);
    for (size_t i = 0; i < kUnitStep; ++i) units[i] = bytes[i];
    std::memcpy(to + at, units.data(), sizeof units);
    // Taking 1 away from each byte borrows from the highest bit of one that is 0; of the others
    // with such a bit afterwards only those had it before.
    uint64_t word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    zeros |= (word - kOnes) & ~word & kOnes << 7;
  };
  if (count < kUnitStep) {
    bool all = true;
    for (size_t i = 0; i < count; ++i) {
      to[i] = from[i];
      all &= from[i] != 0;
    }
    return all;
  }
  for (size_t at = 0; at + kUnitStep <= count; at += kUnitStep) step(at);
  step(count - kUnitStep);  // the rest, some of it again
  return zeros == 0;
}

// Writes as many bytes as there are units. False, and the bytes mean nothing, when one of the units
// is 0 or needs more than a byte.
inline bool NarrowUnits(const char16_t* from, size_t count, uint8_t* to) {
  // What takes 1 away from a byte's unit lies below 0xFF; 0 wraps round and larger ones lie above.
  unsigned beyond = 0;
  const auto step = [&](size_t at) {
    std::array<char16_t, kUnitStep> units;
    std::array<uint8_t, kUnitStep> bytes;
    std::memcpy(units.data(), from + at, sizeof units);
    std::array<uint16_t, kUnitStep> less;
    for (size_t i = 0; i < kUnitStep; ++i) less[i] = static_cast<uint16_t>(units[i] - 1);
    for (size_t i = 0; i < kUnitStep; ++i) bytes[i] = static_cast<uint8_t>(units[i]);
    for (size_t i = 0; i < kUnitStep; ++i) beyond |= less[i] >= 0xFF;
    std::memcpy(to + at, bytes.data(), sizeof bytes);
  };
  if (count < kUnitStep) {
    for (size_t i = 0; i < count; ++i) {
      to[i] = static_cast<uint8_t>(from[i]);
      beyond |= static_cast<uint16_t>(from[i] - 1) >= 0xFF;
    }
    return beyond == 0;
  }
  for (size_t at = 0; at + kUnitStep <= count; at += kUnitStep) step(at);
  step(count - kUnitStep);
  return beyond == 0;
}

}  // namespace rdv::jet
