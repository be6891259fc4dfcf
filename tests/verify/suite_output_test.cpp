// What the kit reads out of what a test program prints.
#include "tools/verify/suite_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace rdv::verify {
namespace {

using testing::HasSubstr;

constexpr std::string_view kHead =
    "[==========] Running 3 tests from 1 test suite.\r\n"
    "[----------] 3 tests from Folders\r\n";
constexpr std::string_view kPassed =
    "[ RUN      ] Folders.AreFound\r\n[       OK ] Folders.AreFound (3 ms)\r\n";
constexpr std::string_view kFailed =
    "[ RUN      ] Folders/Each.IsRead/1\r\n"
    "folders_test.cpp:12: Failure\r\nValue of: a\r\n"
    "[  FAILED  ] Folders/Each.IsRead/1, where GetParam() = 7 (0 ms)\r\n";
constexpr std::string_view kSkipped =
    "[ RUN      ] Folders.OfOthers\r\nfolders_test.cpp:20: Skipped\r\nno such files here\r\n\r\n"
    "[  SKIPPED ] Folders.OfOthers (0 ms)\r\n";
constexpr std::string_view kTail =
    "[==========] 3 tests from 1 test suite ran. (4 ms total)\r\n"
    "[  PASSED  ] 1 test.\r\n[  FAILED  ] 1 test, listed below:\r\n"
    "[  FAILED  ] Folders/Each.IsRead/1, where GetParam() = 7\r\n";

std::string Text(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

TEST(SuiteOutput, HasAFindingForEachTest) {
  const auto findings = FindingsOf(Text({kHead, kPassed, kFailed, kSkipped, kTail}), 1);
  ASSERT_EQ(findings.size(), 3u);
  EXPECT_EQ(findings[0].outcome, Outcome::Passed);
  EXPECT_EQ(findings[0].name, "Folders.AreFound");
  EXPECT_EQ(findings[0].text, "");
  EXPECT_EQ(findings[1].outcome, Outcome::Failed);
  EXPECT_EQ(findings[1].name, "Folders/Each.IsRead/1");
  EXPECT_EQ(findings[1].text, "folders_test.cpp:12: Failure\nValue of: a");
  EXPECT_EQ(findings[2].outcome, Outcome::Skipped);
  EXPECT_EQ(findings[2].text, "no such files here");
}

TEST(SuiteOutput, AnEndingBehindSomethingPrintedIsSeen) {
  const auto findings =
      FindingsOf(Text({kHead, "[ RUN      ] A.B\nno line end[       OK ] A.B (0 ms)\n", kTail}), 0);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].outcome, Outcome::Passed);
}

TEST(SuiteOutput, ATestInWhichTheProgramWentAwayHasFailed) {
  const auto findings =
      FindingsOf(Text({kHead, kPassed, "[ RUN      ] Folders.Crash\nlast words\n"}), 0xc0000005);
  ASSERT_EQ(findings.size(), 3u);
  EXPECT_EQ(findings[1].outcome, Outcome::Failed);
  EXPECT_EQ(findings[1].name, "Folders.Crash");
  EXPECT_THAT(findings[1].text, HasSubstr("last words"));
  EXPECT_EQ(findings[2].outcome, Outcome::Failed);
  EXPECT_THAT(findings[2].text, HasSubstr("exit code 3221225477"));
}

TEST(SuiteOutput, AnExitCodeThatNoTestExplainsIsAFailure) {
  EXPECT_EQ(FindingsOf(Text({kHead, kPassed, kTail}), 3).back().outcome, Outcome::Failed);
  EXPECT_EQ(FindingsOf(Text({kHead, kFailed, kTail}), 0).back().name, "the program");
  EXPECT_EQ(FindingsOf("", 0).back().outcome, Outcome::Failed);
}

TEST(SuiteOutput, AProgramThatSaysWhyItDoesNothingIsSkipped) {
  const auto findings = FindingsOf("skipped: no lists here\r\n", 77);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].outcome, Outcome::Skipped);
  EXPECT_EQ(findings[0].text, "no lists here");
  EXPECT_EQ(FindingsOf("", 77).back().outcome, Outcome::Failed) << "without a reason";
}

TEST(SuiteOutput, AProgramOfWhichNoTestWasChosenHasNotPassed) {
  const auto findings =
      FindingsOf("[==========] 0 tests from 0 test suites ran. (0 ms total)\n", 0);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].outcome, Outcome::Skipped);
}

}  // namespace
}  // namespace rdv::verify
