// Editing by keyboard: cells are opened without a change.
#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CellWalkTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }

  void Select(const std::vector<int>& rows) {
    for (const int row : rows) grid().SetSelected(row, true);
  }
  std::vector<int> SelectedRows() const {
    std::vector<int> rows;
    for (int row = 1; row <= grid().RowCount(); ++row) {
      if (grid().Selected(row)) rows.push_back(row);
    }
    return rows;
  }
  void Edit() { grid().on_edit(); }
  void EditNext() { grid().on_edit_next(false); }
  void EditPrevious() { grid().on_edit_next(true); }
  // Never more steps than there are cells.
  void EditOnTo(const std::string& editor) {
    for (int most = 100; most > 0 && Focus() != editor; --most) EditNext();
    ASSERT_EQ(Focus(), editor);
  }
  // From the cell that is open: each by the row and the editor with the focus.
  std::vector<std::string> Walk(const std::function<void()>& step) {
    std::vector<std::string> cells;
    for (int most = 200; most > 0 && Focus() != "LVRDVLineConfig"; --most) {
      cells.push_back(std::to_string(grid().SelectedItem().value_or(0)) + " " + Focus());
      step();
    }
    return cells;
  }
};

TEST_F(CellWalkTest, OpeningEveryCellWritesNothing) {
  const auto before = Rows();
  grid().GoToRow(kHybridRow);
  Edit();
  const auto cells = Walk([&] {
    EXPECT_EQ(Rows(), before) << Focus();
    EXPECT_FALSE(form().cmdApply.Enabled()) << Focus();
    EditNext();
  });
  EXPECT_GT(cells.size(), 50u);
  EXPECT_EQ(Rows(), before);
  EXPECT_FALSE(form().cmdApply.Enabled());
  EXPECT_THAT(Messages(), IsEmpty());  // not even of the stored label with quotes
}

TEST_F(CellWalkTest, OpeningACellOfSeveralSelectedRowsLeavesThemAllAsTheyAre) {
  const auto before = Rows();
  Key(1);
  const std::vector<int> all = SelectedRows();
  Edit();
  for (int most = 100; most > 0 && Focus() != "txtLabel"; --most, EditNext()) {
    EXPECT_EQ(SelectedRows(), all) << Focus();
    EXPECT_EQ(Rows(), before) << Focus();
    EXPECT_FALSE(form().cmdApply.Enabled()) << Focus();
  }
  EXPECT_EQ(Rows(), before);
  EXPECT_FALSE(form().cmdApply.Enabled());
}

TEST_F(CellWalkTest, WhatIsThenPickedGoesIntoAllOfThem) {
  Select({1, 2});
  Edit();
  ASSERT_EQ(Focus(), "cmbPartition");
  PickCode(form().cmbPartition, 4);
  EXPECT_EQ(Cell(1, column::kPartition), u"Night service");
  EXPECT_EQ(Cell(2, column::kPartition), u"Night service");
  EXPECT_EQ(Cell(3, column::kPartitionCode), u"4");
  EXPECT_TRUE(form().cmdApply.Enabled());
}

TEST_F(CellWalkTest, TheEditorShowsTheRowsOwnValue) {
  grid().GoToRow(2);
  Edit();
  EXPECT_EQ(form().cmbPartition.Text(), u"Sales");
  EditNext();
  EXPECT_EQ(form().cmbStartingNodeName.Text(), u"Queue");
  EXPECT_EQ(form().cmbStartingNodeNumber.Text(), u"12");
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 16);
  grid().GoToRow(3);
  EditOnTo("txtLabel");
  EXPECT_EQ(form().txtLabel.Text(), u"O'Brien \"direct\"");
}

TEST_F(CellWalkTest, RulesStillFitTheEditorsToTheRow) {
  grid().GoToRow(6);  // a node type without a maximum, a mode without a number
  Edit();
  EditNext();
  ASSERT_EQ(Focus(), "cmbStartingNodeName");
  EXPECT_FALSE(form().cmbStartingNodeNumber.Visible());
  EditNext();
  EditNext();
  ASSERT_EQ(Focus(), "cmbModeType");
  EXPECT_FALSE(form().cmbModeNumber.Visible());
}

TEST_F(CellWalkTest, WithoutASelectedRowTheFocusedOneIsEdited) {
  Edit();
  EXPECT_EQ(Focus(), "none");
  grid().GoToRow(4);
  grid().SetSelected(4, false);
  Edit();
  EXPECT_EQ(Focus(), "cmbPartition");
  EXPECT_THAT(SelectedRows(), ElementsAre(4));
}

TEST_F(CellWalkTest, TheHalvesOfAPairAreStepsOfTheirOwn) {
  grid().GoToRow(kHybridRow);
  Edit();
  EditNext();
  EXPECT_EQ(Focus(), "cmbStartingNodeName");
  EditNext();
  EXPECT_EQ(Focus(), "cmbStartingNodeNumber");
  EditNext();
  EXPECT_EQ(Focus(), "cmbVolume");
  EditPrevious();
  EXPECT_EQ(Focus(), "cmbStartingNodeName");
  EditPrevious();
  EXPECT_EQ(Focus(), "cmbPartition");
}

TEST_F(CellWalkTest, CellsWithoutAnEditorArePassedOver) {
  grid().GoToRow(6);
  Edit();
  EditOnTo("txtLabel");
  EditNext();  // lines 7 and 8 are not installed
  EXPECT_EQ(grid().SelectedItem(), kMohRow);
  EXPECT_EQ(Focus(), "cmbPartition");
  EditPrevious();
  EXPECT_EQ(grid().SelectedItem(), 6);
  EXPECT_EQ(Focus(), "txtLabel");
}

TEST_F(CellWalkTest, ARowWithoutEditorsIsNotEdited) {
  grid().GoToRow(kNotInstalledRow);
  Edit();
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
}

TEST_F(CellWalkTest, EditingEndsInTheGridAtEitherEnd) {
  grid().GoToRow(10);
  Edit();
  const auto cells = Walk([&] { EditNext(); });
  EXPECT_THAT(cells, ElementsAre("10 cmbPartition", "10 cmbStartingNodeName", "10 cmbVolume",
                                 "10 cmbModeType", "10 txtLabel"));
  grid().GoToRow(1);
  Edit();
  for (int most = 100; most > 0 && Focus() != "cmbPartition"; --most) EditPrevious();
  EditPrevious();
  EXPECT_EQ(Focus(), "LVRDVLineConfig");
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
}

TEST_F(CellWalkTest, EditingEndsInTheGridWhereverTheFocusIs) {
  grid().GoToRow(1);
  Edit();
  form().cmdOK.SetFocus();
  ASSERT_EQ(Focus(), "cmdOK");
  grid().on_edit_end();
  EXPECT_EQ(Focus(), "LVRDVLineConfig");
}

TEST_F(CellWalkTest, TheColumnOpenedLastIsOpenedInTheNextRowToo) {
  grid().GoToRow(1);
  Edit();
  for (int step = 0; step < 3; ++step) EditNext();
  ASSERT_EQ(Focus(), "cmbVolume");
  grid().on_edit_end();
  EXPECT_EQ(Focus(), "LVRDVLineConfig");
  grid().GoToRow(2);
  Edit();
  EXPECT_EQ(Focus(), "cmbVolume");
  EXPECT_THAT(SelectedRows(), ElementsAre(2));
}

TEST_F(CellWalkTest, CancellingBringsBackTheCellsOfAllSelectedRowsAsTheyWereWhenTheCellWasOpened) {
  grid().GoToRow(1);
  grid().SetSelected(2, true);
  Edit();
  for (int step = 0; step < 3; ++step) EditNext();
  ASSERT_EQ(Focus(), "cmbVolume");
  const auto before = [&] {
    std::vector<Text> cells;
    for (int row = 1; row <= grid().RowCount(); ++row) {
      for (int column = 1; column <= grid().ColumnCount(); ++column)
        cells.push_back(grid().Cell(row, column));
    }
    return cells;
  };
  const auto cells = before();
  ComboBox& list = form().cmbVolume;
  list.SetListIndex(list.ListIndex() == 0 ? 1 : 0);
  ASSERT_NE(before(), cells);
  grid().on_edit_cancel();
  EXPECT_EQ(before(), cells);
  EXPECT_EQ(Focus(), "LVRDVLineConfig");
  // Once only, and not into the lines of another configuration.
  list.SetListIndex(list.ListIndex() == 0 ? 1 : 0);
  const auto changed = before();
  ASSERT_NE(changed, cells);
  grid().on_edit_cancel();
  EXPECT_EQ(before(), changed);
}

TEST_F(CellWalkTest, CancellingBringsBackTheCellsOfARowThatWasClicked) {
  Click(1, column::kVolume);
  const Text stood = Cell(1, column::kVolume);
  ComboBox& list = form().cmbVolume;
  list.SetListIndex(list.ListIndex() == 0 ? 1 : 0);
  ASSERT_NE(Cell(1, column::kVolume), stood);
  grid().on_edit_cancel();
  EXPECT_EQ(Cell(1, column::kVolume), stood);
}

TEST_F(CellWalkTest, ACellOutOfSightIsBroughtIntoSight) {
  ChangeColumnWidth(column::kLineType, 9000);
  ScrollRight(-20000);
  grid().GoToRow(1);
  Edit();
  EditOnTo("txtLabel");
  const Editor& label = form().txtLabel;
  EXPECT_GE(label.Left(), grid().Left());
  EXPECT_LE(label.Left() + label.Width(), grid().Left() + grid().Width() + LengthTolerance());
}

}  // namespace
}  // namespace rdv::test
