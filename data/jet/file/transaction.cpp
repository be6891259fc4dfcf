#include "data/jet/file/transaction.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <chrono>
#include <random>
#include <utility>
#include <vector>

#include "data/jet/file/recovery.h"

namespace rdv::jet {
namespace {

// Unlike that of any other journal with this name.
uint64_t NewSalt() {
  std::random_device random;
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  return (uint64_t{random()} << 32 | random()) ^ static_cast<uint64_t>(now);
}

// From the first to behind the last byte in which they differ.
std::pair<size_t, size_t> Difference(const uint8_t* before, const uint8_t* after, size_t size) {
  constexpr size_t kStep = sizeof(uint64_t);
  size_t start = 0;
  while (start < size && Load64(before + start) == Load64(after + start)) start += kStep;
  size_t end = size;
  while (end > start && Load64(before + end - kStep) == Load64(after + end - kStep)) end -= kStep;
  return {start, end};
}

[[noreturn]] void RaiseSpoiled() {
  throw FileError(FileProblem::Other,
                  "the disk did not take what was written before; the file has to be opened again");
}

}  // namespace

void Transaction::FlushDatabase(File& file, bool rewritten) {
  if (spoiled_ && !rewritten) RaiseSpoiled();
  spoiled_ = true;
  ++flushes_;
  file.Flush();
  spoiled_ = false;
}

void Transaction::Write(const DatabaseFile& database, PageCache& cache, PageOrder& order,
                        std::span<const uint32_t> expected, CommitWords& words, bool mends) {
  File& file = *database.content;
  if (!file.Bears(database.path))
    throw FileError(FileProblem::Other, "another file has its name by now; nothing was written");
  if (spoiled_) RaiseSpoiled();
  PrepareJournal(database, words, cache.CountBefore());
  JournalRecord record = Describe(database, cache);
  if (record.old_pages.empty() && record.new_pages.empty() && !mends) return;
  if (journal_.Flushes(record)) Keep(database, cache, expected, record);
  CommitWords after = mends ? Mended(words) : words;
  after.SetFirst(mends ? after.First() : NextCommitWord(words.First()));
  record.word_before = words.First();
  record.word_after = after.First();
  record.others_at_rest = mends;
  journal_.Add(record, file);
  try {
    CommitWords writing = words;
    writing.SetFirst(kCommitWriting);
    WriteCommitWords(file, words, writing, database.words_at);
    WritePages(database, record, cache, order);
    WriteCommitWords(file, words, after, database.words_at);
  } catch (const FileError&) {
    Undo(database, record, cache, words);
    throw;
  }
  words = after;
  journal_.Finish(words);
  pages_written_ += record.old_pages.size() + record.new_pages.size();
  ++commits_;
}

// When the journal is not to be added to, all that it is about is brought to the disk and the next
// one begun.
void Transaction::PrepareJournal(const DatabaseFile& database, const CommitWords& words,
                                 uint32_t page_count) {
  const JournaledFile now = {database.identity, database.page_size, page_count};
  switch (journal_.Look(words, now)) {
    case Journal::State::Live:
      return;
    case Journal::State::Past:
      try {
        FlushDatabase(*database.content);
      } catch (const FileError&) {
        journal_.SayFlushFailed();
        throw;
      }
      journal_.Discard();
      break;
    case Journal::State::None:
      break;
  }
  journal_.Begin({.salt = NewSalt(),
                  .page_size = database.page_size,
                  .page_count = page_count,
                  .identity = database.identity,
                  .origin = database.content->Origin(),
                  .words = words});
}

JournalRecord Transaction::Describe(const DatabaseFile& database, PageCache& cache) const {
  JournalRecord record;
  record.pages_before = cache.CountBefore();
  record.pages_after = cache.Count();
  std::vector<uint32_t>& changed = cache.Changed();
  std::ranges::sort(changed);
  for (const uint32_t number : changed) {
    const PageCache::Page& page = cache.At(number);
    assert(number > 0 && page.dirty && page.bytes);
    const uint8_t* const bytes = page.bytes;
    JournalPage part{.number = number,
                     .start = 0,
                     .length = 0,
                     .sum_after = ContentSum({bytes, database.page_size}),
                     .before = {}};
    if (number >= record.pages_before) {
      record.new_pages.push_back(part);
      continue;
    }
    assert(page.before);
    const uint8_t* const before = page.before;
    auto [start, end] = Difference(before, bytes, database.page_size);
    if (start == end) continue;
    if (journal_.IsNew(number))
      std::tie(start, end) = std::pair<size_t, size_t>(0, database.page_size);
    part.start = static_cast<uint16_t>(start);
    part.length = static_cast<uint16_t>(end - start);
    part.before = Bytes(before + start, end - start);
    record.old_pages.push_back(part);
  }
  return record;
}

void Transaction::Keep(const DatabaseFile& database, PageCache& cache,
                       std::span<const uint32_t> expected, JournalRecord& record) const {
  for (const uint32_t number : expected) {
    const PageCache::Page& page = cache.At(number);
    if (page.dirty || !journal_.IsNew(number)) continue;
    const Bytes content(page.bytes, database.page_size);
    record.kept_pages.push_back({.number = number,
                                 .start = 0,
                                 .length = static_cast<uint16_t>(content.size()),
                                 .sum_after = ContentSum(content),
                                 .before = content});
  }
}

void Transaction::WritePages(const DatabaseFile& database, const JournalRecord& record,
                             PageCache& cache, PageOrder& order) {
  const auto write = [&](uint32_t number) {
    database.content->WriteAt(uint64_t{number} * database.page_size,
                              Bytes(cache.At(number).bytes, database.page_size));
  };
  for (const JournalPage& page : record.new_pages) write(page.number);
  std::vector<uint32_t> old_pages;
  for (const JournalPage& page : record.old_pages) old_pages.push_back(page.number);
  if (!order.Empty()) {
    order.Rank();
    std::ranges::stable_sort(old_pages, {}, [&](uint32_t page) { return order.RankOf(page); });
  }
  std::ranges::for_each(old_pages, write);
}

// What was written of a statement that failed is put back at once. A file that was suspect is so
// again.
void Transaction::Undo(const DatabaseFile& database, const JournalRecord& record, PageCache& cache,
                       CommitWords& words) {
  FileState state{.pages = {}, .page_count = record.pages_before, .words = words};
  for (const JournalPage& page : record.old_pages) {
    const uint8_t* const before = cache.At(page.number).before;
    state.pages[page.number].assign(before, before + database.page_size);
  }
  if (IsAtRest(words.First())) state.words.SetFirst(NextCommitWord(record.word_after));
  try {
    // All words are written: of a mending there may be any.
    PutBack(*database.content, state, database.page_size, CommitWords(), database.words_at,
            [&] { FlushDatabase(*database.content); });
    words = state.words;
    journal_.Finish(words);
  } catch (const FileError&) {
    // Whoever begins the next statement puts it back.
  }
}

}  // namespace rdv::jet
