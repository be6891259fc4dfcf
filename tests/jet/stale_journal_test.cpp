// Journals beside files that somebody else has gone on with, or that others have taken the place
// of; and files with a journal that cannot be put right just now.
#include <gtest/gtest.h>

#include "data/jet/file/commit_words.h"
#include "data/jet/format/format.h"
#include "tests/jet/dead_writer.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace rdv::jet {
namespace {

using things::Count;
using things::Insert;

constexpr std::chrono::milliseconds kWaitForWriter{30};
constexpr int32_t kCount = 20;

class StaleJournal : public testing::Test {
 protected:
  StaleJournal() { things::Create(PathText(path_), kCount, 3000); }

  static std::unique_ptr<Engine> Open(const std::filesystem::path& path,
                                      FileSystem* files = nullptr) {
    return Engine::Open(PathText(path), {.lock_wait = kWaitForWriter, .files = files});
  }
  std::unique_ptr<Engine> Open() { return Open(path_); }
  std::filesystem::path Journal() const { return things::JournalOf(path_); }

  void DieBetweenStatements() { things::DieBetweenStatements(path_); }

  // What a program does that has the file to itself and knows nothing of the journal: the same
  // file, other content.
  void ChangeByAnother(const std::function<void(Engine&)>& change) {
    const auto copy = folder_.Copy(path_, "another.mdb");
    const auto engine = Open(copy);
    change(*engine);
    engine->Close();
    WriteWholeFile(path_, ReadWholeFile(copy));
  }

  void SetWord(size_t slot, uint16_t word) {
    std::vector<uint8_t> bytes = ReadWholeFile(path_);
    Store16(bytes.data() + kJet4.header.commit_words + 2 * slot, word);
    WriteWholeFile(path_, bytes);
  }

  // Another program that has the database open, until it is destroyed.
  std::unique_ptr<File> OtherProgram() {
    auto users = NativeFileSystem().Open(PathText(folder_.Path() / "site.ldb"), FileAccess::Create);
    EXPECT_TRUE(users->TryLock(0x10000001, 1, LockMode::Exclusive));
    return users;
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "site.mdb";
};

#ifndef _WIN32  // A file that is open cannot be replaced under Windows; the session is not known.

// The laptop's copy has gone on while the office had the file open.
TEST_F(StaleJournal, IsNotLeftBesideANewerFileThatTookTheNameMeanwhile) {
  const auto office = Open();
  const auto laptop_path = folder_.Copy(path_, "laptop.mdb");
  {
    const auto laptop = Open(laptop_path);
    for (int32_t id = 500; id < 503; ++id) Insert(*laptop, id, 6000);
    laptop->Close();
  }
  const auto newer = ReadWholeFile(laptop_path);
  Insert(*office, 900);
  std::filesystem::rename(laptop_path, path_);
  EXPECT_NE(WhatRaises([&] { Insert(*office, 901); }), kNothing);
  office->Close();
  EXPECT_EQ(Count(*Open()), kCount + 3);
  EXPECT_EQ(ReadWholeFile(path_), newer);
  EXPECT_FALSE(std::filesystem::exists(Journal()));
}

TEST_F(StaleJournal, OfADeadProcessIsNotPlayedIntoANewerFileThatTookTheName) {
  const auto laptop_path = folder_.Copy(path_, "laptop.mdb");
  {
    const auto laptop = Open(laptop_path);
    Insert(*laptop, 500, 6000);
    laptop->Close();
  }
  const auto newer = ReadWholeFile(laptop_path);
  DieBetweenStatements();
  std::filesystem::rename(laptop_path, path_);
  EXPECT_EQ(Count(*Open()), kCount + 1);
  EXPECT_EQ(ReadWholeFile(path_), newer);
  EXPECT_FALSE(std::filesystem::exists(Journal()));
}

// It counts on in the first commit word, which it has for itself.
TEST_F(StaleJournal, IsNotPlayedOverWhatAProgramThatHadTheFileToItselfHasCommitted) {
  const auto original = folder_.Copy(path_, "original.mdb");
  for (int32_t commits = 1; commits <= 4; ++commits) {
    SCOPED_TRACE(commits);
    folder_.Copy(original, path_.filename().string());
    DieBetweenStatements();
    ChangeByAnother([&](Engine& engine) {
      for (int32_t id = 2000; id < 2000 + commits; ++id) Insert(engine, id, 6000);
    });
    const auto bytes = ReadWholeFile(path_);
    EXPECT_EQ(Count(*Open()), kCount + 1 + commits);
    EXPECT_EQ(ReadWholeFile(path_), bytes);
    EXPECT_FALSE(std::filesystem::exists(Journal()));
  }
}

TEST_F(StaleJournal, IsNotPlayedOverDeletionsOfAProgramThatHadTheFileToItself) {
  DieBetweenStatements();
  ChangeByAnother([](Engine& engine) {
    for (const int32_t id : {3, 9, 1000}) things::Delete(engine, id);
  });
  const auto engine = Open();
  EXPECT_EQ(Count(*engine), kCount - 2);
  EXPECT_EQ(Findings(*engine), "");
}

#endif

TEST_F(StaleJournal, KeepsNobodyFromReadingWhileAnotherProgramHasTheFileOpen) {
  DieBetweenStatements();
  const auto other = OtherProgram();
  const auto bytes = ReadWholeFile(path_);
  const auto engine = Open();
  EXPECT_EQ(Count(*engine), kCount + 1);
  EXPECT_EQ(Findings(*engine), "");
  EXPECT_EQ(ReadWholeFile(path_), bytes);
  EXPECT_NE(WhatRaises([&] { Insert(*engine, 50); }).find("already in use"), std::string::npos);
}

TEST_F(StaleJournal, KeepsNobodyFromReadingWhileAnotherProgramHasTheFileOpenAndHasWrittenIt) {
  DieBetweenStatements();
  SetWord(3, 0x0107);
  const auto other = OtherProgram();
  EXPECT_EQ(Count(*Open()), kCount + 1);
}

TEST_F(StaleJournal, KeepsNobodyFromReadingOnAFullDisk) {
  for (int writes = 0; writes < 4; ++writes) {
    SCOPED_TRACE(writes);
    const auto original = folder_.Copy(path_, "original.mdb");
    DieBetweenStatements();
    FaultyFileSystem files;
    files.Arm(Fault::FullDisk, writes);
    const auto engine = Open(path_, &files);
    EXPECT_EQ(Count(*engine), kCount + 1);
    EXPECT_EQ(Findings(*engine), "");
    if (files.Struck()) {
      EXPECT_NE(WhatRaises([&] { Insert(*engine, 50); }), kNothing);
    }
    // The disk has room again: the same connection puts the file right before it writes.
    files.Arm(Fault::None, 0);
    Insert(*engine, 51);
    engine->Close();
    EXPECT_EQ(Count(*Open()), kCount + 2);
    EXPECT_EQ(Findings(*Open()), "");
    folder_.Copy(original, path_.filename().string());
  }
}

// The first word is that of whoever has the file to himself: no user of a shared file explains it.
TEST_F(StaleJournal, AFirstWordThatSaysBeingWrittenIsSuspectWhoeverIsThere) {
  SetWord(0, kCommitWriting);
  const auto other = OtherProgram();
  EXPECT_NE(WhatRaises([&] { Count(*Open()); }).find("may be corrupt"), std::string::npos);
}

TEST_F(StaleJournal, ThatIsOfNoKnownKindStaysBesideAFileThatIsSuspect) {
  SetWord(0, kCommitWriting);
  WriteWholeFile(Journal(), std::vector<uint8_t>(5000, 'x'));
  EXPECT_NE(WhatRaises([&] { Insert(*Open(), 50); }), kNothing);
  EXPECT_TRUE(std::filesystem::exists(Journal()));
}

#ifndef _WIN32

// What `action` does as another user; only root can become one.
bool DoesAs(uid_t user, const std::function<bool()>& action) {
  const pid_t child = fork();
  if (child == 0) {
    bool done = setgid(user) == 0 && setuid(user) == 0;
    try {
      done = done && action();
    } catch (const std::exception& error) {
      fprintf(stderr, "%s\n", error.what());
      done = false;
    }
    _exit(done ? 0 : 1);  // with the file open, as a killed process leaves it
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

TEST_F(StaleJournal, OfADeadUserStandsInNobodysWayWhoMayWriteTheFile) {
  if (getuid() != 0) GTEST_SKIP() << "only root can become other users";
  constexpr uid_t kOne = 65533;
  constexpr uid_t kOther = 65532;
  const mode_t mask = umask(022);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  const auto insert_and_die = [this](int32_t id) {
    return [this, id] {
      Insert(*Open().release(), id);
      return true;
    };
  };
  EXPECT_TRUE(DoesAs(kOne, insert_and_die(1000)));
  EXPECT_TRUE(std::filesystem::exists(Journal()));
  EXPECT_TRUE(DoesAs(kOther, insert_and_die(1001))) << "anybody may write this file";
  EXPECT_EQ(Count(*Open()), kCount + 2);
  ASSERT_EQ(chmod(path_.c_str(), 0644), 0);
  ASSERT_EQ(chown(path_.c_str(), kOne, kOne), 0);
  EXPECT_TRUE(DoesAs(0, insert_and_die(1002)));
  EXPECT_TRUE(DoesAs(kOne, insert_and_die(1003))) << "it is this user's own file";
  EXPECT_FALSE(DoesAs(kOther, insert_and_die(1004))) << "who may not write this one";
  struct stat status {};
  ASSERT_EQ(stat(Journal().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0644u);
  umask(mask);
  EXPECT_EQ(Count(*Open()), kCount + 4);
}

#endif

}  // namespace
}  // namespace rdv::jet
