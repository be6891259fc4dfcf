// Errors of the system at every one of its calls, and a disk that is full: what a real process then
// leaves of a database file.
#ifndef _WIN32

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "tests/jet/dead_writer.h"
#include "tests/jet/things_on_disk.h"

namespace {

// The error that the system's calls give once `calls_until_error` more of them have been made.
int call_error = 0;
int calls_until_error = 0;
bool call_failed = false;
// The file system gives no file another name in one step.
bool renames_in_two_steps = false;

bool CallFails() {
  if (call_error == 0 || calls_until_error-- > 0) return false;
  calls_until_error = 0;
  call_failed = true;
  errno = call_error;
  return true;
}

}  // namespace

// In place of those of the system's library.
extern "C" ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  return CallFails() ? -1 : syscall(SYS_pwrite64, file, bytes, count, offset);
}
extern "C" int fdatasync(int file) {
  return CallFails() ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
extern "C" int ftruncate(int file, off_t size) noexcept {
  return CallFails() ? -1 : static_cast<int>(syscall(SYS_ftruncate, file, size));
}
extern "C" int unlink(const char* name) noexcept {
  return CallFails() ? -1 : static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, name, 0));
}
extern "C" int link(const char* name, const char* other) noexcept {
  if (CallFails()) return -1;
  return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, name, AT_FDCWD, other, 0));
}
extern "C" int renameat2(int from, const char* name, int to, const char* other,
                         unsigned flags) noexcept {
  if (CallFails()) return -1;
  if (!renames_in_two_steps)
    return static_cast<int>(syscall(SYS_renameat2, from, name, to, other, flags));
  errno = EINVAL;
  return -1;
}
extern "C" int open(const char* name, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return CallFails() ? -1 : static_cast<int>(syscall(SYS_openat, AT_FDCWD, name, flags, mode));
}

namespace rdv::jet {
namespace {

using things::Count;
using things::Insert;

class SystemErrors : public things::OnDisk {
 protected:
  // From some call of the system on, all that open, write, flush, cut, name or remove fail, as long
  // as the action lasts and no longer. `judge` is told what was raised. Ends with the action that
  // needs no more calls.
  static void ForEachCall(const std::function<void()>& before, const std::function<void()>& action,
                          const std::function<void(const std::string& raised)>& judge) {
    for (const int error : {ENOSPC, EIO}) {
      int failed = 0;
      for (int calls = 0;; ++calls) {
        SCOPED_TRACE(testing::Message() << error << " after " << calls);
        before();
        call_failed = false;
        calls_until_error = calls;
        call_error = error;
        const std::string raised = WhatRaises(action);
        call_error = 0;
        if (raised != kNothing) {
          EXPECT_NE(raised.find("Disk or network error"), std::string::npos) << raised;
        }
        judge(raised);
        if (!call_failed || HasFailure()) break;
        ++failed;
      }
      EXPECT_GT(failed, 8) << "the system's calls were not the test's";
    }
  }
};

TEST_F(SystemErrors, AtAnyCallLeaveTheFileAfterSomeWholeStatement) {
  const auto original = folder_.Copy(path_, "original.mdb");
  std::unique_ptr<Engine> writer;
  int written = 0;
  ForEachCall(
      [&] {
        folder_.Copy(original, path_.filename().string());
        writer = Open();
        written = kCount;
      },
      [&] {
        for (int32_t id = 1000; id < 1003; ++id, ++written) Insert(*writer, id, 5000);
        writer->Close();
      },
      [&](const std::string&) {
        writer.reset();
        const auto engine = Open();
        EXPECT_EQ(Count(*engine), written);
        EXPECT_EQ(Findings(*engine), "");
      });
}

// Nobody but who looks after it notices.
TEST_F(SystemErrors, AtAnyCallOfPuttingAFileRightLeaveItToTheNextWhoDoesThat) {
  const auto original = folder_.Copy(path_, "original.mdb");
  int read = 0;
  ForEachCall(
      [&] {
        folder_.Copy(original, path_.filename().string());
        things::DieWriting(path_, 6);
      },
      [&] {
        const auto engine = Open();
        EXPECT_EQ(Count(*engine), kCount);
        ++read;
      },
      [&](const std::string&) {
        const auto engine = Open();
        EXPECT_EQ(Count(*engine), kCount);
        EXPECT_EQ(Findings(*engine), "");
        EXPECT_FALSE(std::filesystem::exists(things::JournalOf(path_)));
      });
  EXPECT_GT(read, 2) << "a file that cannot be put right just now is read all the same";
}

// Whichever way the new file gets its name.
TEST_F(SystemErrors, AtAnyCallOfACreationLeaveNoFileOrAWholeOne) {
  const auto made = folder_.Path() / "made.mdb";
  int whole = 0;
  for (const bool two_steps : {false, true}) {
    SCOPED_TRACE(two_steps);
    renames_in_two_steps = two_steps;
    ForEachCall([&] { std::filesystem::remove(made); },
                [&] { things::Create(PathText(made), 3, 3000); },
                [&](const std::string& raised) {
                  const bool there = std::filesystem::exists(made);
                  EXPECT_TRUE(there || raised != kNothing);
                  whole += there && raised != kNothing ? 1 : 0;
                  if (!there) things::Create(PathText(made), 3, 3000);
                  const auto engine = Open(made);
                  EXPECT_EQ(Count(*engine), 3);
                  EXPECT_EQ(Findings(*engine), "");
                  EXPECT_FALSE(std::filesystem::exists(made.string() + ".new"));
                  EXPECT_EQ(std::filesystem::hard_link_count(made), 1u);
                });
  }
  renames_in_two_steps = false;
  EXPECT_GT(whole, 2) << "it had its name, and that was not sure to be on the disk";
}

// A file system of a few pages that runs full, in a child that may mount one.
TEST_F(SystemErrors, AFullDiskRefusesTheStatementAndLeavesTheRest) {
  constexpr int kCannotMount = 77;
  const auto mounted = folder_.Path() / "small";
  std::filesystem::create_directory(mounted);
  const pid_t child = fork();
  if (child == 0) {
    const bool root = getuid() == 0;
    const bool apart = unshare(root ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
                       mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    if (!apart || mount("tmpfs", mounted.c_str(), "tmpfs", 0, "size=600k") != 0)
      _exit(kCannotMount);
    int failed = 0;
    try {
      std::filesystem::copy_file(path_, mounted / "site.mdb");
      int written = kCount;
      for (int32_t id = 1000; id < 1200; ++id) {
        const auto engine = Open(mounted / "site.mdb");
        const std::string raised = WhatRaises([&] { Insert(*engine, id, 20000); });
        if (raised == "nothing was raised") {
          ++written;
          engine->Close();
        } else if (raised.find("Disk or network error") == std::string::npos) {
          throw std::runtime_error(raised);
        } else {
          ++failed;
        }
        if (Count(*Open(mounted / "site.mdb")) != written)
          throw std::runtime_error("not as before");
        if (failed == 5) break;
      }
      const auto engine = Open(mounted / "site.mdb");
      if (!Findings(*engine).empty()) throw std::runtime_error(Findings(*engine));
    } catch (const std::exception& error) {
      fprintf(stderr, "%s\n", error.what());
      _exit(1);
    }
    _exit(failed == 5 ? 0 : 2);
  }
  int status = -1;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kCannotMount) GTEST_SKIP() << "no file system may be mounted here";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace rdv::jet

#endif
