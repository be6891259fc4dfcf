#include "data/jet/file/pager.h"

#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "tests/jet/what_raises.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPagerWait{30};
const std::string kIndexedSite = "sites/indexed/NewDB.mdb";

class PagerTest : public testing::Test {
 protected:
  void SetUp() override { path_ = folder_.Copy(SamplePath(kIndexedSite)); }

  std::unique_ptr<Pager> Open(FileSystem& files = NativeFileSystem(), size_t cache_pages = 100) {
    return std::make_unique<Pager>(files, PathText(path_), kPagerWait, cache_pages);
  }
  std::unique_ptr<Pager> Open(Suspects suspects) {
    return std::make_unique<Pager>(NativeFileSystem(), PathText(path_), kPagerWait, 100, suspects);
  }
  std::filesystem::path Beside(const std::string& extension) const {
    return std::filesystem::path(path_).replace_extension(extension);
  }
  std::filesystem::path JournalPath() const { return path_.string() + "-journal"; }

  TemporaryFolder folder_;
  std::filesystem::path path_;
};

constexpr size_t kMarkAt = 100;
constexpr uint32_t kMarkedPages[] = {20, 30, 31, 40, 69};

// A statement that changes some pages and adds others.
void Mark(Pager& pager, uint8_t mark) {
  pager.BeginWrite();
  for (const uint32_t page : kMarkedPages) pager.Edit(page)[kMarkAt] = mark;
  for (int i = 0; i < 3; ++i) {
    const uint32_t page = pager.Append();
    pager.Edit(page)[kMarkAt] = mark;
  }
  pager.Commit();
}

// Pages from 1: the header page has the commit words, which count on.
std::vector<uint8_t> PagesOf(const std::filesystem::path& path) {
  std::vector<uint8_t> bytes = ReadWholeFile(path);
  bytes.erase(bytes.begin(), bytes.begin() + 4096);
  return bytes;
}

TEST_F(PagerTest, AStatementIsInTheFileAfterCommitAndForOthersToSee) {
  const auto writer = Open();
  const auto reader = Open();
  reader->BeginRead();
  const uint64_t generation = reader->Generation();
  const uint32_t count = reader->PageCount();
  EXPECT_NE(reader->Page(30)[kMarkAt], 7);
  reader->EndRead();
  Mark(*writer, 7);
  reader->BeginRead();
  EXPECT_NE(reader->Generation(), generation);
  EXPECT_EQ(reader->PageCount(), count + 3);
  EXPECT_EQ(reader->Page(30)[kMarkAt], 7);
  EXPECT_EQ(reader->Page(count + 2)[kMarkAt], 7);
  reader->EndRead();
}

TEST_F(PagerTest, RollbackLeavesFileAndPagesAsTheyWere) {
  const auto before = ReadWholeFile(path_);
  const auto pager = Open();
  pager->BeginWrite();
  const uint32_t count = pager->PageCount();
  const uint8_t old = pager->Page(30)[kMarkAt];
  pager->Edit(30)[kMarkAt] = static_cast<uint8_t>(old + 1);
  pager->Append();
  pager->Rollback();
  pager->BeginRead();
  EXPECT_EQ(pager->PageCount(), count);
  EXPECT_EQ(pager->Page(30)[kMarkAt], old);
  pager->EndRead();
  pager->Close();
  EXPECT_EQ(ReadWholeFile(path_), before);
}

TEST_F(PagerTest, PagesAreReadOnceAsLongAsNobodyWrites) {
  const auto pager = Open();
  for (int i = 0; i < 3; ++i) {
    pager->BeginRead();
    pager->Page(5);
    pager->Page(6);
    pager->EndRead();
  }
  EXPECT_EQ(pager->Counters().pages_read, 2u);
  Mark(*pager, 1);
  const uint64_t read = pager->Counters().pages_read;
  pager->BeginRead();
  pager->Page(5);
  pager->EndRead();
  EXPECT_EQ(pager->Counters().pages_read, read) << "one's own writing is no reason to read again";
}

TEST_F(PagerTest, KeepsNoMorePagesThanItMay) {
  const auto pager = Open(NativeFileSystem(), 10);
  pager->BeginRead();
  for (uint32_t page = 1; page < 60; ++page) pager->Page(page);
  pager->EndRead();
  const uint64_t read = pager->Counters().pages_read;
  pager->BeginRead();
  for (uint32_t page = 1; page < 60; ++page) pager->Page(page);
  pager->EndRead();
  EXPECT_EQ(pager->Counters().pages_read - read, 59u - 10u);
}

// Once before the first page is overwritten; at the end what the journal says of later statements,
// and then the file.
TEST_F(PagerTest, FlushesTheJournalAtItsBeginningAndEndAndTheFileOnceAndLeavesNothingBesideIt) {
  const auto pager = Open();
  for (uint8_t i = 1; i <= 5; ++i) Mark(*pager, i);
  EXPECT_EQ(pager->Counters().flushes, 1u);
  EXPECT_TRUE(std::filesystem::exists(JournalPath()));
  pager->Close();
  EXPECT_EQ(pager->Counters().flushes, 3u);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(PagerTest, AFileThatWasOnlyReadIsNotTouched) {
  const auto before = std::filesystem::last_write_time(path_);
  const auto pager = Open();
  pager->BeginRead();
  pager->Page(5);
  pager->EndRead();
  pager->Close();
  EXPECT_EQ(std::filesystem::last_write_time(path_), before);
  EXPECT_EQ(pager->Counters().flushes, 0u);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(PagerTest, DeathBetweenAnyTwoWritesLeavesAllOfTheStatementOrNothing) {
  const auto original = folder_.Copy(path_, "original.mdb");
  const auto before = PagesOf(path_);
  Mark(*Open(), 9);
  const auto after = PagesOf(path_);
  bool survived = false;
  int whole = 0;
  int nothing = 0;
  for (int writes = 0; !survived; ++writes) {
    SCOPED_TRACE(writes);
    path_ = folder_.Copy(original, "NewDB.mdb");
    FaultyFileSystem files;
    files.Arm(Fault::Death, writes);
    const std::string raised = WhatRaises([&] { Mark(*Open(files), 9); });
    survived = !files.Struck();
    const auto pager = Open();
    pager->BeginRead();
    pager->EndRead();
    const auto found = PagesOf(path_);
    ASSERT_TRUE(found == before || found == after);
    ++(found == before ? nothing : whole);
    EXPECT_TRUE(!survived || raised == "nothing was raised") << raised;
    Mark(*pager, 9);
    EXPECT_EQ(found == before, PagesOf(path_) == after);
    pager->Close();
    EXPECT_FALSE(std::filesystem::exists(JournalPath()));
    EXPECT_FALSE(std::filesystem::exists(Beside(".ldb")));
  }
  EXPECT_GE(nothing, 9);
  EXPECT_GT(whole, 1);
}

TEST_F(PagerTest, DeathWhilePuttingBackIsNoHarmEither) {
  const auto original = folder_.Copy(path_, "original.mdb");
  const auto before = PagesOf(path_);
  FaultyFileSystem files;
  files.Arm(Fault::Death, 8);
  WhatRaises([&] { Mark(*Open(files), 9); });
  ASSERT_TRUE(files.Struck());
  const auto torn = folder_.Copy(path_, "torn.mdb");
  const auto torn_journal = folder_.Copy(JournalPath(), "torn-journal");
  ASSERT_NE(PagesOf(torn), before);
  bool survived = false;
  for (int writes = 0; !survived; ++writes) {
    SCOPED_TRACE(writes);
    folder_.Copy(torn, "NewDB.mdb");
    folder_.Copy(torn_journal, "NewDB.mdb-journal");
    FaultyFileSystem dying;
    dying.Arm(Fault::Death, writes);
    WhatRaises([&] { Open(dying)->BeginRead(); });
    survived = !dying.Struck();
    Open()->BeginRead();
    EXPECT_EQ(PagesOf(path_), before);
  }
}

TEST_F(PagerTest, AFailureOfAnyWriteRaisesAndLeavesTheFileAsItWas) {
  const auto before = PagesOf(path_);
  for (const Fault fault : {Fault::FailingWrite, Fault::ShortWrite, Fault::FullDisk}) {
    int failures = 0;
    for (int writes = 0;; ++writes) {
      SCOPED_TRACE(std::to_string(static_cast<int>(fault)) + " " + std::to_string(writes));
      FaultyFileSystem files;
      const auto pager = Open(files);
      files.Arm(fault, writes);
      const std::string raised = WhatRaises([&] { Mark(*pager, 9); });
      if (raised == "nothing was raised") break;
      EXPECT_NE(raised.find("Disk or network error"), std::string::npos) << raised;
      ++failures;
      files.Arm(Fault::None, 0);
      pager->BeginRead();
      EXPECT_NE(pager->Page(30)[kMarkAt], 9);
      pager->EndRead();
      EXPECT_EQ(PagesOf(path_), before);
    }
    EXPECT_GT(failures, 9);
    path_ = folder_.Copy(SamplePath(kIndexedSite));
  }
}

TEST_F(PagerTest, AFailureOfAnyReadRaises) {
  for (int reads = 0;; ++reads) {
    FaultyFileSystem files;
    files.Arm(Fault::FailingRead, reads);
    const std::string raised = WhatRaises([&] {
      const auto pager = Open(files);
      pager->BeginRead();
      pager->Page(5);
      pager->Page(6);
      pager->EndRead();
    });
    if (!files.Struck()) {
      EXPECT_EQ(raised, "nothing was raised");
      EXPECT_GT(reads, 3);
      break;
    }
    EXPECT_NE(raised.find("Disk or network error"), std::string::npos) << raised;
  }
}

TEST_F(PagerTest, AFlushThatFailsIsRaisedByClosing) {
  FaultyFileSystem files;
  const auto pager = Open(files);
  Mark(*pager, 9);
  files.Arm(Fault::FailingFlush, 0);
  const std::string raised = WhatRaises([&] { pager->Close(); });
  EXPECT_NE(raised.find("Disk or network error"), std::string::npos) << raised;
  EXPECT_TRUE(std::filesystem::exists(JournalPath())) << "it is still needed";
  const auto pages = PagesOf(path_);
  Open()->BeginRead();
  EXPECT_EQ(PagesOf(path_), pages) << "nothing was lost after all";
  EXPECT_FALSE(std::filesystem::exists(JournalPath()));
}

TEST_F(PagerTest, AStatementWhoseJournalCannotBeFlushedIsNotWritten) {
  const auto before = PagesOf(path_);
  FaultyFileSystem files;
  const auto pager = Open(files);
  files.Arm(Fault::FailingFlush, 0);
  const std::string raised = WhatRaises([&] { Mark(*pager, 9); });
  EXPECT_NE(raised.find("Disk or network error"), std::string::npos) << raised;
  EXPECT_EQ(PagesOf(path_), before);
  files.Arm(Fault::None, 0);
  Mark(*pager, 9);
  EXPECT_NE(PagesOf(path_), before);
}

TEST_F(PagerTest, ARefusedStatementLeavesNothingBesideTheFile) {
  const auto pager = Open();
  pager->BeginWrite();
  pager->Edit(30);
  pager->Rollback();
  pager->Close();
  EXPECT_FALSE(std::filesystem::exists(JournalPath()));
  EXPECT_FALSE(std::filesystem::exists(Beside(".ldb")));
}

TEST_F(PagerTest, AJournalOfAnotherFileThatHadTheNameIsNotPutBack) {
  constexpr size_t kCreationTime = 0x72;
  FaultyFileSystem files;
  files.Arm(Fault::Death, 8);
  WhatRaises([&] { Mark(*Open(files), 9); });
  std::vector<uint8_t> other = ReadWholeFile(path_);
  other[kCreationTime] ^= 0x01;
  WriteWholeFile(path_, other);
  Open(Suspects::Read)->BeginRead();
  EXPECT_EQ(ReadWholeFile(path_), other);
  EXPECT_NE(WhatRaises([&] { Open()->BeginRead(); }).find("may be corrupt"), std::string::npos);
}

TEST_F(PagerTest, AJournalThatSaysItIsLargerThanTheDatabaseIsNone) {
  FaultyFileSystem files;
  files.Arm(Fault::Death, 8);
  WhatRaises([&] { Mark(*Open(files), 9); });
  const auto torn = PagesOf(path_);
  std::vector<uint8_t> journal = ReadWholeFile(JournalPath());
  Store32(&journal[JournalHead::kSize + 12], 100000);  // pages
  WriteWholeFile(JournalPath(), journal);
  std::filesystem::resize_file(JournalPath(),
                               uint64_t{1} << 25);  // there are bytes for many of them
  Open(Suspects::Read)->BeginRead();
  EXPECT_EQ(PagesOf(path_), torn);
}

TEST_F(PagerTest, AJournalOfAnotherStateIsLeftAlone) {
  FaultyFileSystem files;
  files.Arm(Fault::Death, 1);
  WhatRaises([&] { Mark(*Open(files), 9); });
  ASSERT_TRUE(std::filesystem::exists(JournalPath()));
  const auto whole_file = folder_.Copy(SamplePath("sites/large/NewDB.mdb"), "NewDB.mdb");
  std::vector<uint8_t> before = ReadWholeFile(whole_file);
  Store16(before.data() + kJet4.header.commit_words, 0x0333);
  WriteWholeFile(whole_file, before);
  Open()->BeginRead();
  EXPECT_EQ(ReadWholeFile(path_), before);
}

class PagerLockTest : public PagerTest {
 protected:
  std::string InUse() const {
    return "-2147467259: Could not use '" + path_.string() +
           "'; file already in use. (Microsoft JET Database Engine)";
  }
};

TEST_F(PagerLockTest, ReadersShareAndAWriterIsAlone) {
  const auto first = Open();
  const auto second = Open();
  first->BeginRead();
  second->BeginRead();
  second->EndRead();
  EXPECT_EQ(WhatRaises([&] { second->BeginWrite(); }), InUse());
  first->EndRead();
  second->BeginWrite();
  EXPECT_EQ(WhatRaises([&] { first->BeginRead(); }), InUse());
  EXPECT_EQ(WhatRaises([&] { first->BeginWrite(); }), InUse());
  second->Rollback();
  first->BeginRead();
  first->EndRead();
}

TEST_F(PagerLockTest, AFileThatAnotherProgramUsesIsNotWritten) {
  const auto pager = Open();
  auto lock_file = NativeFileSystem().Open(PathText(Beside(".ldb")), FileAccess::Create);
  ASSERT_TRUE(lock_file->TryLock(0x10000001, 1, LockMode::Exclusive));
  const auto before = ReadWholeFile(path_);
  EXPECT_EQ(WhatRaises([&] { Mark(*pager, 9); }), InUse());
  EXPECT_EQ(ReadWholeFile(path_), before);
  pager->BeginRead();
  pager->EndRead();
  lock_file->Unlock(0x10000001, 1);
  // On Windows a program that has the lock file open uses the database, whatever it has locked.
  lock_file.reset();
  Mark(*pager, 9);
}

TEST_F(PagerLockTest, NobodyComesInWhileAStatementIsWritten) {
  const auto pager = Open();
  const auto comes_in = [&] {
    const auto lock_file = NativeFileSystem().Open(PathText(Beside(".ldb")), FileAccess::ReadWrite);
    return lock_file->TryLock(0x10000003, 1, LockMode::Exclusive);
  };
  pager->BeginWrite();
#ifdef _WIN32
  // Not even the file can be opened.
  EXPECT_THROW(comes_in(), FileError);
#else
  EXPECT_FALSE(comes_in());
#endif
  pager->Rollback();
  EXPECT_TRUE(comes_in());
}

TEST_F(PagerLockTest, ALockFileLeftByTheDeadHindersNobodyAndStays) {
  const std::vector<uint8_t> record(64, 'A');
  WriteWholeFile(Beside(".ldb"), record);
  const auto pager = Open();
  Mark(*pager, 9);
  pager->Close();
  EXPECT_EQ(ReadWholeFile(Beside(".ldb")), record);
}

#ifndef _WIN32  // Windows removes no file that is open.
TEST_F(PagerLockTest, FilesBesideTheDatabaseThatWereRemovedAreMadeAgain) {
  const auto pager = Open();
  Mark(*pager, 9);
  std::filesystem::remove(Beside(".ldb"));
  std::filesystem::remove(JournalPath());
  Mark(*pager, 10);
  EXPECT_TRUE(std::filesystem::exists(Beside(".ldb")));
  EXPECT_TRUE(std::filesystem::exists(JournalPath()));
}
#endif

TEST_F(PagerLockTest, AFileLeftInTheMiddleOfAWriteIsNotUsedUntilMended) {
  std::vector<uint8_t> bytes = ReadWholeFile(path_);
  Store16(bytes.data() + kJet4.header.commit_words, 0);
  WriteWholeFile(path_, bytes);
  const auto pager = Open();
  EXPECT_NE(WhatRaises([&] { pager->BeginRead(); }).find("may be corrupt"), std::string::npos);
  EXPECT_NE(WhatRaises([&] { pager->BeginWrite(); }).find("may be corrupt"), std::string::npos);
  const auto looker = Open(Suspects::Read);
  looker->BeginRead();
  EXPECT_EQ(looker->Page(30).size(), 4096u);
  looker->EndRead();
  EXPECT_NE(WhatRaises([&] { looker->BeginWrite(); }).find("may be corrupt"), std::string::npos);
  EXPECT_EQ(ReadWholeFile(path_), bytes);
  const auto mender = Open(Suspects::Mended);
  mender->BeginWrite();
  mender->MendCommitWords();
  mender->Rollback();
  EXPECT_EQ(ReadWholeFile(path_), bytes) << "mending is a part of its statement";
  mender->BeginWrite();
  mender->MendCommitWords();
  mender->Commit();
  Mark(*pager, 9);
}

TEST_F(PagerLockTest, AnotherProgramThatIsWritingIsWaitedFor) {
  std::vector<uint8_t> bytes = ReadWholeFile(path_);
  Store16(bytes.data() + kJet4.header.commit_words + 2, 0);
  WriteWholeFile(path_, bytes);
  const auto lock_file = NativeFileSystem().Open(PathText(Beside(".ldb")), FileAccess::Create);
  ASSERT_TRUE(lock_file->TryLock(0x10000001, 1, LockMode::Exclusive));
  const auto pager = Open(Suspects::Read);
  EXPECT_EQ(WhatRaises([&] { pager->BeginRead(); }), InUse());
  lock_file->Unlock(0x10000001, 1);
  pager->BeginRead();
  EXPECT_TRUE(pager->UnchangedSinceBegin());
  Store16(bytes.data() + kJet4.header.commit_words + 2, 0x0101);
  WriteWholeFile(path_, bytes);
  EXPECT_FALSE(pager->UnchangedSinceBegin());
  pager->EndRead();
}

}  // namespace
}  // namespace rdv::jet
