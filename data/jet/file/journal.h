// The journal: a file beside the database that tells, whatever becomes of the writing, what the
// database was. It is begun with the first statement that writes after all earlier ones are on the
// disk, and ends when all of its own are. Between those two moments any number of processes write
// in it, one at a time.
//
// What holds at every moment:
//   1. A record is complete before the first page of its statement is written.
//   2. Of each page that was there when the journal was begun, the journal holds the whole content
//      of that moment, and that is on the disk, before the page is written for the first time.
//   3. Records lie one behind the other without a gap, and what is flushed is all of them. Nobody
//      writes over one that somebody else has added, whatever became of its statement.
//   4. A journal whose statements are all on the disk has no mark. It loses it before its name.
//   5. One that says that a flush has failed is not added to. What that flush was to bring to the
//      disk is lost even where the next one succeeds: everything has to be written again.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "data/jet/file/file.h"
#include "data/jet/file/journal_record.h"

namespace rdv::jet {

Text JournalPath(const Text& database_path);

struct JournalContent {
  std::vector<uint8_t> storage;  // what the records refer to
  JournalHead head;
  std::vector<JournalRecord> records;
  uint64_t end = 0;
};

// What tells the journal of one database from that of another which had its name, from the part of
// the header that never changes.
uint64_t JournalIdentity(Bytes header);

// A database as a journal that is about it has it, or had it when it was begun.
struct JournaledFile {
  uint64_t identity = 0;
  uint32_t page_size = 0;
  uint32_t page_count = 0;

  uint64_t Size() const { return uint64_t{page_size} * page_count; }
  // No database becomes smaller than it was when its journal was begun.
  bool IsOf(const JournalHead& head) const {
    return head.identity == identity && head.page_size == page_size &&
           head.page_count <= page_count;
  }
};

// Every call raises FileError. Unless said otherwise the caller has the database to itself.
class Journal {
 public:
  Journal(FileSystem& files, const Text& database_path);

  // Also without having the database to oneself: a name that is there, valid or not.
  bool Exists() { return files_.Exists(path_); }
  // Nothing when there is none or none that is valid. With the database shared at least. No more is
  // read than the engine writes beside a database of that many bytes.
  std::optional<JournalContent> Load(uint64_t database_size);

  enum class State {
    None,  // there is none, or one of another database
    Live,  // statements may be added
    Past,  // it says nothing about the database any more, or may not grow: all has to be flushed
  };
  // Learns what others have added. `words`: those of the database, which is at rest.
  State Look(const CommitWords& words, const JournaledFile& database);

  // Begins a new journal with the next record, in place of one that is not needed any more.
  void Begin(const JournalHead& head);
  // Whether the page has to be given as a whole.
  bool IsNew(uint32_t page) const;
  // Whether the journal has the whole page already, as far as this process knows.
  bool Has(uint32_t page) const { return begun_ && !IsNew(page); }
  // Whether adding the record brings it to the disk. Then more pages in it cost next to nothing.
  bool Flushes(const JournalRecord& record) const;
  // Adds a record; number and predecessor are filled in. It is on the disk where it has to be. When
  // it raises, there is no record. `model`: the database.
  void Add(JournalRecord& record, File& model);
  // The statement of the last record is in the file, and these are the commit words now.
  void Finish(const CommitWords& words);

  // Brings to the disk what was added since the last flush, by whomever. `words`: those of the
  // database. Without having the database to oneself.
  void FlushRest(const CommitWords& words);
  // Brings the whole of one that was left behind to the disk, before the database is changed by it.
  void FlushWhatIsThere(const JournalContent& content);
  // That a flush of it or of the database has failed: what nobody can tell from the files. With
  // other writers kept out. Quiet where that cannot be written.
  void SayFlushFailed() noexcept;
  bool SaysFlushFailed();
  // Takes the mark away, then the name if nobody else has the file open. A journal without mark
  // that keeps its name hinders nobody.
  void Discard();
  // As Discard, if the journal that this process last wrote in is still the one that is there.
  void DiscardMine();
  // Takes the mark away only, as far as it is one that this process wrote in. For those who do not
  // have what bears the database's name to themselves.
  void UnmarkMine();
  // Removes a journal without mark. This process must not write in one.
  void RemoveRemains();

  uint64_t Flushes() const { return flushes_; }

 private:
  bool IsStillMine();
  std::optional<JournalHead> HeadByName();
  void Adopt(const JournalRecord& record);
  void Learn(const JournalContent& content);
  bool HasAddedRecord();
  void ReadAddedRecords(uint64_t database_size);
  void Forget();
  void MarkTouched(uint32_t page);
  void Unmark();
  void WriteAgain(const JournalContent& content);

  FileSystem& files_;
  Text path_;
  std::unique_ptr<File> file_;
  std::vector<uint8_t> buffer_;
  uint64_t flushes_ = 0;

  // The journal that this process writes in.
  bool begun_ = false;    // there is one
  bool written_ = false;  // and its head is in the file
  JournalHead head_;
  uint64_t end_ = 0;
  uint32_t last_ = 0;         // record
  uint32_t finished_ = 0;     // the last record whose statement was
  uint16_t word_before_ = 0;  // of the last record
  uint16_t word_after_ = 0;
  CommitWords words_;          // of the database after the last statement that is known
  std::vector<bool> touched_;  // pages of which there is the whole content
  uint32_t unflushed_ = 0;     // records
  bool flush_next_ = false;    // others' records may not be on the disk
  bool named_ = false;         // its name is on the disk
  // A flush has failed. What it should have brought to the disk may be lost, and the next one may
  // succeed all the same: it has to be written again.
  bool spoiled_ = false;
};

}  // namespace rdv::jet
