#include "data/jet/index/index_page.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "data/jet/format/bits.h"

namespace rdv::jet {
namespace {

// The lowest set bit above `bit`; the number of bits when there is none.
size_t NextSetBit(Bytes bits, size_t bit) {
  return LowestBit(bits, bit + 1).value_or(bits.size() * 8);
}

Bytes MaskOf(const Format& format, Bytes page) {
  return page.subspan(format.index.mask, format.index.mask_size);
}

}  // namespace

int CompareEntries(Bytes left, Bytes right) {
  const size_t common = std::min(left.size(), right.size());
  const int order = common == 0 ? 0 : std::memcmp(left.data(), right.data(), common);
  if (order != 0) return order;
  return left.size() < right.size() ? -1 : left.size() > right.size() ? 1 : 0;
}

RowId LoadEntryRow(const uint8_t* from) {
  return {.page = Load24BigEndian(from), .row = from[3]};
}

void AppendRow(std::vector<uint8_t>& key, RowId row) {
  const size_t end = key.size();
  key.resize(end + kEntryRowSize);
  Store24BigEndian(&key[end], row.page);
  key.back() = row.row;
}

EntryBytes MakeEntry(Bytes key, RowId row) {
  assert(!key.empty() && row);
  EntryBytes entry;
  entry.reserve(key.size() + kEntryRowSize);
  entry.assign(key.begin(), key.end());
  AppendRow(entry, row);
  return entry;
}

size_t UsedEntryBytes(const Format& format, Bytes page) {
  const Bytes mask = MaskOf(format, page);
  return HighestBit(mask, mask.size() * 8).value_or(0);
}

IndexPageView::IndexPageView(const FileReader& file, uint32_t table_page, uint32_t number)
    : file_(&file),
      number_(number),
      page_(file.IndexPage(number, table_page)),
      mask_(MaskOf(file.Layout(), page_)),
      entries_(page_.subspan(file.Layout().index.entries)),
      child_size_(IsLeaf() ? 0 : kEntryChildSize) {
  const auto& layout = file.Layout().index;
  if (LowestBit(mask_, entries_.size() + 1))
    file.DamagedPage(number, u"marks index entries behind its end");
  const auto first = EntryAt(0);
  if (!first) return;
  first_ = *first;
  prefix_ = layout.prefix_size == 1 ? page_[layout.prefix] : Load16(&page_[layout.prefix]);
  if (prefix_ > first_.end - child_size_) {
    file.DamagedPage(number, u"shares more bytes between index entries than its first one has");
  }
}

bool IndexPageView::IsLeaf() const {
  return page_[0] == static_cast<uint8_t>(PageType::IndexLeaf);
}
uint32_t IndexPageView::Previous() const {
  return Load32(&page_[file_->Layout().index.previous]);
}
uint32_t IndexPageView::Next() const {
  return Load32(&page_[file_->Layout().index.next]);
}
uint32_t IndexPageView::Tail() const {
  return IsLeaf() ? 0 : Load32(&page_[file_->Layout().index.tail]);
}
uint8_t IndexPageView::Level() const {
  return page_[file_->Layout().index.level];
}

std::optional<EntryBounds> IndexPageView::EntryAt(size_t start) const {
  const size_t end = NextSetBit(mask_, start);
  if (end >= mask_.size() * 8) return std::nullopt;
  const size_t restored = end - start + (start == 0 ? 0 : prefix_);
  if (end > entries_.size() || end - start < child_size_ ||
      restored <= kEntryRowSize + child_size_) {
    file_->DamagedPage(number_, u"marks an index entry that cannot be");
  }
  return EntryBounds{start, end};
}

size_t IndexPageView::Used() const {
  return UsedEntryBytes(file_->Layout(), page_);
}

bool IndexPageView::IsBoundary(size_t offset) const {
  return offset == 0 || (offset <= Used() && (mask_[offset / 8] >> (offset % 8) & 1) != 0);
}

std::optional<EntryBounds> IndexPageView::WayTo(Bytes key) const {
  const std::optional<EntryBounds> found = LowerBound(key);
  if (found || Tail() != 0) return found;
  const size_t used = Used();
  if (used == 0) return std::nullopt;
  return EntryAt(HighestBit(mask_, used).value_or(0));
}

std::optional<EntryBounds> IndexPageView::LowerBound(Bytes key) const {
  if (first_.end == 0) return std::nullopt;
  if (CompareEntries(WithoutChild(first_), key) >= 0) return first_;
  // Since the first entry is below the key, what all entries begin with is below it too or begins
  // it; then what they do not share decides.
  if (prefix_ > key.size() || CompareEntries(entries_.first(prefix_), key.first(prefix_)) != 0) {
    return std::nullopt;
  }
  return LowerBoundBehindFirst(key.subspan(prefix_));
}

// Halves the bytes between entries that are below and one that is not; the mask tells which entry
// the middle belongs to. Entries mostly come in order, so the one is tried first that is the last
// by what the page says of its free bytes; nothing but speed depends on that.
std::optional<EntryBounds> IndexPageView::LowerBoundBehindFirst(Bytes rest) const {
  size_t below = first_.end;
  size_t end = std::min(entries_.size() + 1, mask_.size() * 8);
  std::optional<EntryBounds> found;
  const size_t free = std::min<size_t>(Load16(&page_[kPageFreeBytes]), entries_.size() - 1);
  size_t middle = entries_.size() - free - 1;
  if (middle < below) middle = below;
  for (; below < end; middle = below + (end - below) / 2) {
    const size_t start = HighestBit(mask_, middle + 1).value_or(0);
    const auto entry = EntryAt(start);
    if (entry && CompareEntries(WithoutChild(*entry), rest) < 0) {
      below = entry->end;
    } else {
      found = entry;
      end = start;  // without an entry, where the last one ends
    }
  }
  return found;
}

void IndexPageView::Restore(EntryBounds entry, std::vector<uint8_t>& to) const {
  const size_t prefix = entry.start == 0 ? 0 : prefix_;
  to.resize(prefix + entry.end - entry.start);
  std::copy_n(entries_.data(), prefix, to.begin());
  std::copy(entries_.data() + entry.start, entries_.data() + entry.end,
            to.begin() + static_cast<ptrdiff_t>(prefix));
}

uint32_t IndexPageView::Child(EntryBounds entry) const {
  return Load32BigEndian(&entries_[entry.end - kEntryChildSize]);
}

}  // namespace rdv::jet
