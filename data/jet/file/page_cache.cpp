#include "data/jet/file/page_cache.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace rdv::jet {
namespace {

// Which part of the budget pages may take that only scans have asked for.
constexpr size_t kPartOfScans = 4;

}  // namespace

void PageCache::Reset(uint32_t count, uint32_t page_size) {
  assert(changed_.empty() && appended_ == 0);
  page_size_ = page_size;
  groups_.clear();
  groups_.resize((size_t{count} + kGroup - 1) / kGroup);
  count_ = count;
  held_ = 0;
  passed_.clear();
  longest_passed_ = 0;
  spare_.clear();
  slabs_.clear();
}

PageCache::Page& PageCache::At(uint32_t number) {
  assert(number < count_);
  std::unique_ptr<Group>& group = groups_[number / kGroup];
  if (!group) group = std::make_unique<Group>();
  return (*group)[number % kGroup];
}

PageCache::Page* PageCache::Find(uint32_t number) {
  if (number >= count_ || !groups_[number / kGroup]) return nullptr;
  return &(*groups_[number / kGroup])[number % kGroup];
}

uint8_t* PageCache::Room() {
  assert(page_size_ != 0);
  if (spare_.empty()) {
    slabs_.push_back(std::make_unique_for_overwrite<uint8_t[]>(kPagesOfSlab * page_size_));
    for (size_t i = kPagesOfSlab; i-- > 0;) spare_.push_back(&slabs_.back()[i * page_size_]);
  }
  return spare_.back();
}

uint8_t* PageCache::TakeBuffer() {
  uint8_t* const bytes = Room();
  spare_.pop_back();
  return bytes;
}

void PageCache::PutBuffer(uint8_t* bytes) {
#ifndef NDEBUG
  // Whoever still reads them is to notice it.
  std::memset(bytes, 0xDB, page_size_);
#endif
  spare_.push_back(bytes);
}

void PageCache::Keep(uint32_t number) {
  Page& page = At(number);
  assert(!page.bytes && !page.dirty);
  page.bytes = TakeBuffer();
  page.holder = Holder::Nobody;
  ++held_;
}

void PageCache::Drop(Page& page) {
  assert(page.bytes && !page.dirty);
  PutBuffer(std::exchange(page.bytes, nullptr));
  --held_;
}

// The page that was given back longest ago makes room for this one.
void PageCache::GiveBack(uint32_t number) {
  Page* page = Find(number);
  if (page == nullptr || page->holder != Holder::Passerby) return;
  page->holder = Holder::Nobody;
  if (page->dirty) return;
  if (held_ > budget_) return Drop(*page);
  if (page->passed) return;
  page->passed = true;
  if (passed_.size() < std::max<size_t>(budget_ / kPartOfScans, 1)) {
    passed_.push_back(number);
    return;
  }
  Page* last = Find(std::exchange(passed_[longest_passed_], number));
  longest_passed_ = (longest_passed_ + 1) % passed_.size();
  if (last == nullptr || !last->passed) return;
  last->passed = false;
  if (last->bytes && !last->dirty && last->holder == Holder::Nobody) Drop(*last);
}

uint8_t* PageCache::Change(uint32_t number) {
  Page& page = At(number);
  assert(page.bytes);
  if (!page.dirty) {
    page.before = TakeBuffer();
    std::memcpy(page.before, page.bytes, page_size_);
    page.dirty = true;
    changed_.push_back(number);
  }
  return page.bytes;
}

uint32_t PageCache::Append() {
  const uint32_t number = count_++;
  groups_.resize((size_t{count_} + kGroup - 1) / kGroup);
  ++appended_;
  Page& page = At(number);
  page.bytes = TakeBuffer();
  std::memset(page.bytes, 0, page_size_);
  page.dirty = true;
  page.used = true;
  page.holder = Holder::Statement;
  ++held_;
  changed_.push_back(number);
  return number;
}

void PageCache::Settle() {
  for (const uint32_t number : changed_) {
    Page& page = At(number);
    assert(page.dirty && page.bytes);
    page.dirty = false;
    if (page.before) PutBuffer(std::exchange(page.before, nullptr));
  }
  changed_.clear();
  appended_ = 0;
}

void PageCache::Restore() {
  for (const uint32_t number : changed_) {
    Page& page = At(number);
    assert(page.dirty && page.bytes && !page.before == (number >= CountBefore()));
    if (page.before) {
      std::swap(page.bytes, page.before);
      page.dirty = false;
    } else {
      std::swap(page.before, page.bytes);
      --held_;
    }
    PutBuffer(std::exchange(page.before, nullptr));
    if (!page.bytes) page = {};
  }
  changed_.clear();
  count_ -= appended_;
  appended_ = 0;
  groups_.resize((size_t{count_} + kGroup - 1) / kGroup);
}

// The number of a page behind `number` of which Find may know; from the end on to the beginning.
// Requires that there is one.
uint32_t PageCache::Next(uint32_t number) const {
  do {
    const bool skips = number < count_ && !groups_[number / kGroup];
    number = skips ? (number / kGroup + 1) * kGroup : number + 1;
    if (number >= count_) number = 0;
  } while (!groups_[number / kGroup]);
  return number;
}

// Gives up pages that were not used since the hand last passed, then any.
void PageCache::Trim() {
  while (held_ > budget_) {
    hand_ = Next(hand_);
    Page& page = At(hand_);
    if (!page.bytes || page.dirty) continue;
    if (page.used) {
      page.used = false;
      continue;
    }
    Drop(page);
  }
}

}  // namespace rdv::jet
