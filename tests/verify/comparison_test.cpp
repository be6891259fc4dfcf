// What the kit makes of two runs, and of a machine before and after.
#include "tools/verify/comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/site_files.h"
#include "tools/verify/database_text.h"

namespace rdv::verify {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Snapshots, TellWhatCameWentAndChanged) {
  const Snapshot before = {{"kept", 1}, {"changed", 1}, {"gone", 1}};
  const Snapshot after = {{"kept", 1}, {"changed", 2}, {"new", 1}};
  EXPECT_THAT(Differences(before, after), ElementsAre("changed changed", "gone gone", "added new"));
  EXPECT_THAT(Differences(before, before), ElementsAre());
}

TEST(Snapshots, TellTheProductsTracesFromWhatOtherProgramsDoMeanwhile) {
  const Snapshot before = {{"HKLM\\Store", 1}, {"HKLM\\{A}", 1}};
  const Snapshot registered = {{"HKLM\\Store", 1}, {"HKLM\\{A}", 2}, {"HKLM\\{B}", 1}};
  const auto written = WrittenBetween(before, registered);
  EXPECT_THAT(written, ElementsAre("HKLM\\{A}", "HKLM\\{B}"));
  const Snapshot after = {
      {"HKLM\\Store", 2}, {"HKLM\\{A}", 1}, {"HKLM\\{B}", 1}, {"HKLM\\Tlv_rdv_x", 1}};
  const Traces traces = SortTraces(Differences(before, after), written);
  EXPECT_THAT(traces.ours, ElementsAre("added HKLM\\Tlv_rdv_x", "added HKLM\\{B}"));
  EXPECT_THAT(traces.others, ElementsAre("changed HKLM\\Store"));
}

TEST(Digests, DifferWithTheBytesAndTheirOrder) {
  EXPECT_NE(Digest(kEmptyDigest, "ab", 2), Digest(kEmptyDigest, "ba", 2));
  EXPECT_EQ(Digest(Digest(kEmptyDigest, "a", 1), "b", 1), Digest(kEmptyDigest, "ab", 2));
}

class Runs : public testing::Test {
 protected:
  void Write(const test::TemporaryFolder& folder, const char* name, const char* text) {
    std::ofstream(folder.Path() / name, std::ios::binary) << text;
  }
  std::vector<Finding> Compare() { return CompareRuns(one_.Path(), other_.Path(), &BytesOf); }

  test::TemporaryFolder one_;
  test::TemporaryFolder other_;
};

TEST_F(Runs, WithTheSameAnswersAndDatabasesPass) {
  for (const auto* folder : {&one_, &other_}) {
    Write(*folder, "a.jsonl", "{}\n");
    Write(*folder, "a.mdb", "rows");
    Write(*folder, "b.jsonl", "{}\n");
  }
  const auto findings = Compare();
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_EQ(findings[0].outcome, Outcome::Passed);
  EXPECT_EQ(findings[1].outcome, Outcome::Passed);
}

TEST_F(Runs, WithOtherAnswersFailAndNameTheLine) {
  Write(one_, "a.jsonl", "{}\n{\"shown\":true}\n");
  Write(other_, "a.jsonl", "{}\n{\"shown\":false}\n");
  const auto findings = Compare();
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].outcome, Outcome::Failed);
  EXPECT_THAT(findings[0].text, HasSubstr("answers: line 2"));
}

TEST_F(Runs, WithOtherDatabasesFail) {
  Write(one_, "a.jsonl", "{}\n");
  Write(other_, "a.jsonl", "{}\n");
  Write(one_, "a.mdb", "one");
  EXPECT_EQ(Compare().at(0).outcome, Outcome::Failed) << "only one has a database";
  Write(other_, "a.mdb", "other");
  EXPECT_THAT(Compare().at(0).text, HasSubstr("databases: "));
}

TEST_F(Runs, ThatNeverWereGiveNothing) {
  EXPECT_THAT(CompareRuns(one_.Path() / "missing", other_.Path() / "missing", &BytesOf),
              testing::IsEmpty());
  EXPECT_THAT(FilesOf(one_.Path() / "missing", ".mdb"), testing::IsEmpty());
}

TEST(Readings, DifferWhereOnlyOneReadsTheFileOrBothReadOtherRows) {
  const Reading rows = {true, "rows\n"};
  const Reading other = {true, "others\n"};
  const Reading refused = {false, "Engine: Unrecognized database format."};
  const Reading refused_otherwise = {false, "Provider: no such format"};
  EXPECT_EQ(DifferenceOf(rows, rows), "");
  EXPECT_EQ(DifferenceOf(refused, refused_otherwise), "");
  EXPECT_THAT(DifferenceOf(rows, other), HasSubstr("others"));
  EXPECT_THAT(DifferenceOf(rows, refused_otherwise), HasSubstr("only the engine reads it"));
  EXPECT_THAT(DifferenceOf(refused, rows), HasSubstr("only the provider reads it"));
}

TEST_F(Runs, OfWhichOneLacksAScenarioFail) {
  Write(one_, "a.jsonl", "{}\n");
  EXPECT_EQ(Compare().at(0).outcome, Outcome::Failed);
}

}  // namespace
}  // namespace rdv::verify
