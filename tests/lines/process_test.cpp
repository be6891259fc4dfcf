// The program as a process of its own, as a person and as a script start it.
#ifndef _WIN32

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "tests/lines/lines_site.h"
#include "tests/support/sites/places.h"
#include "tools/lines/progress.h"
#include "tools/rdvsite/demonstration_site.h"

namespace rdv::lines::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr std::chrono::milliseconds kAtOnce{0};

TEST(Progress, IsOneLineThatIsWrittenOverAndTakenAway) {
  std::ostringstream terminal;
  {
    Progress progress(terminal, true, "unit", 20, kAtOnce, kAtOnce);
    progress.Done(9);
    progress.Done(10);
    EXPECT_EQ(terminal.str(), "\runit 9 of 20\runit 10 of 20");
  }
  EXPECT_EQ(terminal.str(), "\runit 9 of 20\runit 10 of 20\r             \r");
}

TEST(Progress, IsNotShownWhereNobodyLooksNorOfWorkThatIsDoneAtOnce) {
  std::ostringstream pipe;
  Progress(pipe, false, "unit", 20, kAtOnce, kAtOnce).Done(9);
  EXPECT_EQ(pipe.str(), "");
  Progress(pipe, true, "unit", 20, std::chrono::hours(1), kAtOnce).Done(9);
  EXPECT_EQ(pipe.str(), "");
}

std::string Program() {
  return "'" + rdv::sites::Place("rdvlines").string() + "'";
}

// What the program writes to a terminal of its own.
std::string OnATerminal(const std::string& site, const std::string& output) {
  int terminal = 0;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    const std::string command = Program() + " check '" + site + "' >'" + output + "'";
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  std::string written;
  char piece[4096];
  // An error is the end: nobody has the terminal open any more.
  for (ssize_t size; (size = read(terminal, piece, sizeof piece)) > 0;) {
    written.append(piece, static_cast<size_t>(size));
  }
  close(terminal);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);  // there are findings
  return written;
}

TEST(Process, ShowsHowFarLongWorkIsOnATerminalAndOnlyThere) {
  const rdv::test::TemporaryFolder folder;
  const std::string site = (folder.Path() / "site").string();
  CreateDemonstrationSite(FromUtf8(site), 500);
  const std::string output = (folder.Path() / "output").string();
  EXPECT_THAT(OnATerminal(site, output),
              testing::MatchesRegex("(\rconfiguration [0-9]+ of [0-9]+)+\r *\r"));
  const std::string command =
      Program() + " check '" + site + "' 2>&1 >'" + output + ".2' | cat >'" + output + ".3'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(ReadBytes(output + ".3"), "");
  EXPECT_EQ(ReadBytes(output + ".2"), ReadBytes(output));
  EXPECT_THAT(ReadBytes(output), Not(HasSubstr("\r")));
}

// The words of the shell behind the program's own, and what came of them.
struct Ended {
  int code = 0;
  std::string printed;
};
Ended Shell(const std::string& words) {
  Ended ended;
  FILE* pipe = popen((Program() + " " + words).c_str(), "r");
  char piece[4096];
  for (size_t size; (size = fread(piece, 1, sizeof piece, pipe)) > 0;)
    ended.printed.append(piece, size);
  ended.code = WEXITSTATUS(pclose(pipe));
  return ended;
}

TEST(Process, SaysThatAChangeIsWrittenOfWhichItCannotTell) {
  const LinesSite site;
  const std::string before = site.Bytes();
  const Ended set = Shell("set '" + site.Folder() + "' 1 all 'Label=Front desk' 2>&1 >/dev/full");
  EXPECT_EQ(set.code, 3);
  EXPECT_THAT(set.printed,
              HasSubstr("the change is written; the output cannot be written: No space left"));
  EXPECT_NE(site.Bytes(), before);
}

TEST(Process, SaysWhyAFileIsNoDatabaseThatItCanUse) {
  const LinesSite site;
  std::filesystem::resize_file(site.Database(), 0);
  const Ended check = Shell("check '" + site.Folder() + "' 2>&1");
  EXPECT_EQ(check.code, 3);
  EXPECT_THAT(check.printed, HasSubstr("empty"));
}

}  // namespace
}  // namespace rdv::lines::test

#endif
