// The pages of a file that are in memory, by number.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace rdv::jet {

class PageCache {
 public:
  using Buffer = std::unique_ptr<uint8_t[]>;

  // Who relies on the bytes staying where they are.
  enum class Holder : uint8_t {
    Statement,  // anybody, until the statement ends
    Passerby,   // one that says when it is done with them
    Nobody,
  };

  struct Page {
    Buffer bytes;   // null when the page is not in memory
    Buffer before;  // as it was when the statement began; null for unchanged and for new pages
    bool dirty = false;
    bool used = false;  // since the cache last looked for pages to give up
    Holder holder = Holder::Statement;
  };

  // Pages from `count` on are forgotten.
  void Resize(uint32_t count) {
    for (uint32_t number = count; number < count_ && number % kGroup != 0; ++number) {
      if (Page* page = Find(number)) *page = {};
    }
    count_ = count;
    groups_.resize((count + kGroup - 1) / kGroup);
  }
  void Clear() { Resize(0); }
  uint32_t Count() const { return count_; }

  // A page that Resize has made room for. It stays in its place.
  Page& At(uint32_t number) {
    std::unique_ptr<Group>& group = groups_[number / kGroup];
    if (!group) group = std::make_unique<Group>();
    return (*group)[number % kGroup];
  }
  // Null when it was never asked for.
  Page* Find(uint32_t number) {
    if (number >= count_ || !groups_[number / kGroup]) return nullptr;
    return &(*groups_[number / kGroup])[number % kGroup];
  }

  // The number of a page behind `number` of which Find may know; from the end on to the beginning.
  // Requires that there is one.
  uint32_t Next(uint32_t number) const {
    do {
      const bool skips = number < count_ && !groups_[number / kGroup];
      number = skips ? (number / kGroup + 1) * kGroup : number + 1;
      if (number >= count_) number = 0;
    } while (!groups_[number / kGroup]);
    return number;
  }

 private:
  // In groups, which are made when one of their pages is asked for: to open a large file costs
  // hardly more than to open a small one.
  static constexpr uint32_t kGroup = 32;
  using Group = std::array<Page, kGroup>;

  std::vector<std::unique_ptr<Group>> groups_;
  uint32_t count_ = 0;
};

}  // namespace rdv::jet
