#include "data/jet/file/journal_record.h"

#include <bit>
#include <cassert>
#include <cstring>

namespace rdv::jet {
namespace {

constexpr std::array<uint8_t, 8> kHeadMark = {'R', 'D', 'V', 'J', 'R', 'N', 'L', '3'};
constexpr std::array<uint8_t, 8> kFlushFailedMark = {'R', 'D', 'V', 'J', 'R', 'N', 'L', 'F'};
constexpr size_t kSaltAt = 8;
constexpr size_t kPageSizeAt = 16;
constexpr size_t kPageCountAt = 20;
constexpr size_t kIdentityAt = 24;
constexpr size_t kHeadSumAt = 32;
constexpr size_t kSessionAt = 40;
constexpr size_t kFileAt = 48;
constexpr size_t kWordsAt = 512;
static_assert(kWordsAt + CommitWords::kSize == JournalHead::kSize);

constexpr uint32_t kRecordMark = 0x544D5453;
constexpr size_t kNumberAt = 4;
constexpr size_t kFollowsAt = 8;
constexpr size_t kOldPagesAt = 12;
constexpr size_t kNewPagesAt = 16;
constexpr size_t kPagesBeforeAt = 20;
constexpr size_t kPagesAfterAt = 24;
constexpr size_t kWordBeforeAt = 28;
constexpr size_t kWordAfterAt = 30;
constexpr size_t kAtRestAt = 32;
constexpr size_t kLengthAt = 36;
constexpr size_t kRecordSumAt = 40;
constexpr size_t kEntriesAt = 48;

constexpr size_t kEntrySize = 16;
constexpr size_t kStartAt = 4;
constexpr size_t kPartLengthAt = 6;
constexpr size_t kSumAfterAt = 8;

uint64_t ToSector(uint64_t size) {
  return (size + kJournalSector - 1) / kJournalSector * kJournalSector;
}

// Of `bytes`, the eight at `hole` counting as zeros.
uint64_t SumWithout(Bytes bytes, size_t hole, uint64_t seed) {
  const uint64_t before = ContentSum(bytes.first(hole), seed);
  return ContentSum(bytes.subspan(hole + sizeof(uint64_t)), before);
}

}  // namespace

// Four independent sums, so that the processor works on all of them at once.
uint64_t ContentSum(Bytes bytes, uint64_t seed) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::array<uint64_t, 4> sums = {seed + 1, seed + 2, seed + 3, seed + 4};
  const auto take = [&](size_t lane, size_t at) {
    sums[lane] = std::rotl(sums[lane] ^ Load64(bytes.data() + at), 29) * kFactor;
  };
  size_t position = 0;
  for (; position + 32 <= bytes.size(); position += 32) {
    for (size_t lane = 0; lane < sums.size(); ++lane) take(lane, position + 8 * lane);
  }
  for (size_t lane = 0; position + 8 <= bytes.size(); position += 8, ++lane) take(lane, position);
  for (; position < bytes.size(); ++position) sums[0] = (sums[0] ^ bytes[position]) * kFactor;
  uint64_t total = bytes.size();
  for (const uint64_t sum : sums) total = std::rotl(total ^ sum, 31) * kFactor;
  return total ^ total >> 32;
}

std::array<uint8_t, JournalHead::kMarkSize> MarkOf(const JournalHead& head) {
  std::array<uint8_t, JournalHead::kMarkSize> mark;
  std::ranges::copy(head.flush_failed ? kFlushFailedMark : kHeadMark, mark.begin());
  Store64(&mark[kSaltAt], head.salt);
  return mark;
}

void AppendHead(const JournalHead& head, std::vector<uint8_t>& to) {
  const size_t start = to.size();
  to.resize(start + JournalHead::kSize);
  assert(!head.flush_failed);
  uint8_t* at = to.data() + start;
  std::ranges::copy(MarkOf(head), at);
  Store32(at + kPageSizeAt, head.page_size);
  Store32(at + kPageCountAt, head.page_count);
  Store64(at + kIdentityAt, head.identity);
  Store64(at + kSessionAt, head.origin.session);
  Store64(at + kFileAt, head.origin.file);
  std::ranges::copy(head.words.Stored(), at + kWordsAt);
  Store64(at + kHeadSumAt, SumWithout({at, JournalHead::kSize}, kHeadSumAt, 0));
}

std::optional<JournalHead> ParseHead(Bytes bytes) {
  if (bytes.size() < JournalHead::kSize) return std::nullopt;
  // As it was written.
  std::array<uint8_t, JournalHead::kSize> head{};
  std::ranges::copy(bytes.first(JournalHead::kSize), head.begin());
  const bool flush_failed = std::ranges::equal(bytes.first(kHeadMark.size()), kFlushFailedMark);
  if (flush_failed) std::ranges::copy(kHeadMark, head.begin());
  bytes = head;
  if (!std::ranges::equal(bytes.first(kHeadMark.size()), kHeadMark)) return std::nullopt;
  if (Load64(&bytes[kHeadSumAt]) != SumWithout(bytes, kHeadSumAt, 0)) return std::nullopt;
  return JournalHead{
      .salt = Load64(&bytes[kSaltAt]),
      .flush_failed = flush_failed,
      .page_size = Load32(&bytes[kPageSizeAt]),
      .page_count = Load32(&bytes[kPageCountAt]),
      .identity = Load64(&bytes[kIdentityAt]),
      .origin = {.session = Load64(&bytes[kSessionAt]), .file = Load64(&bytes[kFileAt])},
      .words = CommitWords(bytes.subspan(kWordsAt))};
}

void AppendRecord(const JournalRecord& record, uint64_t salt, std::vector<uint8_t>& to) {
  assert(to.size() % kJournalSector == 0);
  const size_t start = to.size();
  const size_t old_count = record.old_pages.size() + record.kept_pages.size();
  size_t length = kEntriesAt + (old_count + record.new_pages.size()) * kEntrySize;
  for (const auto* pages : {&record.old_pages, &record.kept_pages}) {
    for (const JournalPage& page : *pages) length += page.length;
  }
  length = static_cast<size_t>(ToSector(length));
  to.resize(start + length);
  uint8_t* const at = to.data() + start;
  Store32(at, kRecordMark);
  Store32(at + kNumberAt, record.number);
  Store32(at + kFollowsAt, record.follows);
  Store32(at + kOldPagesAt, static_cast<uint32_t>(old_count));
  Store32(at + kNewPagesAt, static_cast<uint32_t>(record.new_pages.size()));
  Store32(at + kPagesBeforeAt, record.pages_before);
  Store32(at + kPagesAfterAt, record.pages_after);
  Store16(at + kWordBeforeAt, record.word_before);
  Store16(at + kWordAfterAt, record.word_after);
  Store32(at + kAtRestAt, record.others_at_rest ? 1 : 0);
  Store32(at + kLengthAt, static_cast<uint32_t>(length));
  uint8_t* entry = at + kEntriesAt;
  for (const auto* pages : {&record.old_pages, &record.kept_pages, &record.new_pages}) {
    for (const JournalPage& page : *pages) {
      Store32(entry, page.number);
      Store16(entry + kStartAt, page.start);
      Store16(entry + kPartLengthAt, page.length);
      Store64(entry + kSumAfterAt, page.sum_after);
      entry += kEntrySize;
    }
  }
  for (const auto* pages : {&record.old_pages, &record.kept_pages}) {
    for (const JournalPage& page : *pages) {
      assert(page.before.size() == page.length && page.length > 0);
      std::memcpy(entry, page.before.data(), page.length);
      entry += page.length;
    }
  }
  Store64(at + kRecordSumAt, SumWithout({at, length}, kRecordSumAt, salt));
}

bool IsRecordMark(Bytes bytes) {
  return bytes.size() >= sizeof(uint32_t) && Load32(bytes.data()) == kRecordMark;
}

std::optional<ParsedRecord> ParseRecord(Bytes bytes, uint32_t number, const JournalHead& head) {
  if (bytes.size() < kEntriesAt || !IsRecordMark(bytes)) return std::nullopt;
  ParsedRecord parsed;
  parsed.length = Load32(&bytes[kLengthAt]);
  const size_t old_count = Load32(&bytes[kOldPagesAt]);
  const size_t new_count = Load32(&bytes[kNewPagesAt]);
  const size_t largest = bytes.size() / kEntrySize;
  const bool fits = parsed.length <= bytes.size() && parsed.length % kJournalSector == 0 &&
                    old_count <= largest && new_count <= largest &&
                    kEntriesAt + (old_count + new_count) * kEntrySize <= parsed.length;
  if (!fits) return std::nullopt;
  bytes = bytes.first(parsed.length);
  if (Load64(&bytes[kRecordSumAt]) != SumWithout(bytes, kRecordSumAt, head.salt))
    return std::nullopt;
  JournalRecord& record = parsed.record;
  record.number = Load32(&bytes[kNumberAt]);
  record.follows = Load32(&bytes[kFollowsAt]);
  record.pages_before = Load32(&bytes[kPagesBeforeAt]);
  record.pages_after = Load32(&bytes[kPagesAfterAt]);
  record.word_before = Load16(&bytes[kWordBeforeAt]);
  record.word_after = Load16(&bytes[kWordAfterAt]);
  record.others_at_rest = Load32(&bytes[kAtRestAt]) != 0;
  if (record.number != number || record.follows >= number) return std::nullopt;
  size_t part = kEntriesAt + (old_count + new_count) * kEntrySize;
  for (size_t i = 0; i < old_count + new_count; ++i) {
    const uint8_t* entry = &bytes[kEntriesAt + i * kEntrySize];
    JournalPage page{.number = Load32(entry),
                     .start = Load16(entry + kStartAt),
                     .length = Load16(entry + kPartLengthAt),
                     .sum_after = Load64(entry + kSumAfterAt),
                     .before = {}};
    const bool inside = size_t{page.start} + page.length <= head.page_size &&
                        part + page.length <= bytes.size() && page.number > 0;
    if (!inside) return std::nullopt;
    page.before = bytes.subspan(part, page.length);
    part += page.length;
    (i < old_count ? record.old_pages : record.new_pages).push_back(page);
  }
  return parsed;
}

}  // namespace rdv::jet
