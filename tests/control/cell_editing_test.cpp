// Clicking cells: which editor comes up, where it lies and what it shows.
#include <gmock/gmock.h>

#include <map>

#include "runtime/error.h"
#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class CellEditing : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    ShowConfiguration(1);
  }

  void ShowConfiguration(int16_t config) {
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(config));
  }

  // Captions of the columns are no use here: editors by name.
  std::vector<std::string> VisibleEditors() const {
    const Form& f = form();
    const std::vector<std::pair<std::string, const Editor*>> names = {
        {"cmbPartition", &f.cmbPartition},
        {"cmbStartingNodeName", &f.cmbStartingNodeName},
        {"cmbStartingNodeNumber", &f.cmbStartingNodeNumber},
        {"cmbVolume", &f.cmbVolume},
        {"cmbModeType", &f.cmbModeType},
        {"cmbModeNumber", &f.cmbModeNumber},
        {"cmbNISOption", &f.cmbNISOption},
        {"txtEWTOption", &f.txtEWTOption},
        {"cmbLineType", &f.cmbLineType},
        {"cmbImpedance", &f.cmbImpedance},
        {"cmbSoftStop", &f.cmbSoftStop},
        {"txtLabel", &f.txtLabel}};
    std::vector<std::string> visible;
    for (const auto& [name, editor] : names) {
      if (editor->Visible()) visible.push_back(name);
    }
    return visible;
  }
};

struct PlacementRow {
  int row;
  int column;
  std::vector<std::string> editors;  // right after the press on the cell
};

class EditorOfACell : public CellEditing, public ::testing::WithParamInterface<PlacementRow> {};

TEST_P(EditorOfACell, FollowsColumnAndLineType) {
  MouseDownOnCell(GetParam().row, GetParam().column);
  EXPECT_EQ(VisibleEditors(), GetParam().editors);
}

const std::vector<std::string> kNone;
const std::vector<std::string> kNodePair = {"cmbStartingNodeName", "cmbStartingNodeNumber"};
const std::vector<std::string> kModePair = {"cmbModeType", "cmbModeNumber"};

INSTANTIATE_TEST_SUITE_P(
    Hybrid, EditorOfACell,
    ::testing::Values(PlacementRow{kHybridRow, column::kLine, kNone},
                      PlacementRow{kHybridRow, column::kLineType, kNone},
                      PlacementRow{kHybridRow, column::kPartition, {"cmbPartition"}},
                      PlacementRow{kHybridRow, column::kStartingNode, kNodePair},
                      PlacementRow{kHybridRow, column::kVolume, {"cmbVolume"}},
                      PlacementRow{kHybridRow, column::kMode, kModePair},
                      PlacementRow{kHybridRow, column::kNISOption, {"cmbNISOption"}},
                      PlacementRow{kHybridRow, column::kEWTOption, {"txtEWTOption"}},
                      PlacementRow{kHybridRow, column::kImpedance, {"cmbImpedance"}},
                      PlacementRow{kHybridRow, column::kSoftStop, {"cmbSoftStop"}},
                      PlacementRow{kHybridRow, column::kLabel, {"txtLabel"}}));

INSTANTIATE_TEST_SUITE_P(
    Impedance, EditorOfACell,
    ::testing::Values(PlacementRow{kImpedanceRow, column::kLineType, kNone},
                      PlacementRow{kImpedanceRow, column::kPartition, {"cmbPartition"}},
                      PlacementRow{kImpedanceRow, column::kStartingNode, kNodePair},
                      PlacementRow{kImpedanceRow, column::kVolume, {"cmbVolume"}},
                      PlacementRow{kImpedanceRow, column::kMode, kModePair},
                      PlacementRow{kImpedanceRow, column::kNISOption, {"cmbNISOption"}},
                      PlacementRow{kImpedanceRow, column::kEWTOption, {"txtEWTOption"}},
                      PlacementRow{kImpedanceRow, column::kImpedance, kNone},
                      PlacementRow{kImpedanceRow, column::kSoftStop, kNone},
                      PlacementRow{kImpedanceRow, column::kLabel, {"txtLabel"}}));

INSTANTIATE_TEST_SUITE_P(MusicOnHold, EditorOfACell,
                         ::testing::Values(PlacementRow{kMohRow, column::kLineType, kNone},
                                           PlacementRow{
                                               kMohRow, column::kPartition, {"cmbPartition"}},
                                           PlacementRow{kMohRow, column::kStartingNode, kNodePair},
                                           PlacementRow{kMohRow, column::kVolume, {"cmbVolume"}},
                                           PlacementRow{kMohRow, column::kMode, kModePair},
                                           PlacementRow{kMohRow, column::kNISOption, kNone},
                                           PlacementRow{kMohRow, column::kEWTOption, kNone},
                                           PlacementRow{kMohRow, column::kImpedance, kNone},
                                           PlacementRow{kMohRow, column::kSoftStop, kNone},
                                           PlacementRow{kMohRow, column::kLabel, {"txtLabel"}}));

TEST_F(CellEditing, ANotInstalledLineHasNoEditorInAnyCell) {
  for (int column = column::kLine; column <= column::kLabel; ++column) {
    MouseDownOnCell(kNotInstalledRow, column);
    EXPECT_THAT(VisibleEditors(), IsEmpty()) << column;
  }
}

TEST_F(CellEditing, APointRightOfTheLastColumnOrBelowTheLastRowHasNoEditor) {
  ChangeColumnWidth(column::kLabel, 300);
  Click(kHybridRow, column::kVolume);
  const Twips y = grid().RowTop(kHybridRow) + 100;
  ClickAt(grid().RowLeft(kHybridRow) + grid().ColumnLeft(column::kLabel) + 900, y);
  EXPECT_THAT(VisibleEditors(), IsEmpty());

  ShowConfiguration(4);  // has nine rows, the grid room for ten
  Click(kHybridRow, column::kVolume);
  ClickAt(grid().ColumnLeft(column::kVolume) + 100, grid().RowTop(9) + grid().RowHeight(9) + 100);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
}

TEST_F(CellEditing, APressHidesTheEditorOfTheCellBefore) {
  MouseDownOnCell(kHybridRow, column::kVolume);
  MouseDownOnCell(kHybridRow, column::kLine);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
}

TEST_F(CellEditing, TheBoundaryBetweenTwoColumnsBelongsToTheLeftOne) {
  const Twips boundary = grid().RowLeft(1) + grid().ColumnLeft(column::kVolume);
  const Twips y = grid().RowTop(1) + 100;
  MouseDownAt(boundary, y);
  EXPECT_EQ(VisibleEditors(), kNodePair);
  MouseDownAt(boundary + 1, y);
  EXPECT_THAT(VisibleEditors(), ElementsAre("cmbVolume"));
}

TEST_F(CellEditing, AnEditorCoversItsCell50TwipsBelowTheTopOfTheRow) {
  Click(2, column::kVolume);
  const ComboBox& volume = form().cmbVolume;
  EXPECT_EQ(volume.Left(), grid().Left() + grid().RowLeft(2) + 500 + 1300 + 1200 + 1500);
  EXPECT_EQ(volume.Top(), grid().Top() + grid().RowTop(2) + 50);
  EXPECT_EQ(volume.Width(), 800);
}

TEST_F(CellEditing, APairSharesItsCellInTwoHalves) {
  MouseDownOnCell(2, column::kStartingNode);
  const ComboBox& name = form().cmbStartingNodeName;
  const ComboBox& number = form().cmbStartingNodeNumber;
  EXPECT_EQ(name.Left(), grid().Left() + grid().RowLeft(2) + 500 + 1300 + 1200);
  EXPECT_EQ(name.Width(), 750);
  EXPECT_EQ(number.Left(), name.Left() + 750);
  EXPECT_EQ(number.Width(), 750);
  EXPECT_EQ(name.Top(), grid().Top() + grid().RowTop(2) + 50);
  EXPECT_EQ(number.Top(), name.Top());
}

TEST_F(CellEditing, AColumnOf1501TwipsGivesHalvesOf750) {
  ChangeColumnWidth(column::kMode, 1501);
  MouseDownOnCell(1, column::kMode);
  EXPECT_EQ(form().cmbModeType.Width(), 750);
  EXPECT_EQ(form().cmbModeNumber.Width(), 750);
}

TEST_F(CellEditing, ACellThatBeginsLeftOfTheGridHasNoEditorNotEvenTheLabel) {
  ChangeColumnWidth(column::kLabel, 8000);
  ScrollRight(grid().ColumnLeft(column::kVolume) + 400);
  ASSERT_LT(grid().Left() + grid().RowLeft(1) + grid().ColumnLeft(column::kVolume), 0);
  MouseDownAt(100, grid().RowTop(1) + 100);
  EXPECT_THAT(VisibleEditors(), IsEmpty());

  ChangeColumnWidth(column::kLabel, 40000);
  ScrollRight(grid().ColumnLeft(column::kLabel));
  ASSERT_LT(grid().Left() + grid().RowLeft(1) + grid().ColumnLeft(column::kLabel), 0);
  MouseDownAt(100, grid().RowTop(1) + 100);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
}

TEST_F(CellEditing, AListThatWouldStickOutOfTheGridIsNotShown) {
  ChangeColumnWidth(column::kSoftStop, 9000);
  MouseDownOnCellLeft(1, column::kSoftStop);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
  ChangeColumnWidth(column::kMode, 30000);  // so does a pair
  MouseDownOnCellLeft(1, column::kMode);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
}

TEST_F(CellEditing, ALabelThatSticksOutIsCutToEnd300TwipsShortOfTheEdge) {
  ChangeColumnWidth(column::kLabel, 9000);
  MouseDownOnCellLeft(1, column::kLabel);
  EXPECT_THAT(VisibleEditors(), ElementsAre("txtLabel"));
  EXPECT_EQ(form().txtLabel.Left() + form().txtLabel.Width(), grid().Left() + grid().Width() - 300);
}

TEST_F(CellEditing, ALabelWithLessThan300TwipsOfRoomKeepsItsWidth) {
  const Twips free = grid().Width() - grid().RowLeft(1) - grid().ColumnLeft(column::kLabel);
  ChangeColumnWidth(column::kSoftStop, grid().ColumnWidth(column::kSoftStop) + free - 200);
  MouseDownOnCellLeft(1, column::kLabel);
  EXPECT_THAT(VisibleEditors(), ElementsAre("txtLabel"));
  EXPECT_EQ(form().txtLabel.Width(), 1800);
}

TEST_F(CellEditing, AClickShowsTheRowsValuesInItsEditor) {
  Click(2, column::kVolume);
  EXPECT_EQ(form().cmbVolume.Text(), u"Low");
  Click(2, column::kPartition);
  EXPECT_EQ(form().cmbPartition.Text(), u"Sales");
  Click(2, column::kStartingNode);
  EXPECT_EQ(form().cmbStartingNodeName.Text(), u"Queue");
  Click(2, column::kMode);
  EXPECT_EQ(form().cmbModeType.Text(), u"Ring Count");
  EXPECT_EQ(form().cmbModeNumber.Text(), u"4");
  Click(2, column::kNISOption);
  EXPECT_EQ(form().cmbNISOption.Text(), u"5");
  Click(2, column::kEWTOption);
  EXPECT_EQ(form().txtEWTOption.Text(), u"30");
  Click(2, column::kImpedance);
  EXPECT_EQ(form().cmbImpedance.Text(), u"Europe");
  Click(2, column::kSoftStop);
  EXPECT_EQ(form().cmbSoftStop.Text(), u"Enabled");
  Click(2, column::kLabel);
  EXPECT_EQ(form().txtLabel.Text(), u"Sales \u2013 group A");
}

TEST_F(CellEditing, AClickRemembersTheRowsPartitionForTheHost) {
  Click(3, column::kLine);
  EXPECT_EQ(control().BusinessRules().PartitionID, 4);
}

TEST_F(CellEditing, AClickMarksTheControlAsChanged) {
  Click(2, column::kVolume);
  EXPECT_TRUE(form().cmdApply.Enabled());
}

TEST_F(CellEditing, EveryClickMarksTheControlAsChangedAgain) {
  for (const int row : {2, 3}) {
    Click(row, column::kLine);
    EXPECT_TRUE(form().cmdApply.Enabled()) << row;
    Press(form().cmdApply);
    ASSERT_FALSE(form().cmdApply.Enabled());
  }
}

TEST_F(CellEditing, ASecondClickOnACellRunsItsRulesAgain) {
  Click(6, column::kStartingNode);  // its node type has no maximum
  EXPECT_THAT(VisibleEditors(), ElementsAre("cmbStartingNodeName"));
  Click(6, column::kStartingNode);
  EXPECT_THAT(VisibleEditors(), ElementsAre("cmbStartingNodeName"));
}

TEST_F(CellEditing, AClickOffersTheNumbersOfTheClickedLineAlsoWhereItsNodeIsSelectedAlready) {
  Click(2, column::kStartingNode);  // partition 2
  form().cmbStartingNodeName.SetListIndex(1);
  ASSERT_EQ(form().cmbStartingNodeName.Text(), u"Menu");
  ASSERT_EQ(form().cmbStartingNodeNumber.ListCount(), 999);
  Click(1, column::kStartingNode);
  ASSERT_EQ(form().cmbStartingNodeName.Text(), u"Menu");
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 10);
}

// Rows whose values are all on offer. Loading them into the editors overwrites cells on the way.
TEST_F(CellEditing, LoadingARowIntoTheEditorsLeavesItsValuesAsTheyAre) {
  for (const int row : {2, 3, 5, 9, 10}) {
    for (const int column : {column::kPartition, column::kVolume, column::kMode, column::kNISOption,
                             column::kEWTOption, column::kImpedance, column::kSoftStop}) {
      const auto before = Rows();
      Click(row, column);
      EXPECT_EQ(Rows(), before) << row << "/" << column;
    }
  }
}

TEST_F(CellEditing, TheResetOfThePartitionListLeavesThePartitionOfEverySelectedRow) {
  Key(1);
  const std::vector<Text> codes = Column(column::kPartitionCode);
  const std::vector<Text> names = Column(column::kPartition);
  form().cmbPartition.SetListIndex(2);  // writes partition 4 into every row but the empty ones
  EXPECT_THAT(Column(column::kPartitionCode), Not(codes));

  ShowConfiguration(1);
  Click(2, column::kVolume);
  Key(1);
  form().cmbPartition.SetListIndex(-1);
  grid().on_item_click(2);
  EXPECT_EQ(form().cmbPartition.ListIndex(), 0);
  EXPECT_EQ(Column(column::kPartitionCode), codes);
  EXPECT_EQ(Column(column::kPartition), names);
}

TEST_F(CellEditing, AStartingNodeOfType999HidesTheNumberList) {
  ShowConfiguration(4);
  MouseDownOnCell(8, column::kStartingNode);
  grid().on_item_click(8);
  EXPECT_THAT(VisibleEditors(), ElementsAre("cmbStartingNodeName"));
  EXPECT_EQ(form().cmbStartingNodeName.Text(), u"None");
}

TEST_F(CellEditing, AModeOfType3HidesTheNumberList) {
  Click(6, column::kMode);
  EXPECT_THAT(VisibleEditors(), ElementsAre("cmbModeType"));
  EXPECT_EQ(form().cmbModeType.Text(), u"Instant");
}

TEST_F(CellEditing, AModeThatTheListDoesNotOfferFallsBackToItsFirstEntry) {
  ShowConfiguration(4);
  Click(4, column::kMode);  // mode 28 is not among the modes of a hybrid line
  EXPECT_EQ(form().cmbModeType.ListIndex(), 0);
}

TEST_F(CellEditing, AVolumeThatTheListDoesNotOfferFallsBackToItsFirstEntry) {
  ShowConfiguration(4);
  Click(5, column::kVolume);  // volume 3 on a hybrid line
  EXPECT_EQ(form().cmbVolume.ListIndex(), 0);
  EXPECT_EQ(Cell(5, column::kVolume), u"Low");
}

TEST_F(CellEditing, DisabledInAnyCaseSelectsTheNisEntryWithItemData0) {
  for (const TextView shown : {u"Disabled", u"DISABLED", u"dIsAbLeD", u"what", u""}) {
    form().cmbNISOption.SetListIndex(7);
    grid().SetCell(1, column::kNISOption, shown);
    Click(1, column::kNISOption);
    EXPECT_EQ(form().cmbNISOption.ItemData(form().cmbNISOption.ListIndex()), 0) << ToUtf8(shown);
  }
}

TEST_F(CellEditing, ANisOptionThatTheListDoesNotOfferLeavesTheSelection) {
  form().cmbNISOption.SetListIndex(7);
  grid().SetCell(1, column::kNISOption, u"999");
  Click(1, column::kNISOption);
  EXPECT_EQ(form().cmbNISOption.ListIndex(), 7);
}

TEST_F(CellEditing, ADisabledEwtOptionLeavesTheTextBoxAt0) {
  Click(1, column::kEWTOption);
  EXPECT_EQ(form().txtEWTOption.Text(), u"0");
  EXPECT_EQ(Cell(1, column::kEWTOption), u"Disabled");
}

TEST_F(CellEditing, CtrlASelectsEveryRowAndNoOtherKeyDoes) {
  Click(1, column::kLine);
  Key(u'a');
  EXPECT_FALSE(grid().Selected(2));
  Key(1);
  for (int row = 1; row <= grid().RowCount(); ++row) EXPECT_TRUE(grid().Selected(row));
}

TEST_F(CellEditing, TheReleaseOnASelectedRowDoesNotLoadItASecondTime) {
  MouseDownOnCell(3, column::kVolume);
  control().BusinessRules().PartitionID = 77;
  MouseUpOnCell(3, column::kVolume);
  EXPECT_EQ(control().BusinessRules().PartitionID, 77);
}

TEST_F(CellEditing, TheReleaseOnARowThatIsNotSelectedSelectsAndLoadsIt) {
  Click(3, column::kVolume);
  control().BusinessRules().PartitionID = 77;
  Click(3, column::kVolume, Keys{.ctrl = true});  // the list takes the selection off
  EXPECT_TRUE(grid().Selected(3));
  EXPECT_EQ(control().BusinessRules().PartitionID, 4);
}

TEST_F(CellEditing, TheReleaseGivesTheFocusToTheEditorAndOfAPairToTheLeftOne) {
  Click(1, column::kVolume);
  EXPECT_EQ(Focus(), "cmbVolume");
  Click(1, column::kMode);
  EXPECT_EQ(Focus(), "cmbModeType");
  Click(1, column::kStartingNode);
  EXPECT_EQ(Focus(), "cmbStartingNodeName");
  Click(1, column::kLabel);
  EXPECT_EQ(Focus(), "txtLabel");
}

TEST_F(CellEditing, AClickOnAHeaderHidesTheEditorsAndSortsNothing) {
  Click(1, column::kVolume);
  const auto before = Rows();
  grid().on_column_click(column::kVolume);
  EXPECT_THAT(VisibleEditors(), IsEmpty());
  EXPECT_EQ(Rows(), before);
}

TEST_F(CellEditing, AFailureOfItemClickIsReportedWithItsProcedure) {
  form().cmbPartition.Clear();
  Click(1, column::kVolume);
  EXPECT_THAT(Messages(), ElementsAre(PlainMessage(
                              u"Error Description:Invalid property value\r\n"
                              u"Error Source: TLV_RDV_Line_Config - LVRDVLineConfig_ItemClick")));
  EXPECT_EQ(control().BusinessRules().PartitionID, 1);
  EXPECT_EQ(form().cmbVolume.ListIndex(), -1);
}

// A label that is on the screen and refuses the focus.
class UnfocusableTextBox : public TextBox {
 public:
  bool Visible() const override { return true; }
  void SetVisible(bool) override {}
  bool Enabled() const override { return true; }
  void SetEnabled(bool) override {}
  bool Focused() const override { return false; }
  void SetFocus() override { Raise(LanguageError::InvalidProcedureCall); }
  Twips Left() const override { return 0; }
  Twips Top() const override { return 0; }
  Twips Width() const override { return 0; }
  void SetLeft(Twips) override {}
  void SetTop(Twips) override {}
  void SetWidth(Twips) override {}
  rdv::Text Text() const override { return {}; }
  void SetText(TextView) override {}
  size_t Caret() const override { return 0; }
  void SetCaret(size_t) override {}
};

TEST_F(CellEditing, AFailureOfMouseUpHasAShapeOfItsOwn) {
  Destroy();
  UnfocusableTextBox label;
  ucRDVLineConfig control(Replace(form(), {.txtLabel = &label}));
  grid().on_mouse_up(0, 0);
  EXPECT_THAT(Messages(),
              ElementsAre(Message{u"Source: TLV_RDV_Line_Config - LVRDVLineConfig_MouseUp \r\n"
                                  u"Description: Invalid procedure call or argument",
                                  48, Text(u"Error")}));
}

TEST_F(CellEditing, ThePartitionOfARowIsReadAsA16BitNumber) {
  grid().SetCell(1, column::kPartitionCode, u"40000");
  Click(1, column::kLine);
  EXPECT_THAT(Messages(), ElementsAre(PlainMessage(
                              u"Error Description:Overflow\r\n"
                              u"Error Source: TLV_RDV_Line_Config - LVRDVLineConfig_ItemClick")));
}

}  // namespace
}  // namespace rdv::test
