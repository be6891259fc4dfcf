// What a choice in an editor does to the selected rows and to the other editors.
#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::IsEmpty;

class Choices : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
    control().BusinessRules().PartitionID = 1;
  }

  void Select(const std::vector<int>& rows) {
    for (int row = 1; row <= grid().RowCount(); ++row) grid().SetSelected(row, false);
    for (const int row : rows) grid().SetSelected(row, true);
  }

  // Offers one entry and has it selected, as if the user had picked it.
  void Choose(ComboBox& list, TextView caption, int32_t code) {
    list.Clear();
    list.AddItem(caption, code);
    list.SetListIndex(0);
  }

  void ExpectPending() { EXPECT_TRUE(form().cmdApply.Enabled()); }
};

struct GateRow {
  const char* name;
  ComboBox& (*editor)(const Form&);
  int32_t code;
  int code_column;  // 0 where there is none
  int caption_column;
  std::vector<int> written;  // of the four rows
};

class Gate : public Choices, public ::testing::WithParamInterface<GateRow> {};

TEST_P(Gate, LetsAChoiceThroughByLineType) {
  const GateRow& gate = GetParam();
  const std::vector<int> rows = {kHybridRow, kImpedanceRow, kNotInstalledRow, kMohRow};
  Select(rows);
  auto expected = Rows();
  for (const int row : gate.written) {
    auto& cells = expected[static_cast<size_t>(row - 1)];
    if (gate.code_column) cells[static_cast<size_t>(gate.code_column - 1)] = Decimal(gate.code);
    cells[static_cast<size_t>(gate.caption_column - 1)] = u"chosen";
  }
  Choose(gate.editor(form()), u"chosen", gate.code);
  EXPECT_EQ(Rows(), expected);
  ExpectPending();
}

INSTANTIATE_TEST_SUITE_P(
    Editors, Gate,
    ::testing::Values(GateRow{"partition",
                              [](const Form& f) -> ComboBox& { return f.cmbPartition; },
                              3,
                              column::kPartitionCode,
                              column::kPartition,
                              {kHybridRow, kImpedanceRow, kMohRow}},
                      GateRow{"nis",
                              [](const Form& f) -> ComboBox& { return f.cmbNISOption; },
                              42,
                              0,
                              column::kNISOption,
                              {kHybridRow, kImpedanceRow}},
                      GateRow{"impedance",
                              [](const Form& f) -> ComboBox& { return f.cmbImpedance; },
                              4,
                              column::kImpedanceCode,
                              column::kImpedance,
                              {kHybridRow, kImpedanceRow}},
                      GateRow{"softstop",
                              [](const Form& f) -> ComboBox& { return f.cmbSoftStop; },
                              1,
                              column::kSoftStopCode,
                              column::kSoftStop,
                              {kHybridRow, kImpedanceRow}}),
    [](const auto& gate) { return std::string(gate.param.name); });

TEST_F(Choices, AChoiceWithoutASelectedRowMarksTheControlAsChangedAndWritesNothing) {
  Select({});
  const auto before = Rows();
  Choose(form().cmbPartition, u"chosen", 3);
  Choose(form().cmbVolume, u"High", 128);
  Choose(form().cmbModeType, u"Delay", 2);
  EXPECT_EQ(Rows(), before);
  ExpectPending();
}

TEST_F(Choices, EverySelectedRowThatPassesTheGateTakesTheChoice) {
  Key(1);
  Choose(form().cmbPartition, u"chosen", 3);
  for (int row = 1; row <= 10; ++row) {
    const bool installed = Cell(row, column::kLineTypeCode) != u"1";
    EXPECT_EQ(Cell(row, column::kPartition), installed ? u"chosen" : u"N/A") << row;
  }
}

struct VolumeRow {
  int row;
  int32_t code;
  TextView caption;
  TextView shown;  // "" where the volume is refused
};

class VolumeRule : public Choices, public ::testing::WithParamInterface<VolumeRow> {};

TEST_P(VolumeRule, AcceptsByLineType) {
  const VolumeRow& volume = GetParam();
  Select({volume.row});
  auto expected = Rows();
  if (!volume.shown.empty()) {
    auto& cells = expected[static_cast<size_t>(volume.row - 1)];
    cells[column::kVolumeCode - 1] = Decimal(volume.code);
    cells[column::kVolume - 1] = volume.shown;
  }
  Choose(form().cmbVolume, volume.caption, volume.code);
  EXPECT_EQ(Rows(), expected);
  ExpectPending();
}

INSTANTIATE_TEST_SUITE_P(
    Table, VolumeRule,
    ::testing::Values(
        VolumeRow{2, 128, u"High", u"High"}, VolumeRow{6, 128, u"High", u"High"},
        VolumeRow{kHybridRow, 128, u"High", u"High"}, VolumeRow{kHybridRow, 0, u"Low", u"Low"},
        VolumeRow{kHybridRow, 0, u"0", u""}, VolumeRow{kHybridRow, 3, u"3", u""},
        VolumeRow{kHybridRow, -1, u"-1", u""}, VolumeRow{kImpedanceRow, 128, u"High", u"High"},
        VolumeRow{kImpedanceRow, 0, u"Low", u"Low"}, VolumeRow{kImpedanceRow, 0, u"0", u""},
        VolumeRow{kImpedanceRow, 3, u"3", u""}, VolumeRow{kMohRow, 1, u"Very low", u"Very low"},
        VolumeRow{kMohRow, 9, u"Very high", u"Very high"}, VolumeRow{kMohRow, 0, u"Low", u"0"},
        VolumeRow{kMohRow, 0, u"0", u"0"}, VolumeRow{kMohRow, 10, u"10", u""},
        VolumeRow{kMohRow, 128, u"High", u""}, VolumeRow{kMohRow, -1, u"-1", u""},
        VolumeRow{kNotInstalledRow, 128, u"High", u""}));

TEST_F(Choices, ALineOfNoKnownTypeTakesAnyVolume) {
  grid().SetCell(1, column::kLineTypeCode, u"0");
  Select({1});
  Choose(form().cmbVolume, u"77", 77);
  EXPECT_EQ(Cell(1, column::kVolumeCode), u"77");
}

TEST_F(Choices, AModeOfAHybridLineIsCheckedAgainstCardType7) {
  Select({kHybridRow});
  Choose(form().cmbModeType, u"Delay", 2);  // card type 7 has it, card type 6 has not
  EXPECT_EQ(Cell(kHybridRow, column::kModeType), u"2");
  EXPECT_EQ(Cell(kHybridRow, column::kMode), u"Delay=2");
  Choose(form().cmbModeType, u"Idle Out", 5);  // the other way round
  EXPECT_EQ(Cell(kHybridRow, column::kModeType), u"2");
  EXPECT_EQ(form().cmbModeType.Text(), u"Idle Out");
}

TEST_F(Choices, AModeGoesToThoseSelectedRowsWhoseLineTypeAllowsIt) {
  Select({kHybridRow, kImpedanceRow, kNotInstalledRow, kMohRow});
  Choose(form().cmbModeType, u"Ground Start", 7);
  EXPECT_EQ(Cell(kHybridRow, column::kModeType), u"1");
  EXPECT_EQ(Cell(kImpedanceRow, column::kModeType), u"7");
  EXPECT_EQ(Cell(kImpedanceRow, column::kMode), u"Ground Start");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kModeType), u"1");
  EXPECT_EQ(Cell(kMohRow, column::kModeType), u"17");
}

TEST_F(Choices, AMusicOnHoldLineTakesItsModesAndStartingNodes) {
  Select({kMohRow});
  Choose(form().cmbModeType, u"On Demand", 18);
  EXPECT_EQ(Cell(kMohRow, column::kModeType), u"18");
  EXPECT_EQ(Cell(kMohRow, column::kMode), u"On Demand");
  Choose(form().cmbStartingNodeName, u"None", 999);
  EXPECT_EQ(Cell(kMohRow, column::kStartingNodeType), u"999");
  EXPECT_EQ(Cell(kMohRow, column::kStartingNode), u"None");
}

TEST_F(Choices, ModesWithAndWithoutNumberShowAndHideTheNumberBesideThem) {
  Click(3, column::kMode);  // mode 13
  ComboBox& mode = form().cmbModeType;
  ComboBox& number = form().cmbModeNumber;
  EXPECT_FALSE(number.Visible());
  const Twips half = number.Width();
  PickCode(mode, 1);
  EXPECT_TRUE(number.Visible());
  EXPECT_EQ(mode.Width(), half);
  EXPECT_EQ(Cell(3, column::kMode), u"Ring=1");
  PickCode(mode, 13);
  EXPECT_FALSE(number.Visible());
  EXPECT_EQ(mode.Width(), 2 * half);
  EXPECT_EQ(Cell(3, column::kMode), u"Loop Start");
  PickCode(mode, 2);
  EXPECT_TRUE(number.Visible());
  EXPECT_EQ(mode.Width(), half);
}

TEST_F(Choices, AModeListWiderThanTheNumberIsHalvedWhenTheNumberGoes) {
  Click(1, column::kMode);
  ComboBox& mode = form().cmbModeType;
  mode.SetWidth(form().cmbModeNumber.Width() + 701);  // 1451
  PickCode(mode, 13);
  EXPECT_EQ(mode.Width(), 725);
  EXPECT_FALSE(form().cmbModeNumber.Visible());
}

TEST_F(Choices, AModeNumberIsWrittenBesideTheModeOfTheRow) {
  Click(2, column::kMode);
  PickCode(form().cmbModeNumber, 7);
  EXPECT_EQ(Cell(2, column::kModeNumber), u"7");
  EXPECT_EQ(Cell(2, column::kMode), u"Ring Count=7");
}

TEST_F(Choices, AModeNumberAsksTheEditorForTheModeAndTheRowForItsName) {
  Select({3});                           // mode 13 is stored
  Choose(form().cmbModeType, u"?", 28);  // takes a number, is refused by the row
  form().cmbModeNumber.SetListIndex(4);
  EXPECT_EQ(Cell(3, column::kModeNumber), u"5");
  EXPECT_EQ(Cell(3, column::kMode), u"Loop Start=5");

  Select({kHybridRow});                  // mode 1 is stored
  Choose(form().cmbModeType, u"?", 17);  // takes none
  form().cmbModeNumber.SetListIndex(8);
  EXPECT_EQ(Cell(kHybridRow, column::kModeNumber), u"2");
}

TEST_F(Choices, AModeNumberOnAMusicOnHoldLineChangesNothingButThePendingFlag) {
  Select({kMohRow});
  Choose(form().cmbModeType, u"Ring", 1);
  form().cmdApply.SetEnabled(false);
  const auto before = Rows();
  form().cmbModeNumber.SetListIndex(5);
  EXPECT_EQ(Rows(), before);
  ExpectPending();
}

TEST_F(Choices, AModeNumberOfARowWithoutAModeNameLeavesTheCaption) {
  Select({kHybridRow});
  Choose(form().cmbModeType, u"?", 1);
  grid().SetCell(kHybridRow, column::kModeType, u"77");
  form().cmbModeNumber.SetListIndex(8);
  EXPECT_EQ(Cell(kHybridRow, column::kModeNumber), u"9");
  EXPECT_EQ(Cell(kHybridRow, column::kMode), u"?=2");
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Choices, ANodeWithoutMaximumHidesTheNumberAndKeepsTheOldOneInTheCaption) {
  Click(kHybridRow, column::kStartingNode);
  ComboBox& name = form().cmbStartingNodeName;
  PickCode(name, 13);
  EXPECT_FALSE(form().cmbStartingNodeNumber.Visible());
  EXPECT_EQ(name.Width(), 1500);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"Test 3");
  PickCode(name, 999);
  EXPECT_EQ(name.Width(), 1500);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"None");
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeNumber), u"3");
}

TEST_F(Choices, ANodeWithAMaximumBringsTheNumberBackAtItsWidth) {
  Click(kHybridRow, column::kStartingNode);
  PickCode(form().cmbStartingNodeName, 13);
  PickCode(form().cmbStartingNodeName, 8);
  EXPECT_TRUE(form().cmbStartingNodeNumber.Visible());
  EXPECT_EQ(form().cmbStartingNodeName.Width(), 750);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 10);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"Transfer 3");
}

struct NodeNumberRow {
  TextView current;
  int maximum;  // by node type, in partition 1
  int32_t node_type;
  TextView selected;
};

class RefilledNodeNumbers : public Choices, public ::testing::WithParamInterface<NodeNumberRow> {};

TEST_P(RefilledNodeNumbers, SelectByTextualComparison) {
  const NodeNumberRow& given = GetParam();
  Select({kHybridRow});
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, given.current);
  const Text name = u"chosen";
  Choose(form().cmbStartingNodeName, name, given.node_type);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), given.maximum);
  EXPECT_EQ(form().cmbStartingNodeNumber.Text(), given.selected);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeNumber), given.selected);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), name + u" " + Text(given.selected));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefilledNodeNumbers,
    ::testing::Values(NodeNumberRow{u"9", 16, 0, u"16"}, NodeNumberRow{u"12", 16, 0, u"12"},
                      NodeNumberRow{u"1", 16, 0, u"1"}, NodeNumberRow{u"16", 16, 0, u"16"},
                      NodeNumberRow{u"20", 16, 0, u"16"}, NodeNumberRow{u"-1", 16, 0, u"16"},
                      NodeNumberRow{u"0", 16, 0, u"16"}, NodeNumberRow{u"3", 10, 1, u"10"},
                      NodeNumberRow{u"1", 1, 2, u"1"}));

TEST_F(Choices, ANumberThatOnlyItsTextPutsInTheListEndsTheRuleSilently) {
  Select({kHybridRow});
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, u"100");
  Choose(form().cmbStartingNodeName, u"chosen", 0);  // "100" sorts before "16", entry 100 is none
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 16);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeType), u"1");
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"Menu 3");
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Choices, AMaximumBelow1EndsTheRuleSilently) {
  CurrentSite().Execute(
      u"UPDATE Node_Type_Max SET Max_Number = `m` WHERE Config_ID = `c` AND PartitionID = `p` AND "
      u"NodeType_ID = `n`",
      {u"0", u"1", u"1", u"3"});
  Select({kHybridRow});
  Choose(form().cmbStartingNodeName, u"Directory", 3);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 0);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeType), u"1");
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Choices, ANumberListThatHasTheMaximumAlreadyKeepsItsSelection) {
  Select({kHybridRow});
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, u"12");
  Choose(form().cmbStartingNodeName, u"Message", 0);
  ASSERT_EQ(form().cmbStartingNodeNumber.ListIndex(), 11);
  grid().SetCell(kHybridRow, column::kStartingNodeNumber, u"9");
  Choose(form().cmbStartingNodeName, u"Schedule", 6);  // 16 as well
  EXPECT_EQ(form().cmbStartingNodeNumber.ListIndex(), 11);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"Schedule 9");
}

TEST_F(Choices, TheMaximumIsThatOfTheHostsPartitionNotOfTheLines) {
  control().BusinessRules().PartitionID = 2;
  Select({kHybridRow});  // in partition 1, where node type 1 goes up to 10
  Choose(form().cmbStartingNodeName, u"Menu", 1);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), 999);
}

TEST_F(Choices, AStartingNodeGoesToThoseSelectedRowsWhoseLineTypeAllowsIt) {
  Select({kHybridRow, kImpedanceRow, kNotInstalledRow, kMohRow});
  Choose(form().cmbStartingNodeName, u"Music", 11);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeType), u"11");
  EXPECT_EQ(Cell(kImpedanceRow, column::kStartingNodeType), u"0");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kStartingNodeType), u"999");
  EXPECT_EQ(Cell(kMohRow, column::kStartingNodeType), u"11");
}

TEST_F(Choices, ANodeNumberIsWrittenUnlessTheRowsNodeIs999) {
  grid().SetCell(2, column::kStartingNodeType, u"999");
  Select({kHybridRow, 2, kNotInstalledRow, kMohRow});
  form().cmbStartingNodeNumber.SetListIndex(41);
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNodeNumber), u"42");
  EXPECT_EQ(Cell(kHybridRow, column::kStartingNode), u"Menu 42");
  EXPECT_EQ(Cell(2, column::kStartingNodeNumber), u"12");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kStartingNodeNumber), u"-1");
  EXPECT_EQ(Cell(kMohRow, column::kStartingNode), u"Music 42");
}

struct TypedRow {
  TextView typed;
  TextView text;
};

class TypedModeNumber : public Choices, public ::testing::WithParamInterface<TypedRow> {};

TEST_P(TypedModeNumber, IsCutToANumberOfTheListAndSelected) {
  Click(2, column::kMode);
  Paste(form().cmbModeNumber, GetParam().typed);
  EXPECT_EQ(form().cmbModeNumber.Text(), GetParam().text);
  EXPECT_EQ(form().cmbModeNumber.ListIndex(), CLng(GetParam().text) - 1);
  EXPECT_EQ(form().cmbModeNumber.Caret(), GetParam().text.size());
  EXPECT_EQ(Cell(2, column::kModeNumber), GetParam().text);
  EXPECT_EQ(Cell(2, column::kMode), u"Ring Count=" + Text(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Table, TypedModeNumber,
    ::testing::Values(TypedRow{u"0", u"1"}, TypedRow{u"abc", u"1"}, TypedRow{u"", u"1"},
                      TypedRow{u"75", u"7"}, TypedRow{u"10", u"10"}, TypedRow{u"11", u"1"},
                      TypedRow{u"110", u"1"}, TypedRow{u"7a", u"7"}, TypedRow{u"-3", u"1"},
                      TypedRow{u" 3", u"1"}, TypedRow{u"3.9", u"3"}, TypedRow{u"05", u"1"},
                      TypedRow{u"99999999999999999999", u"9"}, TypedRow{u"\u0665", u"1"}));

TEST_F(Choices, TypingANodeNumberStopsAtTheFirstCharacterThatIsNoDigit) {
  Click(2, column::kStartingNode);
  PickCode(form().cmbStartingNodeNumber, 5);
  Paste(form().cmbStartingNodeNumber, u"12x3");
  ASSERT_EQ(form().cmbStartingNodeNumber.ListCount(), 16);
  EXPECT_EQ(form().cmbStartingNodeNumber.Text(), u"12");
  EXPECT_EQ(Cell(2, column::kStartingNode), u"Queue 12");
}

TEST_F(Choices, TypedDigitsFallBackToTheLastNumberThatTheListHas) {
  Click(2, column::kMode);
  Type(form().cmbModeNumber, u"75");
  EXPECT_EQ(form().cmbModeNumber.Text(), u"7");
  EXPECT_EQ(Cell(2, column::kModeNumber), u"7");
}

TEST_F(Choices, AnEmptyNumberListTakesNoDigit) {
  Click(2, column::kMode);
  form().cmbModeNumber.Clear();
  Paste(form().cmbModeNumber, u"5");
  EXPECT_EQ(form().cmbModeNumber.Text(), u"1");
  EXPECT_EQ(form().cmbModeNumber.ListIndex(), -1);
}

struct LineTypeRow {
  int32_t code;
  TextView caption;
};

class ChangedLineType : public Choices, public ::testing::WithParamInterface<LineTypeRow> {};

TEST_P(ChangedLineType, RewritesTheWholeRowFromItsTemplateByPosition) {
  Select({10});  // shows line 11
  SelectCode(form().cmbLineType, GetParam().code);
  EXPECT_EQ(Cell(10, column::kLineTypeCode), Decimal(GetParam().code));
  EXPECT_EQ(Cell(10, column::kLineType), GetParam().caption);
  EXPECT_EQ(Cell(10, column::kLine), u"10");
  EXPECT_EQ(Cell(10, column::kLabel), u"");
  EXPECT_EQ(grid().RowCount(), 10);
}

INSTANTIATE_TEST_SUITE_P(Templates, ChangedLineType,
                         ::testing::Values(LineTypeRow{1, u"Not Installed"},
                                           LineTypeRow{6, u"Hybrid Line"}));

TEST_F(Choices, ANotInstalledRowBecomesAMusicOnHoldLineByItsType) {
  Select({kNotInstalledRow});
  SelectCode(form().cmbLineType, 8);
  EXPECT_EQ(Cell(kNotInstalledRow, column::kStartingNode), u"Music 1");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kVolume), u"Above medium");
}

TEST_F(Choices, ChangingTheLineTypeTo5OrToItsOwnTypeLeavesTheRow) {
  Key(1);
  auto before = Rows();
  SelectCode(form().cmbLineType, 5);
  EXPECT_EQ(Rows(), before);
  Select({kHybridRow});
  before = Rows();
  SelectCode(form().cmbLineType, 6);
  EXPECT_EQ(Rows(), before);
  ExpectPending();
}

TEST_F(Choices, ADatabaseThatFailsEndsModeAndNodeRulesSilently) {
  Select({kHybridRow});
  std::filesystem::remove(CurrentSite().DatabaseFile());
  const auto before = Rows();
  Choose(form().cmbModeType, u"Delay", 2);
  Choose(form().cmbStartingNodeName, u"Message", 0);
  EXPECT_EQ(Rows(), before);
  EXPECT_THAT(Messages(), IsEmpty());
}

}  // namespace
}  // namespace rdv::test
