// What the journal consists of: a head, and behind it a record for each statement.
//
// Everything begins at a multiple of 512 bytes, so that a torn write of one part spoils no other.
//
// HEAD (1024 bytes, little-endian)
//   OFFSET SIZE MEANING
//   0      8    mark; another one once a flush has failed; zeros when the journal is not valid
//   8      8    salt, another one each time a journal is begun
//   16     4    page size
//   20     4    pages of the database file when the journal was begun
//   24     8    identity of the database file
//   32     8    checksum of the head, this counting as zeros
//   40     8    the computer's session in which it was begun, 0 when that is not known
//   48     8    which file the database file is in that session
//   512    512  commit words when the journal was begun
//
// RECORD
//   0      4    mark
//   4      4    number: 1, 2, ...
//   8      4    the record whose statement was the last to finish before this one; 0 for none
//   12     4    parts of old pages
//   16     4    new pages
//   20     4    pages of the file before the statement
//   24     4    and after it
//   28     2    first commit word before the statement
//   30     2    and after it
//   32     4    1: all other commit words are at rest after it
//   36     4    length of the record in bytes
//   40     8    checksum of the record, seeded with the salt, this counting as zeros
//   48     16   for each part of an old page, then for each new page:
//                 u32 page, u16 start of the part, u16 its length, u64 sum of the page afterwards
//   then        the parts as they were before the statement
//
// A part is what the statement changes of its page: whatever became of the page meanwhile, the part
// put in its place makes it what it was. The first part that a journal has of a page is the whole
// page.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/commit_words.h"
#include "data/jet/file/file.h"
#include "data/jet/format/bytes.h"

namespace rdv::jet {

inline constexpr size_t kJournalSector = 512;

// How many records may be added before they are flushed.
inline constexpr uint32_t kMostUnflushedStatements = 64;
// How many commit words may be in the file that a journal whose end was lost knows nothing of: a
// statement that fails takes a second one, for what was before it. After them comes the one that
// putting back gives.
inline constexpr uint32_t kMostLostWords = 2 * kMostUnflushedStatements;

// Tells contents apart; guards against what was cut off or lost, not against malice.
uint64_t ContentSum(Bytes bytes, uint64_t seed = 0);

struct JournalHead {
  static constexpr size_t kSize = 2 * kJournalSector;
  static constexpr size_t kMarkSize = 16;

  uint64_t salt = 0;
  bool flush_failed = false;  // of the journal or of the database since it was begun
  uint32_t page_size = 0;
  uint32_t page_count = 0;
  uint64_t identity = 0;
  FileOrigin origin;
  CommitWords words;
};

struct JournalPage {
  uint32_t number = 0;
  uint16_t start = 0;
  uint16_t length = 0;  // 0 for a new page
  uint64_t sum_after = 0;
  Bytes before;  // `length` bytes
};

struct JournalRecord {
  uint32_t number = 0;
  uint32_t follows = 0;
  uint32_t pages_before = 0;
  uint32_t pages_after = 0;
  uint16_t word_before = 0;
  uint16_t word_after = 0;
  bool others_at_rest = false;
  std::vector<JournalPage> old_pages;
  // Whole ones that the statement leaves as they are: what is stored tells them from old ones by
  // their sums only, and none is read back as kept.
  std::vector<JournalPage> kept_pages;
  std::vector<JournalPage> new_pages;
};

// What a head begins with: tells a journal that was valid once from all others, and from itself
// when a flush has failed or it is not valid any more.
std::array<uint8_t, JournalHead::kMarkSize> MarkOf(const JournalHead& head);
void AppendHead(const JournalHead& head, std::vector<uint8_t>& to);
std::optional<JournalHead> ParseHead(Bytes bytes);

// At a sector's beginning in `to`, which begins with one.
void AppendRecord(const JournalRecord& record, uint64_t salt, std::vector<uint8_t>& to);

// Whether something begins there that may be a record.
bool IsRecordMark(Bytes bytes);

// The record with the given number at the beginning of `bytes`, and its length in bytes; nothing
// when what is there is none or was not written to its end. It refers to `bytes`.
struct ParsedRecord {
  JournalRecord record;
  size_t length = 0;
};
std::optional<ParsedRecord> ParseRecord(Bytes bytes, uint32_t number, const JournalHead& head);

}  // namespace rdv::jet
