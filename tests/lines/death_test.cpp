// The process dies at any moment of a change: what it leaves behind, and what the next one makes of
// it.
#ifndef _WIN32

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "tests/lines/lines_site.h"
#include "tools/rdvsite/tool.h"

namespace {

constexpr int kNever = -1;
// How many calls that change a disk are still made before the process dies.
int calls_left = kNever;

bool DiesNow() {
  return calls_left != kNever && calls_left-- == 0;
}

void DieAt(bool now) {
  if (now) raise(SIGKILL);
}

}  // namespace

// In place of those of the system's library. Of a write half of it is done.
extern "C" ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  const bool dies = DiesNow();
  const ssize_t done = syscall(SYS_pwrite64, file, bytes, dies ? count / 2 : count, offset);
  DieAt(dies);
  return done;
}
extern "C" int fdatasync(int file) {
  DieAt(DiesNow());
  return static_cast<int>(syscall(SYS_fdatasync, file));
}
extern "C" int ftruncate(int file, off_t size) noexcept {
  DieAt(DiesNow());
  return static_cast<int>(syscall(SYS_ftruncate, file, size));
}
extern "C" int unlink(const char* path) noexcept {
  DieAt(DiesNow());
  return static_cast<int>(syscall(SYS_unlink, path));
}
extern "C" int rename(const char* from, const char* to) noexcept {
  DieAt(DiesNow());
  return static_cast<int>(syscall(SYS_rename, from, to));
}
extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to,
                         unsigned flags) noexcept {
  DieAt(DiesNow());
  return static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

namespace rdv::lines::test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::EndsWith;
using testing::Eq;
using testing::HasSubstr;
using testing::Not;

using Rows = std::vector<StoredRow>;

// Runs rdvlines in a process of its own that dies with the call after so many. Whether it died.
bool DiedWith(int calls, const LinesSite& site, const std::string& command,
              const std::vector<std::string>& words) {
  const pid_t child = fork();
  if (child == 0) {
    calls_left = calls;
    const Outcome outcome = site.Run(command, words);
    _exit(outcome.code);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) return true;
  EXPECT_EQ(WEXITSTATUS(status), 0);
  return false;
}

std::string Checked(const LinesSite& site) {
  std::ostringstream out;
  std::ostringstream errors;
  const std::vector<std::string> words = {"check", site.Database().string()};
  const int code = RunSiteTool(words, out, errors);
  return code == 0 ? "sound" : out.str() + errors.str();
}

class Death : public testing::Test {
 protected:
  // Kills the command at each call that changes a disk, one after the other. Between two, the
  // database is as at the beginning.
  void AtEachMoment(const std::string& command, const std::vector<std::string>& words,
                    const std::function<void()>& examine) {
    before_ = site_.Rows("Used_Lines");
    const std::string bytes = site_.Bytes();
    ASSERT_FALSE(DiedWith(kNever, site_, command, words));
    after_ = site_.Rows("Used_Lines");
    ASSERT_NE(before_, after_);
    int moment = 0;
    for (;; ++moment) {
      SCOPED_TRACE(command + " dies at call " + std::to_string(moment));
      for (const std::string& name : site_.FilesBesideDatabase()) {
        std::filesystem::remove(site_.Database().parent_path() / name);
      }
      WriteBytes(site_.Database(), bytes);
      if (!DiedWith(moment, site_, command, words)) break;
      EXPECT_EQ(Checked(site_), "sound");
      EXPECT_THAT(site_.Rows("Used_Lines"), AnyOf(Eq(before_), Eq(after_)));
      for (const std::string& name : site_.FilesBesideDatabase()) {
        if (!name.ends_with(".mdb")) continue;
        EXPECT_EQ(ReadBytes(site_.Database().parent_path() / name), bytes) << name;
      }
      examine();
      if (testing::Test::HasFailure()) return;
    }
    EXPECT_GE(moment, 10) << "the calls of the system are not those that the program makes";
  }

  // Somebody goes on: with another change, and takes it back.
  void ExpectTheNextOneToWork() {
    const Rows stored = site_.Rows("Used_Lines");
    ASSERT_EQ(site_.Run("set", {"3", "2", "Label=next"}).code, 0);
    EXPECT_EQ(site_.Line(3, 2).at("Description"), "next");
    EXPECT_THAT(site_.FilesBesideDatabase(), Not(Contains(EndsWith(".new"))));
    ASSERT_EQ(site_.Run("undo").code, 0);
    EXPECT_EQ(site_.Rows("Used_Lines"), stored);
  }

  const LinesSite site_;
  Rows before_;
  Rows after_;
};

TEST_F(Death, InAChangeLeavesAllOfItOrNothingAndWhatUndoNeeds) {
  int made = 0;
  AtEachMoment("set", {"3", "1-4", "Volume=High", "Label=North wing"}, [&] {
    const bool changed = site_.Rows("Used_Lines") == after_;
    made += changed ? 1 : 0;
    ExpectTheNextOneToWork();
    const Outcome undone = site_.Run("undo");
    if (changed) {
      EXPECT_EQ(undone.code, 0) << undone.errors;
    } else {
      EXPECT_THAT(undone.out + undone.errors,
                  AnyOf(HasSubstr("it was never made"), HasSubstr("no change of this tool")));
    }
    EXPECT_EQ(site_.Rows("Used_Lines"), before_);
  });
  EXPECT_GE(made, 1);
}

TEST_F(Death, InAnImportLeavesAllOfItOrNothing) {
  const std::string table = site_.Scratch("lines.csv").string();
  ASSERT_EQ(site_.Run("export", {"-o", table}).code, 0);
  std::string text = ReadBytes(table);
  for (size_t at = 0; (at = text.find("Line ", at)) != std::string::npos; at += 5) {
    if (text[at + 5] >= '1' && text[at + 5] <= '9') text.replace(at, 5, "Wire ");
  }
  WriteBytes(table, text);
  AtEachMoment("import", {table}, [&] { ExpectTheNextOneToWork(); });
}

TEST_F(Death, InAnUndoLeavesItToBeDoneAgainOrDone) {
  const Rows original = site_.Rows("Used_Lines");
  ASSERT_EQ(site_.Run("set", {"3", "1-4", "Volume=High"}).code, 0);
  const Rows changed = site_.Rows("Used_Lines");
  const std::string bytes = site_.Bytes();
  const std::filesystem::path record = site_.Newest(".undo.json");
  const std::string content = ReadBytes(record);
  int moment = 0;
  for (;; ++moment) {
    SCOPED_TRACE(moment);
    WriteBytes(site_.Database(), bytes);
    std::filesystem::remove(site_.Database().string() + "-journal");
    WriteBytes(record, content);
    if (!DiedWith(moment, site_, "undo", {})) break;
    EXPECT_EQ(Checked(site_), "sound");
    EXPECT_THAT(site_.Rows("Used_Lines"), AnyOf(Eq(original), Eq(changed)));
    const Outcome again = site_.Run("undo");
    EXPECT_LE(again.code, 1) << again.errors;
    EXPECT_EQ(site_.Rows("Used_Lines"), original);
  }
  EXPECT_GE(moment, 10);
}

}  // namespace
}  // namespace rdv::lines::test

#endif
