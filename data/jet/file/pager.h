// The pages of an open database file, as statements see them: kept in memory from statement to
// statement, changed there, and written back all together or not at all.
//
// What holds at every moment:
//   1. Inside a statement the file is locked, shared or exclusively, and is as after some whole
//      statement: whatever a dead process or a loss of power left was put right first.
//   2. Pages are changed in memory only until Commit, which does what transaction.h says.
//   3. Each commit changes the first commit word, so pages in memory are good as long as it (and
//      the file's size and date, where the system keeps one) are those that they were read with.
//   4. A file that was left in the middle of a write and cannot be put right is not used, but by
//      those who say that they can deal with it.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/jet/file/access.h"
#include "data/jet/file/commit_words.h"
#include "data/jet/file/file.h"
#include "data/jet/file/page_cache.h"
#include "data/jet/file/page_order.h"
#include "data/jet/file/page_source.h"
#include "data/jet/file/transaction.h"
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

// Whether a file that was left in the middle of a write is used.
enum class Suspects { Refused, Read, Mended };

// Raises the engine's errors; those of the operating system come as such.
class Pager : public PageSource {
 public:
  // Reads the header page and nothing else, unlocked, as what it says of the file never changes.
  // What was left behind is put right by the first statement. A file that cannot be opened for
  // writing is opened for reading.
  Pager(FileSystem& files, Text path, std::chrono::milliseconds lock_wait, size_t cache_pages,
        Suspects suspects = Suspects::Refused);
  Pager(const Pager&) = delete;
  Pager& operator=(const Pager&) = delete;
  ~Pager() override;

  const Header& FileHeader() const { return header_; }
  const Format& Layout() const { return header_.Layout(); }
  PagerCounters Counters() const;

  // Changes whenever what was derived from pages of earlier statements may no longer hold.
  uint64_t Generation() const { return generation_; }

  // Statements. Reading ones nest, also in a writing one. A Begin that raises has begun nothing.
  void BeginRead();
  void EndRead() noexcept;
  // Whether nobody that does not know this engine's locks has written since the statement began.
  bool UnchangedSinceBegin();
  void BeginWrite();
  // Ends the statement also when it raises; the file is then as it was before.
  void Commit();
  void Rollback() noexcept;
  bool Writing() const { return writing_; }
  // Inside a statement: what follows may make as much of the file as a whole statement. For whoever
  // runs many of them as one change or on one state of the file.
  void BeginPart();

  // Inside a statement.
  uint32_t PageSize() const override { return Layout().page_size; }
  uint32_t PageCount() const override { return cache_.Count(); }
  Bytes Page(uint32_t number) override;
  Bytes PageInPassing(uint32_t number, std::span<const uint32_t> next) override;
  void GiveBack(uint32_t number) override { cache_.GiveBack(number); }
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
  // Statements that follow are likely to change the page. Nothing but speed depends on it.
  void Expect(uint32_t number);
  // Whether a change of the page brings the journal to the disk, as far as is known.
  bool IsNewToJournal(uint32_t number) { return !transaction_->Log().Has(number); }
  // A new page behind the last one, all zeros.
  uint32_t Append();
  // Makes all commit words those of a file at rest, with the rest of the statement.
  void MendCommitWords();

  // Flushes what was written and gives the file up. Not inside a statement. What a flush that
  // failed may have lost stays in the journal.
  void Close();

 private:
  void OpenFile();
  void ReadHeaderPage();
  void LockShared();
  void LockAlone();
  bool TryKeepOtherProgramsOut();
  void KeepOtherProgramsOut();
  void AwaitOtherProgram();
  void RefuseSeveralNames() const;
  void RefuseSuspect(bool allowed);
  void Refresh();
  CommitWords ReadCommitWords();
  bool WasLeftBehind();
  void PutRightAsReader();
  bool TryPutRight();
  bool PutRight();
  void PutRightInMemory();
  std::optional<JournalContent> LoadJournal();
  void LetJournalEnd();
  void FlushForClosing(const CommitWords& words);
  void EndWrite() noexcept;
  void ShowCommitWords(const CommitWords& words);

  PageCache::Page& Load(uint32_t number);
  void ReadPages(uint32_t first, std::span<const uint32_t> next);
  void ReadPage(uint32_t number);
  void RequireInFile(uint32_t number) const;
  void ForgetPages(uint32_t page_count);

  FileSystem& files_;
  Text path_;  // as it was given
  std::chrono::milliseconds lock_wait_;
  Suspects suspects_;
  std::string why_read_only_;  // empty for a file that can be written
  std::unique_ptr<File> file_;
  DatabaseFile database_;
  std::optional<FileLock> lock_;
  std::optional<UserFile> user_file_;
  std::optional<Transaction> transaction_;
  Header header_;

  int readers_ = 0;  // nested reading statements
  PageOrder order_;
  std::vector<uint32_t> expected_;
  bool began_writing_ = false;  // at least once, whatever became of it
  bool writing_ = false;
  uint32_t statement_ = 0;  // the number of the last writing one
  bool mends_ = false;
  bool written_ = false;  // since the file was opened
  CommitWords words_;
  bool at_rest_ = false;  // whether all of them are; unknown counts as not
  FileStamp stamp_;
  bool judged_ = false;  // the file with these words and this stamp was looked at
  uint64_t generation_ = 0;
  uint64_t pages_read_ = 0;

  PageCache cache_;
  std::unique_ptr<uint8_t[]> read_ahead_;
  size_t read_ahead_size_ = 0;
  // Pages of a file that cannot be put right, as it cannot be written: as they have to be.
  std::map<uint32_t, std::vector<uint8_t>> overlay_;
  bool overlaid_ = false;
};

}  // namespace rdv::jet
