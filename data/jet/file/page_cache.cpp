#include "data/jet/file/page_cache.h"

#include <cassert>
#include <cstring>
#include <utility>

namespace rdv::jet {

void PageCache::Reset(uint32_t count, uint32_t page_size) {
  assert(changed_.empty() && appended_ == 0);
  if (page_size != page_size_) spare_.clear();
  page_size_ = page_size;
  groups_.clear();
  groups_.resize((size_t{count} + kGroup - 1) / kGroup);
  count_ = count;
  held_ = 0;
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

PageCache::Buffer PageCache::NewBuffer() {
  assert(page_size_ != 0);
  if (spare_.empty()) return std::make_unique_for_overwrite<uint8_t[]>(page_size_);
  Buffer buffer = std::move(spare_.back());
  spare_.pop_back();
  return buffer;
}

void PageCache::Keep(uint32_t number, Buffer bytes) {
  Page& page = At(number);
  assert(!page.bytes && !page.dirty);
  page.bytes = std::move(bytes);
  page.holder = Holder::Nobody;
  ++held_;
}

void PageCache::GiveBack(uint32_t number) {
  Page* page = Find(number);
  if (page == nullptr || page->holder != Holder::Passerby) return;
  page->holder = Holder::Nobody;
  if (held_ <= budget_ || page->dirty) return;
  spare_.push_back(std::move(page->bytes));
  --held_;
}

uint8_t* PageCache::Change(uint32_t number) {
  Page& page = At(number);
  assert(page.bytes);
  if (!page.dirty) {
    page.before = NewBuffer();
    std::memcpy(page.before.get(), page.bytes.get(), page_size_);
    page.dirty = true;
    changed_.push_back(number);
  }
  return page.bytes.get();
}

uint32_t PageCache::Append() {
  const uint32_t number = count_++;
  groups_.resize((size_t{count_} + kGroup - 1) / kGroup);
  ++appended_;
  Page& page = At(number);
  page.bytes = NewBuffer();
  std::memset(page.bytes.get(), 0, page_size_);
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
    if (page.before) spare_.push_back(std::move(page.before));
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
    spare_.push_back(std::move(page.before));
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
    page.bytes.reset();
    --held_;
  }
  if (spare_.size() > budget_) spare_.resize(budget_);
}

}  // namespace rdv::jet
