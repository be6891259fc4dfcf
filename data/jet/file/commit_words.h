// The 256 commit words of the header page. The first is that of whoever has the file to himself,
// the others those of the users of a shared file. Each is 0 while its owner writes, 1 when it met a
// damaged page, else a counter that grows with every commit.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "data/jet/format/bytes.h"
#include "data/jet/format/format.h"

namespace rdv::jet {

class CommitWords {
 public:
  static constexpr size_t kSize = kCommitWordCount * sizeof(uint16_t);

  CommitWords() = default;  // all zeros
  explicit CommitWords(Bytes stored) { std::ranges::copy(stored.first(kSize), bytes_.begin()); }

  Bytes Stored() const { return bytes_; }
  std::span<uint8_t> Storage() { return bytes_; }
  bool operator==(const CommitWords&) const = default;

  uint16_t First() const { return Word(0); }
  void SetFirst(uint16_t word) { Store16(bytes_.data(), word); }
  Bytes Others() const { return Stored().subspan(sizeof(uint16_t)); }
  bool SameOthers(const CommitWords& words) const {
    return std::ranges::equal(Others(), words.Others());
  }
  bool AllAtRest() const {
    bool all = true;
    for (size_t slot = 0; slot < kCommitWordCount; ++slot) all &= Word(slot) >= kCommitIdle;
    return all;
  }
  bool OtherIsWriting() const {
    for (size_t slot = 1; slot < kCommitWordCount; ++slot) {
      if (Word(slot) == kCommitWriting) return true;
    }
    return false;
  }
  uint16_t Highest() const {
    uint16_t highest = 0;
    for (size_t slot = 0; slot < kCommitWordCount; ++slot) highest = std::max(highest, Word(slot));
    return highest;
  }

  // As of a file at rest: nobody counts but the first, which is given.
  static CommitWords AtRest(uint16_t first) {
    CommitWords words;
    for (size_t slot = 1; slot < kCommitWordCount; ++slot)
      Store16(words.bytes_.data() + slot * sizeof(uint16_t), kCommitIdle);
    words.SetFirst(first);
    return words;
  }

 private:
  uint16_t Word(size_t slot) const { return Load16(bytes_.data() + slot * sizeof(uint16_t)); }

  std::array<uint8_t, kSize> bytes_{};
};

inline bool IsAtRest(uint16_t commit_word) {
  return commit_word >= kCommitIdle;
}

// Believed: after the highest number the counting begins anew.
inline uint16_t NextCommitWord(uint16_t word) {
  const bool counts_on = IsAtRest(word) && word != 0xFFFF;
  return counts_on ? static_cast<uint16_t>(word + 1) : static_cast<uint16_t>(kCommitIdle + 1);
}

inline uint16_t NextCommitWord(uint16_t word, uint32_t commits) {
  for (uint32_t i = 0; i < commits; ++i) word = NextCommitWord(word);
  return word;
}

// How many commits lead from one to the other. Requires that both are at rest.
inline uint32_t CommitsBetween(uint16_t from, uint16_t to) {
  constexpr uint32_t kRound = 0x10000 - kCommitIdle;
  return (uint32_t{to} + kRound - from) % kRound;
}

}  // namespace rdv::jet
