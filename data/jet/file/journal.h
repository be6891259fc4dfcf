// The rollback journal: a file beside the database that holds what the pages of the statement at
// work looked like before it. It is complete before the first page is written, so whoever finds a
// statement that was cut off can put everything back.
//
// Layout (little-endian)
//   OFFSET SIZE MEANING
//   0      8    mark; zeros when the journal is not valid
//   8      4    page size
//   12     4    number of pages
//   16     8    size of the database file before the statement
//   24     8    checksum of everything else
//   32     8    identity of the database file
//   40     512  commit words before the statement
//   552         per page: u64 number, the page
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/file.h"

namespace rdv::jet {

struct PageImage {
  uint32_t number = 0;
  const uint8_t* bytes = nullptr;
};

struct JournalContent {
  uint32_t page_size = 0;
  uint64_t file_size = 0;
  uint64_t identity = 0;
  std::vector<uint8_t> commit_words;
  std::vector<uint8_t> storage;  // what `pages` points into
  std::vector<PageImage> pages;
};

// What tells the journal of one database from that of another which had its name, from the part of
// the header that never changes.
uint64_t JournalIdentity(Bytes header);

// Every call raises FileError. Writers are excluded from each other by the database's own lock, and
// so are all uses of this class but Load.
class Journal {
 public:
  Journal(FileSystem& files, const Text& database_path);

  void Write(uint32_t page_size, uint64_t file_size, uint64_t identity, Bytes commit_words,
             std::span<const PageImage> pages);
  void Invalidate();

  // Nothing when there is no journal, or none that was completed and not invalidated since, or one
  // of pages of another size or of more pages than the database has now: no statement makes it
  // smaller.
  std::optional<JournalContent> Load(uint32_t page_size, uint32_t page_count);

  // Also one that another process left. Those that have it open notice.
  void Remove();

 private:
  void Open();

  FileSystem& files_;
  Text path_;
  std::unique_ptr<File> file_;
  std::vector<uint8_t> buffer_;
};

}  // namespace rdv::jet
