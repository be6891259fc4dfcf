// In which order the changed pages of a statement reach the file, so that also a program that knows
// nothing of the journal finds every row that was there before, wherever the writing was cut off: a
// page that lets go of a row waits for the one that has got it.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace rdv::jet {

class PageOrder {
 public:
  // The taker must not wait for others itself at that moment; so no two pages wait for each other.
  void LetWait(uint32_t page, uint32_t taker) {
    if (page == taker) return;
    waits_.emplace_back(page, taker);
    ranks_[page] = 0;
  }
  bool Waits(uint32_t page) const { return ranks_.contains(page); }
  bool Empty() const { return waits_.empty(); }
  void Clear() {
    waits_.clear();
    ranks_.clear();
  }

  // Works out the ranks: a page is written after those of lower ranks.
  void Rank() {
    // What a taker waits for was said after it had become one, so backwards all is known in time.
    for (auto wait = waits_.rbegin(); wait != waits_.rend(); ++wait) {
      const uint32_t rank = RankOf(wait->second) + 1;
      if (ranks_[wait->first] < rank) ranks_[wait->first] = rank;
    }
  }
  uint32_t RankOf(uint32_t page) const {
    const auto found = ranks_.find(page);
    return found == ranks_.end() ? 0 : found->second;
  }

 private:
  std::vector<std::pair<uint32_t, uint32_t>> waits_;  // in the order in which they were said
  std::unordered_map<uint32_t, uint32_t> ranks_;      // of the pages that wait
};

}  // namespace rdv::jet
