// Loading and storing numbers of a database file. Everything on disk is little-endian, except
// inside index entries. The callers of Load and Store have checked the bounds; ByteReader checks
// its own.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace rdv::jet {

using Bytes = std::span<const uint8_t>;

inline uint16_t Load16(const uint8_t* from) {
  return static_cast<uint16_t>(from[0] | (from[1] << 8));
}
inline uint32_t Load24(const uint8_t* from) {
  return from[0] | (uint32_t{from[1]} << 8) | (uint32_t{from[2]} << 16);
}
inline uint32_t Load32(const uint8_t* from) {
  return Load24(from) | (uint32_t{from[3]} << 24);
}
inline uint64_t Load64(const uint8_t* from) {
  return Load32(from) | (uint64_t{Load32(from + 4)} << 32);
}
inline float LoadFloat(const uint8_t* from) {
  return std::bit_cast<float>(Load32(from));
}
inline double LoadDouble(const uint8_t* from) {
  return std::bit_cast<double>(Load64(from));
}
inline uint32_t Load24BigEndian(const uint8_t* from) {
  return (uint32_t{from[0]} << 16) | (uint32_t{from[1]} << 8) | from[2];
}
inline uint32_t Load32BigEndian(const uint8_t* from) {
  return (uint32_t{from[0]} << 24) | Load24BigEndian(from + 1);
}

inline void Store16(uint8_t* to, uint16_t value) {
  to[0] = static_cast<uint8_t>(value);
  to[1] = static_cast<uint8_t>(value >> 8);
}
// Of a page's number: what is cut off would make it the number of another page.
inline void Store24(uint8_t* to, uint32_t value) {
  assert(value >> 24 == 0);
  Store16(to, static_cast<uint16_t>(value));
  to[2] = static_cast<uint8_t>(value >> 16);
}
inline void Store32(uint8_t* to, uint32_t value) {
  Store16(to, static_cast<uint16_t>(value));
  Store16(to + 2, static_cast<uint16_t>(value >> 16));
}
inline void Store64(uint8_t* to, uint64_t value) {
  Store32(to, static_cast<uint32_t>(value));
  Store32(to + 4, static_cast<uint32_t>(value >> 32));
}
inline void StoreFloat(uint8_t* to, float value) {
  Store32(to, std::bit_cast<uint32_t>(value));
}
inline void StoreDouble(uint8_t* to, double value) {
  Store64(to, std::bit_cast<uint64_t>(value));
}
inline void Store24BigEndian(uint8_t* to, uint32_t value) {
  assert(value >> 24 == 0);
  to[0] = static_cast<uint8_t>(value >> 16);
  to[1] = static_cast<uint8_t>(value >> 8);
  to[2] = static_cast<uint8_t>(value);
}
inline void Store32BigEndian(uint8_t* to, uint32_t value) {
  to[0] = static_cast<uint8_t>(value >> 24);
  Store24BigEndian(to + 1, value & 0xFFFFFF);
}
inline void Store64BigEndian(uint8_t* to, uint64_t value) {
  Store32BigEndian(to, static_cast<uint32_t>(value >> 32));
  Store32BigEndian(to + 4, static_cast<uint32_t>(value));
}

// Reads one number after another. Reading past the end gives zeros and empty spans and leaves a
// mark, so that a structure is parsed in one go and checked once, at its end.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes, size_t position = 0)
      : bytes_(bytes), position_(position), failed_(position > bytes.size()) {}

  Bytes Take(size_t count) {
    if (failed_ || count > bytes_.size() - position_) {
      failed_ = true;
      return {};
    }
    const Bytes taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
  }
  void Skip(size_t count) { Take(count); }

  uint8_t U8() {
    const Bytes taken = Take(1);
    return taken.empty() ? uint8_t{0} : taken[0];
  }
  uint16_t U16() {
    const Bytes taken = Take(2);
    return taken.empty() ? uint16_t{0} : Load16(taken.data());
  }
  uint32_t U32() {
    const Bytes taken = Take(4);
    return taken.empty() ? 0 : Load32(taken.data());
  }

  size_t Position() const { return position_; }
  size_t Left() const { return failed_ ? 0 : bytes_.size() - position_; }
  bool Failed() const { return failed_; }

 private:
  Bytes bytes_;
  size_t position_;
  bool failed_;
};

}  // namespace rdv::jet
