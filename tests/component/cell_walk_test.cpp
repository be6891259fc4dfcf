// Walking the cells of a site's lines by keyboard, in the real windows.
#include <map>
#include <utility>

#include "tests/component/support/held_key.h"
#include "tests/component/support/loaded_control.h"

namespace rdv::test {
namespace {

using Cell = std::pair<int, int>;  // row and editor

// The editors of a line from left to right, by the code of its type; not installed ones have none.
const std::map<std::wstring, std::vector<int>> kEditors = {
    {L"5",
     {control_id::cmbPartition, control_id::cmbStartingNodeName, control_id::cmbVolume,
      control_id::cmbModeType, control_id::cmbNISOption, control_id::txtEWTOption,
      control_id::txtLabel}},
    {L"6",
     {control_id::cmbPartition, control_id::cmbStartingNodeName, control_id::cmbVolume,
      control_id::cmbModeType, control_id::cmbNISOption, control_id::txtEWTOption,
      control_id::cmbImpedance, control_id::cmbSoftStop, control_id::txtLabel}},
    {L"8",
     {control_id::cmbPartition, control_id::cmbStartingNodeName, control_id::cmbVolume,
      control_id::cmbModeType, control_id::txtLabel}}};

class CellWalk : public LoadedControl {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(LoadedControl::SetUp());
    ASSERT_NO_FATAL_FAILURE(PlaceAndLoad());
  }

  int SelectedRow() {
    return static_cast<int>(
               SendMessageW(Grid(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED)) +
           1;
  }
  // Tab, until it closes the last editor: each cell that was opened on the way.
  std::vector<Cell> Walk() {
    std::vector<Cell> cells;
    const int most = 2 * Rows() * kColumnCount;
    for (int presses = 0; presses < most && Focus() != control_id::LVRDVLineConfig; ++presses) {
      const int editor = Focus();
      const bool right_half =
          editor == control_id::cmbStartingNodeNumber || editor == control_id::cmbModeNumber;
      if (!right_half) cells.push_back({SelectedRow(), editor});
      EXPECT_EQ(Press(VK_TAB), S_OK);
    }
    return cells;
  }
  // By the types of the lines.
  std::vector<Cell> AllCells() {
    std::vector<Cell> cells;
    for (int row = 1; row <= Rows(); ++row) {
      const auto found = kEditors.find(Text(row, column::kLineTypeCode));
      if (found == kEditors.end()) continue;
      for (const int editor : found->second) cells.push_back({row, editor});
    }
    return cells;
  }
};

TEST_F(CellWalk, TabOpensEveryCellInOrderAndEndsInTheGrid) {
  if (!CanPaint()) GTEST_SKIP() << "rows have no height here";
  const BoxAnswerer boxes;  // a stored label has two quotes in a row
  EXPECT_EQ(Press(VK_DOWN), S_OK);
  ASSERT_EQ(SelectedRow(), 1);
  EXPECT_EQ(Press(VK_F2), S_OK);
  const auto expected = AllCells();
  EXPECT_GT(expected.size(), 20u);
  EXPECT_EQ(Walk(), expected);
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
}

TEST_F(CellWalk, ShiftTabOpensThemBackwards) {
  if (!CanPaint()) GTEST_SKIP() << "rows have no height here";
  const BoxAnswerer boxes;
  const auto expected = AllCells();
  ASSERT_FALSE(expected.empty());
  Press(VK_DOWN);
  Press(VK_F2);
  while (Cell(SelectedRow(), Focus()) != expected.back()) {
    ASSERT_EQ(Press(VK_TAB), S_OK);
    ASSERT_NE(Focus(), control_id::LVRDVLineConfig);
  }
  const HeldKey shift(VK_SHIFT);
  EXPECT_EQ(Walk(), std::vector<Cell>(expected.rbegin(), expected.rend()));
}

TEST_F(CellWalk, EnterAndEscapeCloseTheEditor) {
  Press(VK_DOWN);
  for (const WPARAM key : {WPARAM{VK_RETURN}, WPARAM{VK_ESCAPE}}) {
    EXPECT_EQ(Press(VK_F2), S_OK);
    ASSERT_EQ(Focus(), control_id::cmbPartition);
    EXPECT_EQ(Press(key), S_OK);
    EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
    EXPECT_FALSE(IsWindowVisible(placed_->Child(control_id::cmbPartition)));
  }
}

TEST_F(CellWalk, ArrowsToTheSidesGoFromAClosedListToItsNeighbours) {
  Press(VK_DOWN);
  Press(VK_F2);
  ASSERT_EQ(Focus(), control_id::cmbPartition);
  EXPECT_EQ(Press(VK_RIGHT), S_OK);
  EXPECT_EQ(Focus(), control_id::cmbStartingNodeName);
  EXPECT_EQ(Press(VK_LEFT), S_OK);
  EXPECT_EQ(Focus(), control_id::cmbPartition);
  EXPECT_EQ(SelectedRow(), 1);
}

TEST_F(CellWalk, TheColumnsHaveTheirCaptions) {
  const wchar_t* const captions[] = {
      L"Line Type",  L"Partition",  L"Starting Node", L"Starting Node", L"Volume",
      L"Mode",       L"Mode",       L"Impedance",     L"Soft Stop",     L"Line",
      L"Line Type",  L"Partition",  L"Starting Node", L"Volume",        L"Mode",
      L"NIS Option", L"EWT Option", L"Impedance",     L"Soft Stop",     L"Label"};
  const auto header = reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0));
  ASSERT_EQ(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0), 20);
  for (WPARAM index = 0; index < 20; ++index) {
    wchar_t text[64] = L"";
    HDITEMW item = {};
    item.mask = HDI_TEXT | HDI_WIDTH;
    item.pszText = text;
    item.cchTextMax = 64;
    SendMessageW(header, HDM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
    EXPECT_STREQ(text, captions[index]) << index;
    EXPECT_EQ(item.cxy > 0, index >= 9) << index;  // the first nine hold codes and are hidden
  }
}

}  // namespace
}  // namespace rdv::test
