// The programs as whole processes: what becomes of output that cannot be delivered, and what each
// answers to the words that all of them know.
#ifndef _WIN32

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/site_files.h"
#include "tools/command_line/exit_codes.h"

namespace rdv::tools {
namespace {

struct Ended {
  int code = 0;
  std::string printed;
};

// Of the shell, so of the last program of a pipe.
Ended Shell(const std::string& command) {
  Ended ended;
  FILE* const pipe = popen(command.c_str(), "r");
  std::array<char, 4096> piece{};
  while (const size_t size = fread(piece.data(), 1, piece.size(), pipe))
    ended.printed.append(piece.data(), size);
  ended.code = WEXITSTATUS(pclose(pipe));
  return ended;
}

class Programs : public testing::TestWithParam<const char*> {
 protected:
  std::string Program() const { return GetParam(); }
};

TEST_P(Programs, AnswerHelpAndVersionOnStandardOutput) {
  const std::string name = Program().substr(Program().rfind('/') + 1);
  for (const std::string word : {" --help", " -h", " help"}) {
    const Ended help = Shell(Program() + word + " 2>/dev/null");
    EXPECT_EQ(help.code, kDone);
    EXPECT_NE(help.printed.find("Exit codes: 0 done"), std::string::npos) << help.printed;
  }
  const Ended version = Shell(Program() + " --version 2>&1");
  EXPECT_EQ(version.code, kDone);
  EXPECT_EQ(version.printed, name + " " RDV_VERSION "\n");
}

TEST_P(Programs, NameAWrongWordInOneLineOnStandardError) {
  const Ended wrong = Shell(Program() + " --versoin 2>&1 >/dev/null");
  EXPECT_EQ(wrong.code, kUsage);
  EXPECT_NE(wrong.printed.find("'--versoin'"), std::string::npos) << wrong.printed;
  EXPECT_EQ(wrong.printed.find('\n'), wrong.printed.size() - 1) << wrong.printed;
}

TEST_P(Programs, FailWhenTheirOutputIsNotTaken) {
  const Ended full = Shell(Program() + " --help 2>&1 >/dev/full");
  EXPECT_EQ(full.code, kUnusable);
  EXPECT_NE(full.printed.find("the output cannot be written: No space left on device\n"),
            std::string::npos)
      << full.printed;
  EXPECT_EQ(Shell(Program() + " --help 2>/dev/null >&-").code, kUnusable);
}

INSTANTIATE_TEST_SUITE_P(All, Programs,
                         testing::Values(RDV_SITE_PROGRAM, RDV_PLAY_PROGRAM, RDV_LINES_PROGRAM),
                         [](const auto& each) {
                           const std::string program = each.param;
                           return program.substr(program.rfind('/') + 1);
                         });

// What rdvsite prints is often a backup.
class SitePrograms : public testing::Test {
 protected:
  SitePrograms() {
    created_ = Shell(Program() + " create " + Site() + " --configurations 300 2>&1");
  }

  static std::string Program() { return RDV_SITE_PROGRAM; }
  std::string Site() const { return (folder_.Path() / "site").string(); }

  test::TemporaryFolder folder_;
  Ended created_;
};

TEST_F(SitePrograms, FailWhenADumpDoesNotFitOnTheDisk) {
  ASSERT_EQ(created_.code, kDone) << created_.printed;
  const Ended dump = Shell(Program() + " dump " + Site() + " 2>&1 >/dev/full");
  EXPECT_EQ(dump.code, kUnusable);
  EXPECT_EQ(dump.printed, "rdvsite dump: the output cannot be written: No space left on device\n");
}

TEST_F(SitePrograms, SayThatWhatTheyMadeIsThereWhenNobodyCanBeToldOfIt) {
  ASSERT_EQ(created_.code, kDone) << created_.printed;
  EXPECT_EQ(Shell(Program() + " create " + Site() + "2 2>&1 >/dev/full").printed,
            "rdvsite create: the site is made; the output cannot be written: No space left on "
            "device\n");
  EXPECT_EQ(Shell(Program() + " check " + Site() + "2").code, kDone);
  const std::string copy = Site() + "/copy.mdb";
  EXPECT_EQ(Shell(Program() + " repair " + Site() + " --to " + copy + " 2>&1 >/dev/full").printed,
            "rdvsite repair: the copy is made; the output cannot be written: No space left on "
            "device\n");
  EXPECT_EQ(Shell(Program() + " check " + copy).code, kDone);
}

// A database that is opened then must not become what the program prints to.
TEST_F(SitePrograms, LeaveTheDatabaseAloneWhereTheirOutputIsClosed) {
  ASSERT_EQ(created_.code, kDone) << created_.printed;
  const std::string sum = "cd " + Site() + " && find . -type f | sort | xargs sha256sum";
  const std::string before = Shell(sum).printed;
  EXPECT_EQ(Shell(Program() + " dump " + Site() + " 2>/dev/null >&-").code, kUnusable);
  EXPECT_EQ(Shell(Program() + " dump " + Site() + " <&- 2>&- | wc -l").code, kDone);
  EXPECT_EQ(Shell(sum).printed, before);
}

TEST_F(SitePrograms, EndQuietlyWhenTheReaderOfAPipeHasGone) {
  ASSERT_EQ(created_.code, kDone) << created_.printed;
  const std::string errors = (folder_.Path() / "errors").string();
  const std::string code = (folder_.Path() / "code").string();
  const Ended head = Shell("{ " + Program() + " dump " + Site() + " 2>" + errors + "; echo $? >" +
                           code + "; } | head -c 100");
  EXPECT_EQ(head.printed.size(), 100u);
  EXPECT_EQ(Shell("cat " + errors).printed, "");
  EXPECT_EQ(Shell("cat " + code).printed, "0\n");
}

TEST(Player, TellsAScriptThatIsWrongFromOneThatIsNotThere) {
  const Ended wrong = Shell("echo shwo 1 | " RDV_PLAY_PROGRAM " - 2>&1");
  EXPECT_EQ(wrong.code, kUsage);
  EXPECT_EQ(wrong.printed, "-:1: unknown command 'shwo': did you mean 'show'?\n");
  const Ended missing = Shell(RDV_PLAY_PROGRAM " nowhere.rdv 2>&1");
  EXPECT_EQ(missing.code, kUnusable);
  EXPECT_EQ(missing.printed, "rdvplay: there is no script 'nowhere.rdv' that can be read\n");
}

TEST(PlayingGuide, HasTheCommandsThatTheProgramHas) {
  std::ifstream file(RDV_DOCUMENTS "/playing.md", std::ios::binary);
  const std::string guide((std::istreambuf_iterator<char>(file)), {});
  const Ended help = Shell(RDV_PLAY_PROGRAM " help script");
  EXPECT_EQ(help.code, kDone);
  EXPECT_NE(guide.find("```text\n" + help.printed + "```\n"), std::string::npos) << help.printed;
}

}  // namespace
}  // namespace rdv::tools

#endif
