// How a statement's changes get from the cache into the file: all of them or none.
//
// The steps, for the statement that has the file to itself:
//   1. the journal gets a record, flushed where it holds pages as a whole for the first time;
//   2. the first commit word becomes 0: "being written";
//   3. each changed page is written, once: new ones first, until then nobody's; then a page that
//   rows
//      have left after those that have got them;
//   4. the first commit word becomes one more than before.
//
// What holds at every moment, whatever reaches the disk of what was not flushed:
//   1. The file or the journal has every page as it was when the journal was begun, and the journal
//      says which are which.
//   2. Between statements the first commit word is at rest, and another one than in any state of
//   the
//      file that was there before.
//   3. A file without a journal is as after the last statement of a journal that ended.
#pragma once

#include <cstdint>
#include <span>

#include "data/jet/file/commit_words.h"
#include "data/jet/file/file.h"
#include "data/jet/file/journal.h"
#include "data/jet/file/page_cache.h"
#include "data/jet/file/page_order.h"

namespace rdv::jet {

// The open database, as far as it does not change while it is open.
struct DatabaseFile {
  File* content = nullptr;
  Text path;  // the one spelling
  uint64_t identity = 0;
  uint32_t page_size = 0;
  uint64_t words_at = 0;
};

// Every call raises FileError and is to be made with the file locked exclusively.
class Transaction {
 public:
  Transaction(FileSystem& files, const Text& database_path) : journal_(files, database_path) {}

  // Writes what the cache has changed. `expected`: pages in memory that statements to come are
  // likely to change; they come into the journal with this one's if that is flushed, so that it
  // need not be for each of them. `words`: those in the file; those that it has now, also when the
  // call raises, as far as that is known. `mends`: makes all of them those of a file at rest. When
  // it raises, the file is as it was; where even that fails, the first commit word and the journal
  // are there for whoever begins the next statement.
  void Write(const DatabaseFile& database, PageCache& cache, PageOrder& order,
             std::span<const uint32_t> expected, CommitWords& words, bool mends);

  // What a file is to have after mending.
  static CommitWords Mended(const CommitWords& words) {
    return CommitWords::AtRest(NextCommitWord(words.Highest()));
  }

  Journal& Log() { return journal_; }
  // What was done, for measurements.
  uint64_t PagesWritten() const { return pages_written_; }
  uint64_t Commits() const { return commits_; }
  uint64_t Flushes() const { return flushes_ + journal_.Flushes(); }
  // After a flush that failed nobody can tell what the disk has, and the next one may succeed all
  // the same: it does not count unless all that was changed has been `rewritten`.
  void FlushDatabase(File& file, bool rewritten = false);

 private:
  void PrepareJournal(const DatabaseFile& database, const CommitWords& words, uint32_t page_count);
  JournalRecord Describe(const DatabaseFile& database, PageCache& cache) const;
  void Keep(const DatabaseFile& database, PageCache& cache, std::span<const uint32_t> expected,
            JournalRecord& record) const;
  static void WritePages(const DatabaseFile& database, const JournalRecord& record,
                         PageCache& cache, PageOrder& order);
  void Undo(const DatabaseFile& database, const JournalRecord& record, PageCache& cache,
            CommitWords& words);

  Journal journal_;
  uint64_t pages_written_ = 0;
  uint64_t commits_ = 0;
  uint64_t flushes_ = 0;
  bool spoiled_ = false;  // a flush of the database has failed
};

}  // namespace rdv::jet
