// Journals that nobody's engine wrote: whoever may write beside a database may lay any file there.
#include <gtest/gtest.h>

#include <filesystem>

#include "data/jet/file/journal.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

constexpr uint32_t kPageOfSite = 4096;
constexpr JournaledFile kDatabase = {.identity = 77, .page_size = kPageOfSite, .page_count = 55};

class HostileJournal : public testing::Test {
 protected:
  // A head that is valid, and behind it nothing but the length of a file.
  void Lay(const JournalHead& head, uint64_t size) {
    std::vector<uint8_t> bytes;
    AppendHead(head, bytes);
    WriteWholeFile(path_, bytes);
    std::filesystem::resize_file(path_, size);
  }
  Journal::State Look() { return Journal(NativeFileSystem(), database_).Look(words_, kDatabase); }

  TemporaryFolder folder_;
  Text database_ = PathText(folder_.Path() / "site.mdb");
  std::filesystem::path path_ = folder_.Path() / "site.mdb-journal";
  CommitWords words_ = CommitWords::AtRest(5);
  JournalHead head_ = {.salt = 9,
                       .page_size = kPageOfSite,
                       .page_count = 55,
                       .identity = 77,
                       .origin = {},
                       .words = CommitWords::AtRest(5)};
};

TEST_F(HostileJournal, OfTheDatabaseItselfIsTaken) {
  Lay(head_, JournalHead::kSize);
  EXPECT_EQ(Look(), Journal::State::Live);
}

TEST_F(HostileJournal, WhoseHeadHasMorePagesThanTheDatabaseIsNoneOfIt) {
  head_.page_count = 56;
  Lay(head_, JournalHead::kSize);
  EXPECT_EQ(Look(), Journal::State::None);
  head_.page_count = 0xFFFFFFFF;
  Lay(head_, JournalHead::kSize);
  EXPECT_EQ(Look(), Journal::State::None);
}

TEST_F(HostileJournal, WhoseHeadHasPagesOfAnotherSizeIsNoneOfIt) {
  head_.page_size = 0;
  Lay(head_, JournalHead::kSize);
  EXPECT_EQ(Look(), Journal::State::None);
}

#ifndef _WIN32  // Where a hole in a file takes no room on the disk.

TEST_F(HostileJournal, IsReadAsFarAsTheEngineWritesOneAndNoFarther) {
  constexpr uint64_t kMegabyte = uint64_t{1} << 20;
  Lay(head_, 3000 * kMegabyte);
  const std::optional<JournalContent> content =
      Journal(NativeFileSystem(), database_).Load(kDatabase.Size());
  ASSERT_TRUE(content);
  EXPECT_TRUE(content->records.empty());
  EXPECT_LE(content->storage.capacity(), 66 * kMegabyte);
}

#endif

}  // namespace
}  // namespace rdv::jet
