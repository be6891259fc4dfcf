// Unit types, the line templates and "Restore Default".
#include "rules/unit_types.h"

#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Row = std::array<Text, kColumnCount>;

class UnitTypesTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }

  void RestoreDefault(TextView unit_type) {
    form().cmbRDVType.SetText(unit_type);
    Press(form().cmdShowDefaults);
  }

  static Row NotInstalled(TextView line) {
    return {u"1",   u"1",       u"999",           u"-1",  u"0",   u"1",   u"1",   u"0",
            u"0",   Text(line), u"Not Installed", u"N/A", u"N/A", u"N/A", u"N/A", u"N/A",
            u"N/A", u"N/A",     u"N/A",           u""};
  }
  static Row Hybrid(TextView line) {
    return {u"6",
            u"1",
            u"0",
            Text(line),
            u"128",
            u"1",
            u"1",
            u"0",
            u"0",
            Text(line),
            u"Hybrid Line",
            u"Reception",
            u"Message " + Text(line),
            u"High",
            u"Ring=1",
            u"Disabled",
            u"Disabled",
            u"Use Country Code",
            u"Disabled",
            u""};
  }
  static Row LowImpedance(TextView line) {
    return {u"5",
            u"1",
            u"0",
            Text(line),
            u"128",
            u"13",
            u"1",
            u"0",
            u"0",
            Text(line),
            u"Impedance Line",
            u"Reception",
            u"Message " + Text(line),
            u"High",
            u"Loop Start=1",
            u"Disabled",
            u"N/A",
            u"N/A",
            u"Disabled",
            u""};
  }
  static Row Moh(TextView line, TextView node) {
    return {u"8",
            u"1",
            u"11",
            Text(node),
            u"6",
            u"17",
            u"1",
            u"0",
            u"0",
            Text(line),
            u"MOH Line",
            u"Reception",
            u"Music " + Text(node),
            u"Above medium",
            u"Continuous=1",
            u"N/A",
            u"N/A",
            u"N/A",
            u"N/A",
            u""};
  }
};

TEST_F(UnitTypesTest, AreThreeWithTheFirstSelected) {
  const ComboBox& list = form().cmbRDVType;
  ASSERT_EQ(list.ListCount(), 3);
  EXPECT_EQ(list.List(0), u"8 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(list.List(1), u"4 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(list.List(2), u"8 Impedance Lines 2 MOH Lines");
  EXPECT_EQ(list.ListIndex(), 0);
}

TEST_F(UnitTypesTest, EightHybridLinesAreLines1To8And9And11) {
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  ExpectGrid({Hybrid(u"1"), Hybrid(u"2"), Hybrid(u"3"), Hybrid(u"4"), Hybrid(u"5"), Hybrid(u"6"),
              Hybrid(u"7"), Hybrid(u"8"), Moh(u"9", u"1"), Moh(u"11", u"2")});
}

TEST_F(UnitTypesTest, FourHybridLinesLeaveLines5To8NotInstalled) {
  RestoreDefault(u"4 Hybrid Lines 2 MOH Lines");
  ExpectGrid({Hybrid(u"1"), Hybrid(u"2"), Hybrid(u"3"), Hybrid(u"4"), NotInstalled(u"5"),
              NotInstalled(u"6"), NotInstalled(u"7"), NotInstalled(u"8"), Moh(u"9", u"1"),
              Moh(u"11", u"2")});
}

TEST_F(UnitTypesTest, EightImpedanceLinesUseTheLowImpedanceTemplate) {
  RestoreDefault(u"8 Impedance Lines 2 MOH Lines");
  ExpectGrid({LowImpedance(u"1"), LowImpedance(u"2"), LowImpedance(u"3"), LowImpedance(u"4"),
              LowImpedance(u"5"), LowImpedance(u"6"), LowImpedance(u"7"), LowImpedance(u"8"),
              Moh(u"9", u"1"), Moh(u"11", u"2")});
}

TEST_F(UnitTypesTest, AnyOtherTextGivesElevenNotInstalledRowsFromLine0) {
  for (const TextView text : {u"", u"8 hybrid lines 2 moh lines", u"8 Hybrid Lines 2 MOH Lines "}) {
    RestoreDefault(text);
    ASSERT_EQ(grid().RowCount(), 11) << ToUtf8(text);
    for (int row = 1; row <= 11; ++row)
      EXPECT_EQ(Rows()[static_cast<size_t>(row - 1)], NotInstalled(Decimal(row - 1)));
  }
}

TEST_F(UnitTypesTest, RowsAreKeyedByTheirLineNumber) {
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(grid().Key(1), u"a1");
  EXPECT_EQ(grid().Key(9), u"a9");
  EXPECT_EQ(grid().Key(10), u"a11");
}

TEST_F(UnitTypesTest, TheMusicOnHoldNodesAre1And2HoweverOftenTheDefaultIsRestored) {
  for (int press = 0; press < 3; ++press) {
    RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
    EXPECT_EQ(Cell(9, column::kStartingNodeNumber), u"1");
    EXPECT_EQ(Cell(10, column::kStartingNodeNumber), u"2");
  }
}

TEST_F(UnitTypesTest, TheMusicOnHoldCounterCarriesOver) {
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  grid().SetSelected(1, true);
  SelectCode(form().cmbLineType, 8);  // takes 1
  EXPECT_EQ(Cell(1, column::kStartingNode), u"Music 1");
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(Cell(9, column::kStartingNodeNumber), u"2");
  EXPECT_EQ(Cell(10, column::kStartingNodeNumber), u"1");
}

TEST_F(UnitTypesTest, RestoringHidesTheEditorsAndSelectsNothing) {
  Click(1, column::kVolume);
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
  EXPECT_EQ(grid().SelectedItem(), std::nullopt);
  EXPECT_TRUE(form().cmdApply.Enabled());
}

TEST_F(UnitTypesTest, RestoringAnyUnitTypeWritesNothing) {
  const auto stored = AllStoredLines(1);
  for (int unit_type = 0; unit_type < 3; ++unit_type) {
    form().cmbRDVType.SetListIndex(unit_type);
    Press(form().cmdShowDefaults);
    EXPECT_EQ(AllStoredLines(1), stored) << unit_type;
    EXPECT_THAT(Messages(), IsEmpty());
  }
}

TEST_F(UnitTypesTest, WithoutASettingsFileTheMusicOnHoldVolumeIsCaptioned6) {
  UseSite("plain", "");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  RestoreDefault(u"8 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(Cell(9, column::kVolume), u"6");
  EXPECT_EQ(Cell(9, column::kVolumeCode), u"6");
}

// The templates alone, with name lists of the test's own.
class Templates : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    for (const GridColumn& column : kGridColumns) grid().AddColumn(column.caption, column.width);
    state.PartitionList.Add(u"First", u"1");
    state.NodeNames.Add(u"Message", u"0");
    state.NodeNames.Add(u"Music", u"11");
    state.ModeNames.Add(u"Ring", u"1");
    state.ModeNames.Add(u"Loop Start", u"13");
    state.ModeNames.Add(u"Continuous", u"17");
  }

  static Message Report(TextView procedure) {
    return PlainMessage(
        u"Error Description:Invalid procedure call or argument\r\n"
        u"Error Source: TLV_RDV_Line_Config - " +
        Text(procedure));
  }

  ControlState state;
  LineTemplates templates{form(), state};
};

TEST_F(Templates, ThatFailReportAtOnceUnderTheirNameAndAddNothing) {
  EXPECT_FALSE(templates.LoadDefaultHybrideLine(1, Target::NewRow, Store::No));
  EXPECT_FALSE(templates.LoadDefaultLowImpedanceLine(1, Target::NewRow, Store::No));
  EXPECT_FALSE(templates.LoadDefaultMOHLine(9, Target::NewRow, Store::No));
  EXPECT_THAT(Messages(),
              ElementsAre(Report(u"LoadDefaultHybrideLine"), Report(u"LoadDefaultLowImpedanceLine"),
                          Report(u"LoadDefaultMOHLine")));
  EXPECT_EQ(grid().RowCount(), 0);
}

TEST_F(Templates, ANotInstalledLineNeedsNoNamesAndFailsOnlyWhereItCannotBeAdded) {
  EXPECT_TRUE(templates.LoadDefaultNotInstalledLine(3, Target::NewRow));
  EXPECT_FALSE(templates.LoadDefaultNotInstalledLine(3, Target::NewRow));
  EXPECT_THAT(Messages(), ElementsAre(PlainMessage(
                              u"Error Description:Key is not unique in collection\r\n"
                              u"Error Source: TLV_RDV_Line_Config - LoadDefaultNotInstalledLine")));
  EXPECT_EQ(grid().RowCount(), 1);
  EXPECT_FALSE(templates.LoadDefaultNotInstalledLine(2, Target::ExistingRow));
}

TEST_F(Templates, AMusicOnHoldLineThatFailedHasTakenItsNodeNumber) {
  EXPECT_FALSE(templates.LoadDefaultMOHLine(9, Target::NewRow, Store::No));
  Messages();
  state.CardTypes.Add(u"MOH Line", u"8");
  EXPECT_TRUE(templates.LoadDefaultMOHLine(9, Target::NewRow, Store::No));
  EXPECT_EQ(Cell(1, column::kStartingNode), u"Music 2");
}

TEST_F(Templates, ALineThatCannotBeStoredIsReportedAndStaysInTheGrid) {
  UseSite("");
  state.CardTypes.Add(u"Hybrid Line", u"6");
  EXPECT_FALSE(templates.LoadDefaultHybrideLine(1, Target::NewRow, Store::Yes));
  ASSERT_THAT(Messages(), SizeIs(1));
  EXPECT_EQ(grid().RowCount(), 1);
}

TEST_F(Templates, OneFailingTemplateDoesNotStopTheOthersOfADefaultUnit) {
  UnitTypes unit_types(form(), state, templates);
  state.CardTypes.Add(u"MOH Line", u"8");
  form().cmbRDVType.SetText(u"8 Hybrid Lines 2 MOH Lines");
  unit_types.cmdShowDefaults_Click();
  EXPECT_EQ(grid().RowCount(), 2);
  const std::vector<Message> messages = Messages();
  EXPECT_THAT(messages, SizeIs(8));
  EXPECT_THAT(messages, Each(Report(u"LoadDefaultHybrideLine")));
}

}  // namespace
}  // namespace rdv::test
