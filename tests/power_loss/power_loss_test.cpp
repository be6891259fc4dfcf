// What a loss of power leaves, and what a process that is killed does, at every moment of
// everything that writes.
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/power_loss/disk_judge.h"

namespace rdv::jet {
namespace {

constexpr size_t kEveryDay = 80;

class PowerLossTest : public DiskJudge {
 protected:
  void RecordAndProve(const RecordedRun& run) {
    Record(run);
    Prove();
  }
  void Prove() {
    DiskJudge::Prove(kEveryDay * Thoroughness());
    RecordProperty("states", std::to_string(StatesJudged()));
    std::printf("             %zu states of the disk over %zu moments\n", StatesJudged(),
                Disk().Operations().size() + 1);
    EXPECT_GE(StatesJudged(), kEveryDay * Thoroughness() / 2);
  }
};

TEST_F(PowerLossTest, UpdatesAreThereOrNot) {
  RecordAndProve(kUpdates);
}

TEST_F(PowerLossTest, InsertionsThatSplitPagesAreThereOrNot) {
  RecordAndProve(kInsertionsThatSplitPages);
}

TEST_F(PowerLossTest, GrowingMapsOfPagesAreThereOrNot) {
  Record(kGrowingMaps);
  ASSERT_GT(Disk().ContentOf(u"site.mdb").size(), size_t{512} * 4096) << "the first maps are full";
  Prove();
}

TEST_F(PowerLossTest, DeletionsAreThereOrNot) {
  RecordAndProve(kDeletions);
}

TEST_F(PowerLossTest, MemosOfSeveralPagesAreThereOrNot) {
  RecordAndProve(kLongMemos);
}

TEST_F(PowerLossTest, ANewDatabaseIsThereWholeOrNot) {
  RecordAndProve(kNewDatabase);
}

TEST_F(PowerLossTest, ARepairIsThereWholeOrNot) {
  RecordAndProve(kRepair);
  EXPECT_EQ(FindingsOf(Disk(), u"site.mdb"), "");
}

// A site's lines and its card, by the statements that the control has.
TEST_F(PowerLossTest, ADefaultUnitIsThereStatementByStatementAndEachOnceItsConnectionHasClosed) {
  RecordAndProve(kDefaultUnit);
}

TEST_F(PowerLossTest, AnApplyOfTenRowsIsThereWhenItHasReturned) {
  RecordAndProve(kAppliesOfTenRows);
}

TEST_F(PowerLossTest, RowsThatWereExpectedToChangeAreThereOrNotWhetherTheyDidOrNot) {
  RecordAndProve(kExpectedRows);
}

TEST_F(PowerLossTest, SeveralConnectionsShareOneJournal) {
  RecordAndProve(kSeveralConnections);
}

// Each of the two files by itself.
TEST_F(PowerLossTest, StatementsOnATableThatAnotherFileHasAreThereOrNot) {
  RecordAndProve(kLinkedTable);
}

}  // namespace
}  // namespace rdv::jet
