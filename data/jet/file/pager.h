// The pages of an open database file: kept in memory from statement to statement, changed there,
// and written back all together or not at all.
//
// What holds at every moment, also when the process ends there (the operating system keeps running,
// so what was written to the file is in it):
//   1. Pages are changed in memory only until Commit.
//   2. Before Commit changes the file, the journal beside it holds every page that is about to
//      change as it was, the size of the file and the commit words.
//   3. From before the first page is changed until after the last, the first commit word is 0.
//   4. So a first commit word other than 0 says that the pages are those of a whole statement, and
//      a 0 that the writer is at work or is dead. Writers at work are excluded by the lock; whoever
//      has the lock and finds a 0 puts the pages of the journal back, then the commit words.
//      Putting back may be cut off and done again.
//   5. Each commit changes the first commit word, so pages in memory are good as long as it (and
//      the file's size and date) are those that they were read with.
// Nothing is flushed before Close: a loss of power may lose the statements since the last one that
// closed its connection, and may leave the file needing repair.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "data/jet/file/file.h"
#include "data/jet/file/file_lock.h"
#include "data/jet/file/journal.h"
#include "data/jet/file/page_cache.h"
#include "data/jet/file/page_order.h"
#include "data/jet/file/page_source.h"
#include "data/jet/format/format.h"
#include "data/jet/format/header.h"

namespace rdv::jet {

// What has been done since the file was opened, for tests and measurements.
struct PagerCounters {
  uint64_t pages_read = 0;
  uint64_t pages_written = 0;
  uint64_t commits = 0;
  uint64_t flushes = 0;
};

// Raises the engine's errors; those of the operating system come as such.
class Pager : public PageSource {
 public:
  // Reads the header page and nothing else, after mending what a dead writer left behind. A file
  // that cannot be opened for writing is opened for reading.
  Pager(FileSystem& files, Text path, std::chrono::milliseconds lock_wait, size_t cache_pages);
  ~Pager() override;

  const Header& FileHeader() const { return header_; }
  const Format& Layout() const { return header_.Layout(); }
  const PagerCounters& Counters() const { return counters_; }

  // Changes whenever what was derived from pages of earlier statements may no longer hold.
  uint64_t Generation() const { return generation_; }

  // Statements. Reading ones nest, also in a writing one. A Begin that raises has begun nothing.
  void BeginRead();
  void EndRead() noexcept;
  // Whether nobody that does not know this engine's locks has written since the statement began.
  bool UnchangedSinceBegin();
  // `mending`: also when the commit words tell that the file was left in the middle of a write.
  void BeginWrite(bool mending = false);
  // Ends the statement also when it raises; the file is then as it was before.
  void Commit();
  void Rollback() noexcept;
  bool Writing() const { return writing_; }

  // Inside a statement.
  uint32_t PageSize() const override { return Layout().page_size; }
  uint32_t PageCount() const override { return cache_.Count(); }
  Bytes Page(uint32_t number) override;
  Bytes PageInPassing(uint32_t number, std::span<const uint32_t> next) override;
  void GiveBack(uint32_t number) override;
  const Text& Path() const override { return path_; }

  // Inside a writing statement. The bytes stay where they are until its end; page 0 is not edited.
  uint8_t* Edit(uint32_t number);
  // Whether the statement has asked for the page and not given it up: then somebody relies on what
  // it holds, and it is not free whatever a map says.
  bool AskedFor(uint32_t number);
  // Nobody relies on the page's bytes any more.
  void GiveUp(uint32_t number);
  // What pages wait for when they are written; forgotten at the end of the statement.
  PageOrder& Order() { return order_; }
  // A new page behind the last one, all zeros.
  uint32_t Append();
  // Makes all commit words those of a file at rest.
  void MendCommitWords();

  // Flushes what was written and gives the file up. Not inside a statement.
  void Close();

 private:
  using CommitWords = std::array<uint8_t, kCommitWordCount * sizeof(uint16_t)>;

  void OpenFile();
  void ReadHeaderPage();
  void LockShared();
  void AwaitForeignWriter();
  void Refresh();
  CommitWords ReadCommitWords();
  bool Interrupted() const;
  void RecoverAsReader();
  void RecoverLocked();
  std::optional<JournalContent> LoadJournal();
  void PutBack(const JournalContent& content);
  void ExcludeOtherPrograms();
  void EndWrite() noexcept;

  void WritePages();
  void UndoWritePages(uint16_t word_before);
  void WriteFirstCommitWord(uint16_t word);
  void CopyCommitWordsToHeaderPage();

  PageCache::Page& Load(uint32_t number);
  void ReadPages(uint32_t first, std::span<const uint32_t> next);
  void ReadPage(uint32_t number);
  void RequireInFile(uint32_t number) const;
  void ForgetPages(uint64_t file_size);

  FileSystem& files_;
  Text path_;
  std::chrono::milliseconds lock_wait_;
  std::unique_ptr<File> file_;
  std::string why_read_only_;  // empty for a file that can be written
  std::optional<FileLock> lock_;
  UserFile user_file_;
  Journal journal_;
  Header header_;

  int readers_ = 0;        // nested reading statements
  uint64_t identity_ = 0;  // for the journal
  PageOrder order_;
  bool began_writing_ = false;  // at least once, whatever became of it
  bool writing_ = false;
  uint32_t statement_ = 0;  // the number of the last writing one
  bool written_ = false;    // since the file was opened
  CommitWords commit_words_{};
  FileStamp stamp_;
  uint64_t generation_ = 0;
  PagerCounters counters_;

  PageCache cache_;
  std::unique_ptr<uint8_t[]> read_ahead_;
  size_t read_ahead_size_ = 0;

  // An interrupted statement that cannot be put back, as the file cannot be written: its pages as
  // they were. `journal_missed_`: there was no journal to take them from.
  std::unordered_map<uint32_t, std::vector<uint8_t>> overlay_;
  bool journal_missed_ = false;
};

}  // namespace rdv::jet
