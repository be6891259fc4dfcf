#include "data/jet/index/index_page_writer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

namespace rdv::jet {
namespace {

constexpr size_t kTypicalEntries = 256;  // what is set aside for a page's at first

// The entry mask as one number of many bits, so that entries behind a change move their marks by
// shifting it. Only the words from that of bit `from` to that of bit `to` are taken.
class MaskBits {
 public:
  MaskBits(std::span<uint8_t> mask, size_t from, size_t to)
      : mask_(mask), first_(from / 64), last_(to / 64) {
    assert(first_ <= last_ && last_ < kWords && to / 8 < mask.size());
    for (size_t i = first_; i < last_; ++i) words_[i] = Load64(&mask[i * 8]);
    for (size_t byte = last_ * 8; byte < std::min(mask.size(), last_ * 8 + 8); ++byte)
      words_[last_] |= uint64_t{mask[byte]} << (byte % 8 * 8);
  }
  void Store() const {
    for (size_t i = first_; i < last_; ++i) Store64(&mask_[i * 8], words_[i]);
    for (size_t byte = last_ * 8; byte < std::min(mask_.size(), last_ * 8 + 8); ++byte)
      mask_[byte] = static_cast<uint8_t>(words_[last_] >> (byte % 8 * 8));
  }

  void Set(size_t bit) { words_[bit / 64] |= uint64_t{1} << (bit % 64); }

  // The bits from `from`, which is one of the first word, move up by `count`; zeros come in.
  void MoveUp(size_t from, size_t count) {
    const size_t first = first_;
    const uint64_t kept = words_[first] & Below(from, first);
    words_[first] ^= kept;
    const size_t words = count / 64;
    const size_t bits = count % 64;
    for (size_t i = last_; i > first + words; --i)
      words_[i] = Joined(words_[i - words - 1], words_[i - words], bits);
    words_[first + words] = words_[first] << bits;
    for (size_t i = first; i < first + words; ++i) words_[i] = 0;
    words_[first] |= kept;
  }

  // The bits from `from` + `count` move down by `count`, over those from `from` on.
  void MoveDown(size_t from, size_t count) {
    const size_t first = first_;
    const uint64_t kept = words_[first] & Below(from, first);
    const size_t words = count / 64;
    const size_t bits = count % 64;
    for (size_t i = first; i <= last_; ++i) {
      const uint64_t low = i + words <= last_ ? words_[i + words] : 0;
      const uint64_t high = i + words < last_ ? words_[i + words + 1] : 0;
      words_[i] = bits == 0 ? low : low >> bits | high << (64 - bits);
    }
    words_[first] = (words_[first] & ~Below(from, first)) | kept;
  }

 private:
  // What has moved up by `bits` into the place of `high`.
  static uint64_t Joined(uint64_t low, uint64_t high, size_t bits) {
    return bits == 0 ? high : high << bits | low >> (64 - bits);
  }
  // The bits of word `word` that are below bit `end` of the whole.
  static uint64_t Below(size_t end, size_t word) {
    if (end <= word * 64) return 0;
    const size_t bits = end - word * 64;
    return bits >= 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
  }

  static constexpr size_t kWords = 58;  // 453 bytes and a little
  std::span<uint8_t> mask_;
  size_t first_;
  size_t last_;
  std::array<uint64_t, kWords> words_{};
};

size_t CommonPrefix(Bytes left, Bytes right) {
  const size_t limit = std::min(left.size(), right.size());
  return static_cast<size_t>(
      std::mismatch(left.begin(), left.begin() + static_cast<ptrdiff_t>(limit), right.begin())
          .first -
      left.begin());
}

// The bytes that the keys from `first` up to `last` have in common. As they are in order, the first
// and the last decide.
size_t LargestPrefix(const IndexPageImage& image, size_t first, size_t last) {
  if (last - first < 2) return 0;
  const auto key = [&](size_t entry) {
    const Bytes bytes = image.WithoutChild(entry);
    return bytes.first(bytes.size() - kEntryRowSize);
  };
  return CommonPrefix(key(first), key(last - 1));
}

size_t StoredSize(const IndexPageImage& image, size_t first, size_t last, size_t prefix) {
  size_t size = 0;
  for (size_t i = first; i < last; ++i) size += image.entries[i].size() - (i > first ? prefix : 0);
  return size;
}

size_t EntryAreaSize(const Format& format) {
  return format.page_size - format.index.entries;
}

void StoreFreeBytes(const Format& format, uint8_t* page, size_t used) {
  Store16(page + kPageFreeBytes, static_cast<uint16_t>(EntryAreaSize(format) - used));
}

// What all that divides and encodes entries relies on: that the first and the last one decide what
// those between them share.
void RequireOrder(const WriteContext& context, uint32_t number, const IndexPageImage& image) {
  for (size_t i = 1; i < image.entries.size(); ++i) {
    if (CompareEntries(image.WithoutChild(i - 1), image.WithoutChild(i)) >= 0)
      context.file.DamagedPage(number, u"has index entries out of order");
  }
}

}  // namespace

EntryBytes MakeNodeEntry(Bytes key_and_row, uint32_t child) {
  EntryBytes entry(key_and_row.size() + kEntryChildSize);
  std::ranges::copy(key_and_row, entry.begin());
  Store32BigEndian(entry.data() + key_and_row.size(), child);
  return entry;
}

IndexPageImage LoadIndexPage(const WriteContext& context, uint32_t table_page, uint32_t number) {
  const IndexPageView view(context.file, table_page, number);
  IndexPageImage image;
  image.leaf = view.IsLeaf();
  image.level = view.Level();
  image.previous = view.Previous();
  image.next = view.Next();
  image.tail = view.Tail();
  image.prefix = view.Prefix();
  image.entries.reserve(kTypicalEntries);
  for (auto bounds = view.EntryAt(0); bounds; bounds = view.EntryAt(bounds->end)) {
    view.Restore(*bounds, image.entries.emplace_back());
    context.file.Charge(image.entries.back().size());
  }
  RequireOrder(context, number, image);
  return image;
}

bool StoreIndexPage(const WriteContext& context, uint32_t table_page, uint32_t number,
                    const IndexPageImage& image) {
  RequireOrder(context, number, image);
  const Format& format = context.Layout();
  const size_t count = image.entries.size();
  const size_t area = EntryAreaSize(format);
  const size_t largest = LargestPrefix(image, 0, count);
  size_t prefix = std::min(image.prefix, largest);
  // Nodes stay as they are read everywhere: without a prefix.
  if (image.leaf && StoredSize(image, 0, count, prefix) > area) prefix = largest;
  if (StoredSize(image, 0, count, prefix) > area) return false;

  uint8_t* page = context.pager.Edit(number);
  std::memset(page, 0, format.index.entries);
  page[0] = static_cast<uint8_t>(image.leaf ? PageType::IndexLeaf : PageType::IndexNode);
  page[1] = kPageMark;
  Store32(page + kPageOwner, table_page);
  Store32(page + format.index.previous, image.previous);
  Store32(page + format.index.next, image.next);
  Store32(page + format.index.tail, image.tail);
  Store16(page + format.index.prefix, static_cast<uint16_t>(prefix));
  page[format.index.level] = image.level;
  uint8_t* mask = page + format.index.mask;
  uint8_t* const entries = page + format.index.entries;
  size_t used = 0;
  for (size_t i = 0; i < count; ++i) {
    const Bytes stored = Bytes(image.entries[i]).subspan(i > 0 ? prefix : 0);
    std::memcpy(entries + used, stored.data(), stored.size());
    used += stored.size();
    mask[used / 8] |= static_cast<uint8_t>(1u << (used % 8));
  }
  assert(used <= area);
  StoreFreeBytes(format, page, used);
  return true;
}

bool FitsIndexPage(const Format& format, const IndexPageImage& image, size_t first, size_t last) {
  const size_t prefix = image.leaf ? LargestPrefix(image, first, last) : 0;
  return StoredSize(image, first, last, prefix) <= EntryAreaSize(format);
}

bool InsertEntryInPlace(const WriteContext& context, uint32_t table_page, uint32_t number,
                        size_t offset, Bytes entry) {
  assert(entry.size() > kEntryRowSize);
  const Format& format = context.Layout();
  const IndexPageView view(context.file, table_page, number);
  if (!view.IsLeaf() || !view.IsBoundary(offset))
    context.file.DamagedPage(number, u"has no place for an index entry where one was found");
  const size_t used = view.Used();
  const size_t prefix = view.Prefix();
  uint8_t* page = context.pager.Edit(number);
  uint8_t* const entries = page + format.index.entries;
  const bool shares = prefix <= entry.size() - kEntryRowSize &&
                      std::equal(entries, entries + prefix, entry.begin());
  if (!shares || (offset == 0 && prefix > 0)) return false;
  const Bytes stored = entry.subspan(prefix);
  if (used + stored.size() > EntryAreaSize(format)) return false;

  std::memmove(entries + offset + stored.size(), entries + offset, used - offset);
  std::memcpy(entries + offset, stored.data(), stored.size());
  const std::span<uint8_t> mask(page + format.index.mask, format.index.mask_size);
  const size_t end = offset + stored.size();
  if (offset == used) {
    mask[end / 8] |= static_cast<uint8_t>(1u << (end % 8));
  } else {
    MaskBits bits(mask, offset + 1, used + stored.size());
    bits.MoveUp(offset + 1, stored.size());
    bits.Set(end);
    bits.Store();
  }
  if (used == 0) Store16(page + format.index.prefix, 0);
  StoreFreeBytes(format, page, used + stored.size());
  return true;
}

bool RemoveEntryInPlace(const WriteContext& context, uint32_t table_page, uint32_t number,
                        EntryBounds entry) {
  const Format& format = context.Layout();
  const IndexPageView view(context.file, table_page, number);
  const size_t used = view.Used();
  assert(entry.start < entry.end && entry.end <= used);
  // The entry that comes first next would have to be completed.
  if (entry.start == 0 && entry.end < used && view.Prefix() > 0) return false;
  uint8_t* page = context.pager.Edit(number);
  uint8_t* const entries = page + format.index.entries;
  const size_t size = entry.end - entry.start;
  std::memmove(entries + entry.start, entries + entry.end, used - entry.end);
  const std::span<uint8_t> mask(page + format.index.mask, format.index.mask_size);
  MaskBits bits(mask, entry.start + 1, used);
  bits.MoveDown(entry.start + 1, size);
  bits.Store();
  StoreFreeBytes(format, page, used - size);
  return true;
}

}  // namespace rdv::jet
