// What the user does to the grid and how rows, selection and scroll follow.
#include <gmock/gmock.h>

#include "runtime/error.h"
#include "tests/widgets/grid_content.h"
#include "widgets/memory/memory_form.h"

namespace rdv::memory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr HeldKeys kCtrl{.ctrl = true};
constexpr HeldKeys kShift{.shift = true};
constexpr HeldKeys kCtrlShift{.ctrl = true, .shift = true};

class LineGridTest : public ::testing::Test {
 protected:
  LineGridTest() {
    grid.AddColumn(u"Code", 0);
    grid.AddColumn(u"Line", 500);
    grid.AddColumn(u"Label", 1500);
    AddRows(1, 6);
    grid.on_mouse_down = [this](Twips, Twips) { Note("down"); };
    grid.on_item_click = [this](int row) { Note("item " + std::to_string(row)); };
    grid.on_mouse_up = [this](Twips, Twips) { Note("up"); };
    grid.on_key_press = [this](char16_t key) { Note("key " + std::to_string(key)); };
    grid.on_column_click = [this](int column) { Note("column " + std::to_string(column)); };
    grid.on_before_move = [this] { Note("move"); };
  }

  void AddRows(int first, int last) {
    for (int row = first; row <= last; ++row) grid.AddRow(u"a" + Decimal(row), u"6");
  }
  // With the selection as the event meets it.
  void Note(const std::string& event) { events.push_back(event + " " + SelectedRows()); }
  std::string SelectedRows() const {
    std::string rows;
    for (int row = 1; row <= grid.RowCount(); ++row) {
      if (grid.Selected(row)) rows += static_cast<char>('0' + row);
    }
    return rows;
  }
  void Click(int row, HeldKeys held = {}) {
    ASSERT_EQ(grid.UserClickCell(row, 3, held), std::nullopt);
  }
  std::string AfterClick(int row, HeldKeys held = {}) {
    Click(row, held);
    return SelectedRows();
  }
  static int32_t NumberOf(const std::function<void()>& action) {
    try {
      action();
    } catch (const RuntimeError& error) {
      return error.Number();
    }
    return 0;
  }

  MemoryForm form{kContent};
  MemoryLineGrid& grid = form.LVRDVLineConfig;
  std::vector<std::string> events;
};

TEST_F(LineGridTest, AClickRaisesMouseDownSelectsRaisesItemClickAndMouseUp) {
  Click(2);
  EXPECT_THAT(events, ElementsAre("down ", "item 2 2", "up 2"));
}

TEST_F(LineGridTest, APlainClickSelectsTheRowAloneAtThePress) {
  for (int row = 1; row <= 6; ++row) grid.SetSelected(row, true);
  Click(4);
  EXPECT_THAT(events, ElementsAre("down 123456", "item 4 4", "up 4"));
}

TEST_F(LineGridTest, CtrlTogglesTheRowAndADeselectedRowIsNotClicked) {
  Click(2);
  events.clear();
  Click(4, kCtrl);
  Click(2, kCtrl);
  EXPECT_THAT(events, ElementsAre("down 2", "item 4 24", "up 24", "down 24", "up 4"));
}

TEST_F(LineGridTest, ShiftSelectsTheRangeFromTheAnchorAlone) {
  Click(3);
  EXPECT_EQ(AfterClick(5, kShift), "345");
  EXPECT_EQ(AfterClick(1, kShift), "123");
  EXPECT_EQ(AfterClick(3, kShift), "3");
}

TEST_F(LineGridTest, WithoutAnAnchorTheRowItselfIsOne) {
  EXPECT_EQ(AfterClick(4, kShift), "4");
  EXPECT_EQ(AfterClick(6, kShift), "456");
}

TEST_F(LineGridTest, ACtrlClickMovesTheAnchorEvenWhenItDeselects) {
  Click(2);
  Click(5, kCtrl);
  EXPECT_EQ(AfterClick(6, kShift), "56");
  EXPECT_EQ(AfterClick(6, kCtrl), "5");
  EXPECT_EQ(AfterClick(4, kShift), "456");
}

TEST_F(LineGridTest, TheArrowKeysMoveTheSelectionAndRaiseNothing) {
  Click(2);
  Click(5, kCtrl);
  events.clear();
  grid.UserMoveRow(1);
  EXPECT_EQ(SelectedRows(), "6");
  grid.UserMoveRow(-1);
  EXPECT_EQ(SelectedRows(), "5");
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(AfterClick(3, kShift), "345");
}

TEST_F(LineGridTest, TheArrowKeysEndAtTheFirstAndTheLastRow) {
  Click(1);
  grid.UserMoveRow(-1);
  EXPECT_EQ(SelectedRows(), "1");
  const int last = grid.RowCount();
  for (int press = 0; press <= last; ++press) grid.UserMoveRow(1);
  EXPECT_EQ(grid.FocusedRow(), last);
  EXPECT_TRUE(grid.Selected(last));
  EXPECT_LE(grid.RowTop(last) + grid.RowHeight(last), grid.Height());
}

TEST_F(LineGridTest, CtrlAndShiftAddTheRange) {
  Click(1);
  Click(4, kCtrl);
  EXPECT_EQ(AfterClick(6, kCtrlShift), "1456");
  EXPECT_EQ(events.back(), "up 1456");
}

TEST_F(LineGridTest, AnItemClickFollowsEveryClickWithShift) {
  Click(2);
  Click(4, kShift);
  events.clear();
  Click(4, kCtrlShift);
  EXPECT_THAT(events, ElementsAre("down 234", "item 4 234", "up 234"));
}

TEST_F(LineGridTest, APressOnTheEmptyAreaTakesTheSelectionOffUnlessAKeyIsHeld) {
  const Twips below = grid.RowTop(6) + grid.RowHeight(6);
  Click(2);
  grid.UserClick(100, below, kCtrl);
  grid.UserClick(100, below, kShift);
  EXPECT_EQ(SelectedRows(), "2");
  events.clear();
  grid.UserClick(100, below);
  EXPECT_THAT(events, ElementsAre("down 2", "up "));
}

TEST_F(LineGridTest, ThePressOnTheEmptyAreaKeepsTheAnchor) {
  Click(2);
  grid.UserClick(100, grid.RowTop(6) + grid.RowHeight(6));
  EXPECT_EQ(AfterClick(4, kShift), "234");
}

TEST_F(LineGridTest, TheSelectedItemIsTheFocusedRowElseTheFirstSelectedOne) {
  EXPECT_EQ(grid.SelectedItem(), std::nullopt);
  Click(3);
  Click(5, kCtrl);
  EXPECT_EQ(grid.SelectedItem(), 5);
  Click(5, kCtrl);
  EXPECT_EQ(grid.SelectedItem(), 3);
  grid.SetSelected(1, true);
  EXPECT_EQ(grid.SelectedItem(), 1);
}

TEST_F(LineGridTest, SelectingByCodeMovesNeitherFocusedRowNorAnchor) {
  Click(3);
  for (int row = 1; row <= 6; ++row) grid.SetSelected(row, true);
  EXPECT_EQ(grid.SelectedItem(), 3);
  EXPECT_EQ(AfterClick(4, kShift), "34");
}

TEST_F(LineGridTest, RemovingTheRowsForgetsFocusedRowAndAnchor) {
  Click(2);
  grid.RemoveRows();
  AddRows(1, 6);
  EXPECT_EQ(grid.SelectedItem(), std::nullopt);
  EXPECT_EQ(AfterClick(4, kShift), "4");
}

TEST_F(LineGridTest, TheHitTestKnowsHeaderRowsAndEmptyArea) {
  const Twips top = grid.RowTop(1);
  EXPECT_EQ(grid.HitTest(0, top - 1), std::nullopt);
  EXPECT_EQ(grid.HitTest(0, top), 1);
  EXPECT_EQ(grid.HitTest(2000, top + grid.RowHeight(1)), 2);
  EXPECT_EQ(grid.HitTest(2001, top), std::nullopt);
  EXPECT_EQ(grid.HitTest(0, grid.RowTop(6) + grid.RowHeight(6) - 1), 6);
  EXPECT_EQ(grid.HitTest(0, grid.RowTop(6) + grid.RowHeight(6)), std::nullopt);
}

TEST_F(LineGridTest, AClickOnTheHeaderIsNoClickOnARow) {
  EXPECT_EQ(grid.UserClick(600, 10), std::nullopt);
  EXPECT_EQ(grid.UserClick(5000, 10), std::nullopt);
  EXPECT_THAT(events, ElementsAre("move ", "column 3 ", "move "));
}

TEST_F(LineGridTest, ColumnClickAndDividerDragComeAfterThePressOnTheHeader) {
  EXPECT_EQ(grid.UserColumnClick(2), std::nullopt);
  EXPECT_EQ(grid.UserResizeColumn(2, 1501), std::nullopt);
  EXPECT_THAT(events, ElementsAre("move ", "column 2 ", "move "));
  EXPECT_EQ(grid.ColumnWidth(2), 1501);
  EXPECT_EQ(grid.ColumnLeft(3), 1501);
}

TEST_F(LineGridTest, TheHandlerOfADragStillSeesTheOldWidth) {
  Twips seen = 0;
  grid.on_before_move = [&] { seen = grid.ColumnWidth(2); };
  grid.UserResizeColumn(2, 900);
  EXPECT_EQ(seen, 500);
}

TEST_F(LineGridTest, ColumnsWithoutAWidthAreOutOfTheUsersReach) {
  EXPECT_EQ(grid.UserColumnClick(1), refusal::kHidden);
  EXPECT_EQ(grid.UserResizeColumn(1, 100), refusal::kHidden);
  EXPECT_EQ(grid.UserColumnClick(4), refusal::kNoSuchColumn);
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(LineGridTest, ScrollingIsHeldAtTheEndsAndAlwaysToldOf) {
  EXPECT_EQ(grid.UserScrollHorizontally(100), std::nullopt);
  EXPECT_EQ(grid.RowLeft(1), 0);
  grid.UserResizeColumn(3, grid.Width());
  grid.UserScrollHorizontally(200);
  EXPECT_EQ(grid.RowLeft(1), -200);
  grid.UserScrollHorizontally(10000);
  EXPECT_EQ(grid.RowLeft(1), -500);
  grid.UserScrollHorizontally(-600);
  EXPECT_EQ(grid.RowLeft(1), 0);
  EXPECT_EQ(events.size(), 5u);
}

TEST_F(LineGridTest, AScrolledGridIsHitWhereItsRowsAreNow) {
  grid.UserResizeColumn(3, 2 * grid.Width());
  grid.UserScrollHorizontally(400);
  EXPECT_EQ(grid.HitTest(0, grid.RowTop(2)), 2);
  EXPECT_EQ(grid.UserClickCell(1, 1), refusal::kOutsideGrid);  // its left edge is scrolled away
  EXPECT_EQ(grid.UserClickCell(1, 2), refusal::kOutsideGrid);
}

TEST_F(LineGridTest, NarrowingAColumnTakesBackTheScrollThatNoLongerFits) {
  grid.UserResizeColumn(3, grid.Width());
  grid.UserScrollHorizontally(500);
  grid.UserResizeColumn(3, grid.Width() - 300);
  EXPECT_EQ(grid.RowLeft(1), -200);
}

TEST_F(LineGridTest, VerticalScrollGoesToTheNearestWholeRow) {
  AddRows(7, 30);
  const Twips top = grid.RowTop(1);
  const Twips height = grid.RowHeight(1);
  grid.UserScrollVertically(height * 1.6);
  EXPECT_EQ(grid.RowTop(1), top - 2 * height);
  grid.UserScrollVertically(-height * 0.4);
  EXPECT_EQ(grid.RowTop(1), top - 2 * height);
  grid.UserScrollVertically(1000 * height);
  const auto in_sight = static_cast<int>((grid.Height() - top) / height);
  EXPECT_EQ(grid.RowTop(30 - in_sight + 1), top);
  EXPECT_EQ(grid.HitTest(0, top), 30 - in_sight + 1);
  grid.UserScrollVertically(-1000 * height);
  EXPECT_EQ(grid.RowTop(1), top);
}

TEST_F(LineGridTest, ARowOutOfSightIsNotClicked) {
  AddRows(7, 30);
  EXPECT_EQ(grid.UserClickCell(30, 3), refusal::kOutsideGrid);
  grid.UserScrollVertically(1000 * grid.RowHeight(1));
  EXPECT_EQ(grid.UserClickCell(1, 3), refusal::kOutsideGrid);
  EXPECT_EQ(grid.UserClickCell(30, 3), std::nullopt);
  EXPECT_EQ(grid.UserClickCell(31, 3), refusal::kNoSuchRow);
  EXPECT_EQ(grid.UserClickCell(0, 3), refusal::kNoSuchRow);
}

TEST_F(LineGridTest, RemovingTheRowsScrollsBackUpRemovingTheColumnsBackLeft) {
  AddRows(7, 30);
  grid.UserResizeColumn(3, 2 * grid.Width());
  grid.UserScrollVertically(3 * grid.RowHeight(1));
  grid.UserScrollHorizontally(300);
  grid.RemoveRows();
  AddRows(1, 30);
  EXPECT_EQ(grid.RowTop(1), kGridHeaderHeight);
  EXPECT_EQ(grid.RowLeft(1), -300);
  grid.RemoveColumns();
  EXPECT_EQ(grid.RowLeft(1), 0);
}

TEST_F(LineGridTest, KeysGoToTheHandlerAndMoveNothing) {
  Click(2);
  events.clear();
  EXPECT_EQ(grid.UserKey(1), std::nullopt);
  EXPECT_EQ(grid.UserKey(u'a'), std::nullopt);
  EXPECT_THAT(events, ElementsAre("key 1 2", "key 97 2"));
}

TEST_F(LineGridTest, ATakenKeyAddsNoRow) {
  EXPECT_EQ(NumberOf([&] { grid.AddRow(u"a3", u"8"); }), 35602);
  EXPECT_EQ(grid.RowCount(), 6);
  EXPECT_EQ(grid.Cell(3, 1), u"6");
  EXPECT_EQ(grid.FindRow(u"a3"), 3);
  EXPECT_EQ(grid.FindRow(u"b3"), std::nullopt);
}

TEST_F(LineGridTest, RowsAndColumnsThatAreNotThereAreErrors) {
  EXPECT_EQ(NumberOf([&] { grid.SetCell(7, 1, u""); }), 9);
  EXPECT_EQ(NumberOf([&] { grid.Cell(0, 1); }), 9);
  EXPECT_EQ(NumberOf([&] { grid.Selected(7); }), 9);
  EXPECT_EQ(NumberOf([&] { grid.ColumnLeft(4); }), 9);
}

TEST_F(LineGridTest, NothingReachesTheGridOfADisabledFrame) {
  form.fraConfiguration.SetEnabled(false);
  EXPECT_EQ(grid.UserClickCell(1, 2), refusal::kDisabled);
  EXPECT_EQ(grid.UserClick(10, 1000), refusal::kDisabled);
  EXPECT_EQ(grid.UserKey(1), refusal::kDisabled);
  EXPECT_EQ(grid.UserColumnClick(2), refusal::kDisabled);
  EXPECT_EQ(grid.UserResizeColumn(2, 10), refusal::kDisabled);
  EXPECT_EQ(grid.UserScrollHorizontally(10), refusal::kDisabled);
  EXPECT_EQ(grid.UserScrollVertically(10), refusal::kDisabled);
  EXPECT_THAT(events, IsEmpty());
}

}  // namespace
}  // namespace rdv::memory
