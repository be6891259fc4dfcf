// Where the editor of a clicked cell comes up, to the twip: at the edges of the grid, in a grid
// that is scrolled, and which list it falls back on.
#include <gmock/gmock.h>

#include "runtime/conversion.h"
#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

class CellPlacing : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }

  // Gives the column the width with which its cells end `beyond` twips right of the grid's edge.
  void EndBeyondTheEdge(int column, Twips beyond) {
    ChangeColumnWidth(column,
                      grid().Width() - grid().RowLeft(1) - grid().ColumnLeft(column) + beyond);
  }
};

TEST_F(CellPlacing, AnEditorThatEndsAtTheRightEdgeIsShownAndOneTwipBeyondItIsNot) {
  EndBeyondTheEdge(column::kImpedance, 0);
  MouseDownOnCellLeft(kHybridRow, column::kImpedance);
  EXPECT_TRUE(form().cmbImpedance.Visible());
  EndBeyondTheEdge(column::kImpedance, 15);
  MouseDownOnCellLeft(kHybridRow, column::kImpedance);
  EXPECT_FALSE(form().cmbImpedance.Visible());
}

TEST_F(CellPlacing, APairThatEndsAtTheRightEdgeIsShownAndBeyondItIsNot) {
  ChangeColumnWidth(column::kVolume, 830);  // an even number of twips is left for the pair
  EndBeyondTheEdge(column::kMode, 0);
  MouseDownOnCellLeft(kHybridRow, column::kMode);
  EXPECT_TRUE(form().cmbModeType.Visible());
  EXPECT_TRUE(form().cmbModeNumber.Visible());
  EndBeyondTheEdge(column::kMode, 30);
  MouseDownOnCellLeft(kHybridRow, column::kMode);
  EXPECT_FALSE(form().cmbModeType.Visible());
  EXPECT_FALSE(form().cmbModeNumber.Visible());
}

TEST_F(CellPlacing, APairThatBeginsLeftOfTheGridIsNotShown) {
  ChangeColumnWidth(column::kLabel, 8000);
  ScrollRight(grid().ColumnLeft(column::kStartingNode) + 600);
  ASSERT_LT(grid().Left() + grid().RowLeft(1) + grid().ColumnLeft(column::kStartingNode), 0);
  MouseDownAt(100, grid().RowTop(1) + 100);
  EXPECT_FALSE(form().cmbStartingNodeName.Visible());
  EXPECT_FALSE(form().cmbStartingNodeNumber.Visible());
}

TEST_F(CellPlacing, InAScrolledGridTheCellIsFoundByWhereItsColumnIsNow) {
  ChangeColumnWidth(column::kLabel, 8000);
  ScrollRight(1500);
  const Twips x = grid().RowLeft(1) + grid().ColumnLeft(column::kVolume) + 100;
  MouseDownAt(x, grid().RowTop(1) + 100);
  EXPECT_TRUE(form().cmbVolume.Visible());
  EXPECT_EQ(form().cmbVolume.Left(),
            grid().Left() + grid().RowLeft(1) + grid().ColumnLeft(column::kVolume));
}

TEST_F(CellPlacing, AnEditorFollowsItsRowWhenTheGridIsScrolledDown) {
  for (int row = 11; row <= 30; ++row) AddRow(grid(), RowKey(100 + row), CellsOf(grid(), 1));
  const Twips first = grid().RowTop(1);
  ScrollDown(3 * grid().RowHeight(1));
  EXPECT_EQ(grid().RowTop(1), first - 3 * grid().RowHeight(1));
  EXPECT_EQ(grid().RowTop(4), first);
  Click(6, column::kVolume);
  EXPECT_EQ(form().cmbVolume.Top(), grid().Top() + first + 2 * grid().RowHeight(1) + 50);
}

TEST_F(CellPlacing, AStartingNodeThatTheListDoesNotOfferFallsBackToItsFirstEntry) {
  grid().SetCell(kMohRow, column::kStartingNodeType, u"5");
  Click(kMohRow, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeName.ListIndex(), 0);
  EXPECT_EQ(form().cmbStartingNodeName.Text(), u"Music");
}

// With no mode to select, no rule of the mode's list hides it.
TEST_F(CellPlacing, AModeWithoutANumberHidesTheNumberListByItself) {
  CurrentSite().Execute(u"DELETE FROM SR_Card_Type_can_use_Mode WHERE Card_Type_ID = `c`", {u"8"});
  Click(kMohRow, column::kMode);
  ASSERT_EQ(form().cmbModeType.ListCount(), 0);
  EXPECT_TRUE(form().cmbModeType.Visible());
  EXPECT_FALSE(form().cmbModeNumber.Visible());
  EXPECT_THAT(Messages(), ::testing::IsEmpty());  // nor of a first entry that is not there
}

// Without a database the rule of the list ends before it hides anything.
TEST_F(CellPlacing, NodeType999HidesTheNumberListByItself) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(4));
  std::filesystem::remove(CurrentSite().DatabaseFile());
  Click(8, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeName.Text(), u"None");
  EXPECT_FALSE(form().cmbStartingNodeNumber.Visible());
}

TEST_F(CellPlacing, TheNumber1IsSelected) {
  form().cmbModeNumber.SetListIndex(6);
  grid().SetCell(kHybridRow, column::kModeNumber, u"1");
  Click(kHybridRow, column::kMode);
  EXPECT_EQ(form().cmbModeNumber.ListIndex(), 0);
  Click(kHybridRow, column::kStartingNode);
  form().cmbStartingNodeNumber.SetListIndex(6);
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, u"1");
  Click(kHybridRow, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListIndex(), 0);
}

TEST_F(CellPlacing, AnEditorThatIsNotShownIsNotLoaded) {
  Click(2, column::kVolume);
  const int low = form().cmbVolume.ListIndex();
  Click(kHybridRow, column::kPartition);
  EXPECT_EQ(form().cmbVolume.ListIndex(), low);
}

// The width of a column is no whole number at some resolutions of the screen.
TEST_F(CellPlacing, TheHalvesOfAPairAreThoseOfTheRoundedWidth) {
  ChangeColumnWidth(column::kMode, 1001.6);
  Click(kHybridRow, column::kMode);
  const int32_t half = RoundToInt32(grid().ColumnWidth(column::kMode)) / 2;
  EXPECT_EQ(form().cmbModeType.Width(), half);
  EXPECT_EQ(form().cmbModeNumber.Width(), half);
}

TEST_F(CellPlacing, ALabelThatFitsIsAsWideAsItsColumn) {
  Click(kHybridRow, column::kLabel);
  EXPECT_EQ(form().txtLabel.Width(), 1800);
}

TEST_F(CellPlacing, ANumberBelow1LeavesTheNumberListAsItIs) {
  form().cmbModeNumber.SetListIndex(6);
  grid().SetCell(kHybridRow, column::kModeNumber, u"0");
  Click(kHybridRow, column::kMode);
  EXPECT_TRUE(form().cmbModeNumber.Visible());
  EXPECT_EQ(form().cmbModeNumber.ListIndex(), 6);
}

TEST_F(CellPlacing, ANodeNumberBelow1LeavesTheNumberListAsItIs) {
  Click(kHybridRow, column::kStartingNode);  // offers the numbers of its node type
  form().cmbStartingNodeNumber.SetListIndex(6);
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, u"0");
  Click(kHybridRow, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListIndex(), 6);
}

// "0" and "Low" have the same code.
TEST_F(CellPlacing, OfTwoEntriesWithTheSameCodeTheFirstIsSelected) {
  grid().SetCell(kMohRow, column::kVolumeCode, u"0");
  Click(kMohRow, column::kVolume);
  EXPECT_EQ(form().cmbVolume.ListIndex(), 0);
  EXPECT_EQ(form().cmbVolume.Text(), u"0");
}

TEST_F(CellPlacing, ALineTypeThatIsShownAfterAllIsSelected) {
  form().cmbLineType.SetVisible(true);
  grid().on_item_click(kMohRow);
  EXPECT_EQ(form().cmbLineType.Text(), u"MOH Line");
}

TEST_F(CellPlacing, TheListsOfALineAreThoseOfItsType) {
  Click(kHybridRow, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeName.ListCount(), 13);
  Click(kMohRow, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeName.ListCount(), 2);
  Click(kMohRow, column::kVolume);
  EXPECT_EQ(form().cmbVolume.List(0), u"0");
}

}  // namespace
}  // namespace rdv::test
