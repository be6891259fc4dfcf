// Links, replaced files, leftovers of dead users: what a real system does to a database file, and
// what the engine then does.
#include <gtest/gtest.h>

#include "data/jet/check/repair.h"
#include "data/jet/file/access.h"
#include "data/jet/file/commit_words.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/usage_map.h"
#include "runtime/error.h"
#include "tests/jet/dead_writer.h"
#include "tests/jet/things_on_disk.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace rdv::jet {
namespace {

using things::Count;
using things::Insert;

class LeftBehind : public things::OnDisk {
 protected:
  std::filesystem::path Journal() const { return things::JournalOf(path_); }
  std::filesystem::path UserFilePath() const {
    return std::filesystem::path(path_).replace_extension(".ldb");
  }

  void DieWriting(int writes) { things::DieWriting(path_, writes); }
  void DieBetweenStatements() { things::DieBetweenStatements(path_); }

  uint16_t Word(size_t slot) const {
    return Load16(ReadWholeFile(path_).data() + kJet4.header.commit_words + 2 * slot);
  }
  void SetWord(size_t slot, uint16_t word) {
    std::vector<uint8_t> bytes = ReadWholeFile(path_);
    Store16(bytes.data() + kJet4.header.commit_words + 2 * slot, word);
    WriteWholeFile(path_, bytes);
  }
};

TEST_F(LeftBehind, AJournalThatIsNotNeededIsRemovedByTheFirstWhoReads) {
  DieBetweenStatements();
  ASSERT_TRUE(std::filesystem::exists(Journal()));
  EXPECT_EQ(Count(*Open()), kCount + 1);
  EXPECT_FALSE(std::filesystem::exists(Journal()));
}

// A program that knows nothing of the journal has written since: in a file that it shares it counts
// in a word of its own, in one that it has to itself in the first. Then it dies while it writes.
TEST_F(LeftBehind, AJournalThatAnotherProgramHasGoneBeyondIsNotPlayed) {
  for (const bool alone : {false, true}) {
    SCOPED_TRACE(alone);
    const auto original = folder_.Copy(path_, "original.mdb");
    DieBetweenStatements();
    SetWord(alone ? 0 : 3, static_cast<uint16_t>(alone ? Word(0) + 500 : 0x0105));
    std::vector<uint8_t> bytes = ReadWholeFile(path_);
    bytes[bytes.size() - 5] ^= 0xFF;  // what it has written
    WriteWholeFile(path_, bytes);
    EXPECT_EQ(Count(*Open()), kCount + 1);
    EXPECT_EQ(ReadWholeFile(path_), bytes);
    EXPECT_FALSE(std::filesystem::exists(Journal())) << "it may not be played later either";
    if (!alone) {
      SetWord(0, 0);
      EXPECT_NE(WhatRaises([&] { Count(*Open()); }).find("may be corrupt"), std::string::npos);
    }
    folder_.Copy(original, path_.filename().string());
  }
}

TEST_F(LeftBehind, AJournalOfAFileWithAnotherUsersWordIsNotPlayedIntoAnUnfinishedWriteEither) {
  DieBetweenStatements();
  SetWord(3, 0x0105);
  SetWord(0, 0);
  const auto bytes = ReadWholeFile(path_);
  EXPECT_NE(WhatRaises([&] { Count(*Open()); }).find("may be corrupt"), std::string::npos);
  EXPECT_EQ(ReadWholeFile(path_), bytes);
}

TEST_F(LeftBehind, ASuspectFileIsUsedByThoseOnlyWhoLookForWhatIsWrong) {
  SetWord(0, 0);
  EXPECT_NE(WhatRaises([&] { Count(*Open()); }).find("may be corrupt"), std::string::npos);
  EXPECT_NE(WhatRaises([&] { Insert(*Open(), 50); }).find("may be corrupt"), std::string::npos);
  const auto looker =
      Engine::Open(PathText(path_), {.lock_wait = kWaitForOthers, .reads_suspect = true});
  EXPECT_NE(Findings(*looker), "");
  EXPECT_NE(WhatRaises([&] { Insert(*looker, 50); }).find("may be corrupt"), std::string::npos);
}

// A page is damaged, too: the word is at rest exactly when the page is mended.
TEST_F(LeftBehind, ARepairThatFailsLeavesTheFileSuspect) {
  uint32_t definition = 0;
  {
    const auto engine = Open();
    const Engine::ReadScope scope(*engine);
    definition = engine->Table(u"Things").Page();
  }
  std::vector<uint8_t> before = ReadWholeFile(path_);
  const size_t count_at = definition * kJet4.page_size + kJet4.definition.row_count;
  Store32(&before[count_at], 999);
  Store16(before.data() + kJet4.header.commit_words + 4, kCommitCorrupt);
  int suspect = 0;
  for (const Fault fault : {Fault::FullDisk, Fault::ShortWrite, Fault::DeathBefore}) {
    for (int writes = 0;; ++writes) {
      SCOPED_TRACE(writes);
      WriteWholeFile(path_, before);
      std::filesystem::remove(Journal());
      FaultyFileSystem files;
      files.Arm(fault, writes);
      const std::string raised =
          WhatRaises([&] { RepairDatabase(files, PathText(path_), kWaitForOthers); });
      if (raised == "nothing was raised") break;
      const std::string refused = WhatRaises([&] { Insert(*Open(), 50); });
      const bool mended = Word(2) != kCommitCorrupt;
      EXPECT_EQ(mended, Load32(&ReadWholeFile(path_)[count_at]) != 999);
      EXPECT_EQ(mended, refused == "nothing was raised") << refused;
      suspect += mended ? 0 : 1;
    }
  }
  EXPECT_GE(suspect, 6);
}

TEST_F(LeftBehind, ARepairCountsOnFromTheHighestWordSoThatNobodyGoesOnWithOldPages) {
  SetWord(0, 0x0104);
  SetWord(5, 0x0200);
  SetWord(2, kCommitCorrupt);
  RepairDatabase(NativeFileSystem(), PathText(path_), kWaitForOthers);
  EXPECT_EQ(Word(0), 0x0201);
  EXPECT_EQ(Word(5), kCommitIdle);
  EXPECT_EQ(Word(2), kCommitIdle);
}

// Where it cannot be told who is at work, somebody is.
class BlindFileSystem : public FaultyFileSystem {
 public:
  explicit BlindFileSystem(Text extension) : extension_(std::move(extension)) {}
  bool Exists(const Text& path) override {
    if (path.ends_with(extension_)) throw FileError(FileProblem::Other, "cannot be told");
    return FaultyFileSystem::Exists(path);
  }

 private:
  Text extension_;
};

TEST_F(LeftBehind, WhatCannotBeToldCountsAsBusy) {
  SetWord(4, 0);  // another program is writing, if it is there
  BlindFileSystem no_users(u".ldb");
  EXPECT_NE(WhatRaises([&] { Count(*Open(path_, &no_users)); }).find("already in use"),
            std::string::npos);
  SetWord(4, kCommitIdle);
  BlindFileSystem no_journal(u"-journal");
  EXPECT_NE(WhatRaises([&] { Count(*Open(path_, &no_journal)); }).find("cannot be told"),
            std::string::npos);
}

#ifndef _WIN32  // Windows removes no file that is open.
// The lock file is removed by another user between its opening and its locking.
class FickleFileSystem : public FaultyFileSystem {
 public:
  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override {
    auto file = FaultyFileSystem::OpenBeside(model, path, access);
    if (path.ends_with(u".ldb") && removals_++ == 0) NativeFileSystem().Remove(path);
    return file;
  }

 private:
  int removals_ = 0;
};

TEST_F(LeftBehind, ALockFileThatIsRemovedBeforeItIsLockedIsMadeAgain) {
  FickleFileSystem files;
  const auto database = files.Open(PathText(path_), FileAccess::ReadWrite);
  UserFile users(files, PathText(path_));
  ASSERT_TRUE(users.TryExclude(*database));
  ASSERT_TRUE(std::filesystem::exists(UserFilePath()));
  const auto other = NativeFileSystem().Open(PathText(UserFilePath()), FileAccess::ReadWrite);
  EXPECT_FALSE(other->TryLock(0x10000003, 1, LockMode::Exclusive));
}
#endif

TEST_F(LeftBehind, PagesBeforeTheFirstOfAMapStayInUseWhenItGrowsIntoPagesOfItsOwn) {
  constexpr uint32_t kFirst = 16;
  std::optional<Pager> pager(std::in_place, NativeFileSystem(), PathText(path_), kWaitForOthers,
                             100);
  const FileReader file(*pager, pager->FileHeader());
  const WriteContext context{*pager, file};
  pager->BeginWrite();
  {
    DataPageWriter maps(context, kGlobalMapPage, kOwnerGlobalMaps);
    const std::span<uint8_t> row = maps.EditRow(kFreePagesRow);
    const std::span<uint8_t> bits = row.subspan(kMapInlineBits);
    ASSERT_EQ(Load32(row.data() + kMapFirstPage), 0u);
    ASSERT_EQ(bits[0] | bits[1], 0) << "all in use";
    Store32(row.data() + kMapFirstPage, kFirst);
    std::copy(bits.begin() + kFirst / 8, bits.end(), bits.begin());
    std::fill(bits.end() - kFirst / 8, bits.end(), uint8_t{0xFF});
    // No room is left for the row to grow.
    size_t size = RequireRow(file, kOwnerGlobalMaps, {kGlobalMapPage, kPendingPagesRow}).size();
    while (maps.CanResize(kPendingPagesRow, size + 4)) {
      maps.Grow(kPendingPagesRow, 4, 0);
      size += 4;
    }
  }
  PageAllocator allocator(context);
  const auto row = [&] {
    return RequireRow(file, kOwnerGlobalMaps, {kGlobalMapPage, kFreePagesRow});
  };
  while (row()[0] == kMapInline) allocator.Allocate();
  const UsageMap free(file, {kGlobalMapPage, kFreePagesRow}, kOwnerGlobalMaps);
  for (uint32_t page = 0; page < kFirst; ++page) EXPECT_FALSE(free.Contains(page)) << page;
  pager->Rollback();
}

#ifndef _WIN32

TEST_F(LeftBehind, AFileIsTheSameThroughEveryLink) {
  const auto elsewhere = folder_.Path() / "elsewhere";
  std::filesystem::create_directory(elsewhere);
  const auto link = elsewhere / "link.mdb";
  std::filesystem::create_symlink(path_, link);
  DieWriting(6);
  EXPECT_EQ(Count(*Open(link)), kCount) << "the journal beside the file itself was found";
  EXPECT_FALSE(std::filesystem::exists(Journal()));
  const auto user = NativeFileSystem().Open(PathText(UserFilePath()), FileAccess::Create);
  ASSERT_TRUE(user->TryLock(0x10000001, 1, LockMode::Exclusive));
  EXPECT_NE(WhatRaises([&] { Insert(*Open(link), 50); }).find("already in use"), std::string::npos);
  user->Unlock(0x10000001, 1);
  Insert(*Open(link), 50);
  EXPECT_EQ(Count(*Open()), kCount + 1);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(elsewhere), {}), 1);
}

// Whoever may write the folder may put anything there. Nobody waits for the other end of a pipe.
TEST_F(LeftBehind, APipeInThePlaceOfTheFileIsRefusedAtOnce) {
  std::filesystem::remove(path_);
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_NE(WhatRaises([&] { Open(); }).find("no ordinary file"), std::string::npos);
}

TEST_F(LeftBehind, ALinkInThePlaceOfADraftIsNotFollowed) {
  const auto victim = folder_.Path() / "victim";
  const auto made = folder_.Path() / "made.mdb";
  const auto draft = folder_.Path() / "made.mdb.new";
  std::ofstream(victim).close();
  std::filesystem::create_symlink(victim, draft);
  EXPECT_THROW(Engine::Create(PathText(made)), RuntimeError);
  EXPECT_EQ(std::filesystem::file_size(victim), 0u);
  EXPECT_FALSE(std::filesystem::exists(made));
  // A name of its own leads there as well, and looks like a draft that nobody has begun to write.
  std::filesystem::remove(draft);
  std::filesystem::create_hard_link(victim, draft);
  Engine::Create(PathText(made));
  EXPECT_EQ(std::filesystem::file_size(victim), 0u);
  EXPECT_EQ(std::filesystem::hard_link_count(made), 1u);
}

// Its owner would own the database, and whoever has it open could write to that for good.
TEST_F(LeftBehind, AnEmptyDraftThatSomebodyElseMadeDoesNotBecomeTheFile) {
  const auto made = folder_.Path() / "made.mdb";
  const Text draft = PathText(folder_.Path() / "made.mdb.new");
  std::ofstream(folder_.Path() / "made.mdb.new").close();
  const auto others = NativeFileSystem().Open(draft, FileAccess::ReadWrite);
  Engine::Create(PathText(made));
  EXPECT_FALSE(others->Bears(PathText(made)));
  EXPECT_EQ(others->Stamp().size, 0u);
  EXPECT_FALSE(others->Stamp().linked);
  EXPECT_FALSE(std::filesystem::exists(draft));
}

// Whoever lays a link where the journal and the lock file are expected would have others write to a
// file of his choice, with their rights.
TEST_F(LeftBehind, LinksInThePlaceOfWhatLiesBesideTheFileAreNotFollowed) {
  const auto victim = folder_.Path() / "victim";
  const std::string content = "not to be written to";
  for (const auto& name : {Journal(), UserFilePath()}) {
    for (const bool hard : {false, true}) {
      std::ofstream(victim) << content;
      if (hard) {
        std::filesystem::create_hard_link(victim, name);
      } else {
        std::filesystem::create_symlink(victim, name);
      }
      const std::string refusal = WhatRaises([&] { Insert(*Open(), 50); });
      EXPECT_NE(refusal, "") << name << (hard ? ", hard" : "");
      std::ifstream file(victim);
      EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), content) << name;
      std::filesystem::remove(name);
      std::filesystem::remove(victim);
    }
  }
  Insert(*Open(), 50);
}

TEST_F(LeftBehind, AFileWithTwoNamesOfItsOwnIsReadAndNotWritten) {
  const auto other = folder_.Path() / "other.mdb";
  std::filesystem::create_hard_link(path_, other);
  EXPECT_EQ(Count(*Open(other)), kCount);
  EXPECT_NE(WhatRaises([&] { Insert(*Open(), 50); }).find("several names"), std::string::npos);
  std::filesystem::remove(other);
  Insert(*Open(), 50);
}

TEST_F(LeftBehind, AFileThatGetsASecondNameWhileItIsOpenIsNotWrittenAsLongAsItHasBoth) {
  const auto engine = Open();
  Insert(*engine, 50);
  const auto other = folder_.Path() / "other.mdb";
  std::filesystem::create_hard_link(path_, other);
  EXPECT_NE(WhatRaises([&] { Insert(*engine, 51); }).find("several names"), std::string::npos);
  EXPECT_EQ(Count(*engine), kCount + 1);
  std::filesystem::remove(other);
  Insert(*engine, 52);
  engine->Close();
  EXPECT_EQ(Count(*Open()), kCount + 2);
}

// Where the system cannot rename without replacing, a new file has both names for a moment, in
// which its maker may die.
TEST_F(LeftBehind, AFileThatStillHasItsDraftsNameLosesThatUnlessItsMakerIsAtWork) {
  constexpr uint64_t kMakerByte = 0x4000'0000'0100;
  const std::filesystem::path draft = path_.string() + ".new";
  std::filesystem::create_hard_link(path_, draft);
  {
    const auto maker = NativeFileSystem().Open(PathText(draft), FileAccess::Draft);
    ASSERT_TRUE(maker->TryLock(kMakerByte, 1, LockMode::Exclusive));
    EXPECT_NE(WhatRaises([&] { Insert(*Open(), 50); }).find("several names"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(draft));
  }
  Insert(*Open(), 51);
  EXPECT_FALSE(std::filesystem::exists(draft));
  EXPECT_EQ(Count(*Open()), kCount + 1);
  // Another file of that name is somebody's who is making one.
  std::ofstream(draft).close();
  const auto other = folder_.Path() / "other.mdb";
  std::filesystem::create_hard_link(path_, other);
  EXPECT_EQ(Count(*Open()), kCount + 1);
  EXPECT_TRUE(std::filesystem::exists(draft));
}

TEST_F(LeftBehind, AFileThatWasReplacedIsNotWrittenAnyMore) {
  const auto copy = folder_.Copy(path_, "copy.mdb");
  const auto engine = Open();
  Insert(*engine, 50);
  std::filesystem::rename(copy, path_);
  const auto before = ReadWholeFile(path_);
  EXPECT_NE(WhatRaises([&] { Insert(*engine, 51); }).find("another file has its name"),
            std::string::npos);
  EXPECT_EQ(ReadWholeFile(path_), before);
  engine->Close();
  EXPECT_EQ(Count(*Open()), kCount) << "the journal of the other one was not played";
}

TEST_F(LeftBehind, WhatLiesBesideTheFileHasItsRights) {
  ASSERT_EQ(chmod(path_.c_str(), 0664), 0);
  const bool other_group = getuid() == 0 && chown(path_.c_str(), 0, 4321) == 0;
  const mode_t mask = umask(077);
  const auto engine = Open();
  Insert(*engine, 50);
  umask(mask);
  for (const auto& path : {Journal(), UserFilePath()}) {
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0) << path;
    EXPECT_EQ(status.st_mode & 0777, 0664u) << path;
    EXPECT_TRUE(!other_group || status.st_gid == 4321u) << path;
  }
}

TEST_F(LeftBehind, AFileThatMayOnlyBeReadIsReadAsItHasToBe) {
  DieWriting(6);
  const auto torn = ReadWholeFile(path_);
  const pid_t child = fork();
  if (child == 0) {
    // Nobody special: neither the file nor its folder may be written.
    bool right = chmod(path_.c_str(), 0444) == 0 && chmod(Journal().c_str(), 0444) == 0;
    right = right && chmod(folder_.Path().c_str(), 0555) == 0;
    right = right && (getuid() != 0 || setuid(65534) == 0);
    try {
      const auto engine = Open();
      right = right && Count(*engine) == kCount && Findings(*engine).empty();
      right = right && WhatRaises([&] { Insert(*engine, 50); }) != "nothing was raised";
    } catch (const std::exception& error) {
      fprintf(stderr, "%s\n", error.what());
      right = false;
    }
    _exit(right ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ReadWholeFile(path_), torn);
  chmod(folder_.Path().c_str(), 0755);
  chmod(path_.c_str(), 0644);
  chmod(Journal().c_str(), 0644);
  EXPECT_EQ(Count(*Open()), kCount);
}

TEST_F(LeftBehind, AFileInAFolderWithoutRightsIsReadAsItHasToBeAndNotWritten) {
  DieWriting(6);
  const pid_t child = fork();
  if (child == 0) {
    bool right = chmod(path_.c_str(), 0666) == 0 && chmod(folder_.Path().c_str(), 0555) == 0;
    right = right && (getuid() != 0 || setuid(65534) == 0);
    try {
      std::filesystem::remove(UserFilePath());
    } catch (const std::exception&) {
      // It stays.
    }
    try {
      const auto engine = Open();
      right = right && Count(*engine) == kCount && Findings(*engine).empty();
      right = right && WhatRaises([&] { Insert(*engine, 50); }) != "nothing was raised";
    } catch (const std::exception& error) {
      fprintf(stderr, "%s\n", error.what());
      right = false;
    }
    _exit(right ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  chmod(folder_.Path().c_str(), 0755);
  EXPECT_EQ(Count(*Open()), kCount);
}

#endif

}  // namespace
}  // namespace rdv::jet
