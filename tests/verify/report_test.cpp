// The page that the kit leaves, and the list that it answers.
#include "tools/verify/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/sites/places.h"
#include "tools/verify/comparison.h"
#include "tools/verify/steps.h"

namespace rdv::verify {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

Step StepOf(const char* name, Outcome outcome, const char* text) {
  Step step;
  step.name = name;
  step.bits = 64;
  step.Add(outcome, "finding", text);
  return step;
}

std::string PageOf(const Report& report) {
  std::ostringstream page;
  WriteHtml(report, page);
  return page.str();
}

TEST(Verdict, IsThatOfTheWorstAndSaysWhenItIsOnlyAPart) {
  Report report;
  report.steps = {StepOf("a", Outcome::Passed, ""), StepOf("b", Outcome::Skipped, "why")};
  EXPECT_EQ(Verdict(report), "passed: 1 passed, 0 failed, 1 skipped");
  EXPECT_FALSE(AnyFailed(report));
  report.limits = {"only a few"};
  EXPECT_THAT(Verdict(report), HasSubstr("passed, a part only"));
  report.steps.push_back(StepOf("c", Outcome::Failed, "what"));
  EXPECT_THAT(Verdict(report), HasSubstr("FAILED, a part only"));
  EXPECT_TRUE(AnyFailed(report));
}

TEST(Page, NamesWhatFailedAndWhatWasLeftOutAsText) {
  Report report;
  report.steps = {StepOf("a", Outcome::Failed, "1 < 2 & \"3\""),
                  StepOf("b", Outcome::Skipped, "no provider")};
  report.limits = {"only the tests that match X were run"};
  const std::string page = PageOf(report);
  EXPECT_THAT(page, HasSubstr("1 &lt; 2 &amp; &quot;3&quot;"));
  EXPECT_THAT(page, Not(HasSubstr("1 < 2")));
  EXPECT_THAT(page, HasSubstr("no provider"));
  EXPECT_THAT(page, HasSubstr("<b>Not the whole:</b> only the tests that match X were run"));
}

TEST(Page, HoldsItsPictures) {
  Report report;
  report.steps = {StepOf("host", Outcome::Passed, "")};
  for (const char* bytes : {"Man", "Ma", "M"}) report.steps[0].pictures.push_back({"shown", bytes});
  const std::string page = PageOf(report);
  for (const char* text : {"base64,TWFu\"", "base64,TWE=\"", "base64,TQ==\""})
    EXPECT_THAT(page, HasSubstr(text));
}

TEST(Told, IsWhatTheStepsOfARowHaveFound) {
  const std::vector<Step> steps = {StepOf("routes", Outcome::Skipped, "no provider"),
                                   StepOf("host", Outcome::Passed, "")};
  EXPECT_THAT(ToldAbout({"", "", "", {"routes", "host", "traces"}}, steps),
              ElementsAre("routes, 64 bits: skipped (no provider)", "host, 64 bits: passed",
                          "traces: not part of this run"));
  EXPECT_THAT(ToldAbout({"", "", "by hand", {}}, steps),
              ElementsAre("nothing; a person has to look"));
}

TEST(NotVerifiedList, IsTheTableBelowItsHeading) {
  const auto rows = ReadNotVerified(
      "# Testing\n| a | b |\n\n## Not verified\n\ntext\n\n| what | why | told by |\n| --- | --- | "
      "--- |\n"
      "| files | no provider | `routes`, `provider` |\n| speech | nobody hears | by hand |\n\n## "
      "Next\n| x |\n");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].what, "files");
  EXPECT_EQ(rows[0].why, "no provider");
  EXPECT_THAT(rows[0].steps, ElementsAre("routes", "provider"));
  EXPECT_TRUE(rows[1].steps.empty());
}

TEST(NotVerifiedList, ThatIsNoneOrHasAnotherShapeIsRefused) {
  EXPECT_THROW(ReadNotVerified("# Testing\n"), std::runtime_error);
  EXPECT_THROW(ReadNotVerified("## Not verified\nnothing\n"), std::runtime_error);
  EXPECT_THROW(ReadNotVerified("## Not verified\n| a | b |\n| --- | --- |\n| x | y |\n"),
               std::runtime_error);
}

// What the document promises, the kit has.
TEST(NotVerifiedList, OfTheDocumentNamesStepsThatThereAreOrSaysWhatAPersonDoes) {
  const auto rows = ReadNotVerified(BytesOf(sites::Place("not-verified")));
  for (const NotVerified& row : rows) {
    if (row.steps.empty()) {
      EXPECT_THAT(row.told_by, HasSubstr("by hand")) << row.what;
    }
    for (const std::string& name : row.steps) {
      const bool known =
          std::any_of(kSteps.begin(), kSteps.end(),
                      [&](const StepDescription& each) { return each.name == name; });
      EXPECT_TRUE(known || name.ends_with("_tests") || name.ends_with(kCurrentControls))
          << name << " in \"" << row.what << '"';
    }
  }
}

}  // namespace
}  // namespace rdv::verify
