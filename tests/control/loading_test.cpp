// What the grid shows for the stored lines of a configuration, and what it makes of an empty one.
#include <gmock/gmock.h>

#include "data/database.h"
#include "data/site_in_place.h"
#include "site_grids.h"
#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Loading : public ControlTest {
 protected:
  void Show(int16_t config) {
    Create();
    ASSERT_TRUE(control().ShowControl(config)) << ::testing::PrintToString(Messages());
    EXPECT_THAT(Messages(), IsEmpty());
  }

  // Changes one field of a stored line of configuration 3; no argument is Null.
  void Store(TextView field, const Argument& value, TextView line) {
    CurrentSite().Execute(u"UPDATE Used_Lines SET " + Text(field) +
                              u" = `Given_Value` WHERE Config_ID = `Given_ConfigID` AND "
                              u"Base_Slot_No = 1 AND Slot_Offset = 1 AND Line = `Given_Line`",
                          {value, u"3", Text(line)});
  }

  void DeleteLine(TextView line) {
    CurrentSite().Execute(
        u"DELETE FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND "
        u"Base_Slot_No = 1 AND Slot_Offset = 1 AND Line = `Given_Line`",
        {u"3", Text(line)});
  }

  std::vector<Text> Lines() { return Column(column::kLine); }
};

struct SiteRow {
  const char* site;
  int16_t config;
  ExpectedGrid (*expected)();
};

class GridOfASampleSite : public Loading, public ::testing::WithParamInterface<SiteRow> {};

TEST_P(GridOfASampleSite, IsThatOfItsStoredLinesCellByCell) {
  UseSite(GetParam().site);
  Show(GetParam().config);
  ExpectGrid(GetParam().expected());
}

INSTANTIATE_TEST_SUITE_P(
    Configurations, GridOfASampleSite,
    ::testing::Values(SiteRow{"plain", 1, Configuration1}, SiteRow{"plain", 2, Configuration2},
                      SiteRow{"plain", 3, Configuration3}, SiteRow{"plain", 4, Configuration4},
                      SiteRow{"indexed", 1, Configuration1}, SiteRow{"indexed", 2, Configuration2},
                      SiteRow{"indexed", 3, Configuration3}, SiteRow{"indexed", 4, Configuration4},
                      SiteRow{"plain2003", 1, Configuration1},
                      SiteRow{"plain2003", 2, Configuration2},
                      SiteRow{"plain2003", 3, Configuration3},
                      SiteRow{"plain2003", 4, Configuration4}));

TEST_F(Loading, FormatsTheGridWithNineHiddenAndElevenVisibleColumns) {
  UseSite("plain");
  Show(3);
  const std::vector<Twips> widths = {0,    0,    0,    0,   0,    0,    0,    0,    0,    500,
                                     1300, 1200, 1500, 800, 1500, 1100, 1100, 1200, 1000, 1800};
  constexpr TextView kCaptions[] = {
      u"Line Type",  u"Partition",  u"Starting Node", u"Starting Node", u"Volume",
      u"Mode",       u"Mode",       u"Impedance",     u"Soft Stop",     u"Line",
      u"Line Type",  u"Partition",  u"Starting Node", u"Volume",        u"Mode",
      u"NIS Option", u"EWT Option", u"Impedance",     u"Soft Stop",     u"Label"};
  ASSERT_EQ(grid().ColumnCount(), 20);
  Twips left = 0;
  for (int column = 1; column <= 20; ++column) {
    EXPECT_EQ(Caption(column), kCaptions[column - 1]) << column;
    EXPECT_EQ(grid().ColumnWidth(column), widths[static_cast<size_t>(column - 1)]) << column;
    EXPECT_EQ(grid().ColumnLeft(column), left) << column;
    left += grid().ColumnWidth(column);
  }
}

TEST_F(Loading, KeysTheRowsByTheirRunningNumber) {
  UseSite("plain");
  Show(1);
  for (int row = 1; row <= 10; ++row) EXPECT_EQ(grid().Key(row), u"a" + Decimal(row));
}

TEST_F(Loading, SelectsNoRowAndLeavesNothingPending) {
  UseSite("plain");
  Show(1);
  EXPECT_EQ(grid().SelectedItem(), std::nullopt);
  EXPECT_FALSE(form().cmdApply.Enabled());
  EXPECT_TRUE(form().fraConfiguration.Enabled());
}

TEST_F(Loading, LeavesNothingPendingOfWhatWasAndNoEditorOpen) {
  UseSite("plain");
  Show(1);
  Click(1, column::kVolume);
  ASSERT_TRUE(form().cmbVolume.Visible());
  ASSERT_TRUE(form().cmdApply.Enabled());
  ASSERT_TRUE(control().ShowControl(3));
  EXPECT_FALSE(form().cmdApply.Enabled());
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
}

TEST_F(Loading, AConfigurationWithoutLinesGetsEightHybridLinesAndMusicOnHold9And11Stored) {
  for (const char* site : {"plain", "indexed"}) {
    UseSite(site);
    Show(2);
    ExpectGrid(Configuration2());
    EXPECT_THAT(StoredLines(2), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 11)) << site;

    // Read back, the mode of a music-on-hold line is shown without its number.
    ExpectedGrid read_back = Configuration2();
    for (ExpectedRow& row : read_back) {
      if (row[0] == u"8") row[column::kMode - 1] = u"Continuous";
    }
    Show(2);
    ExpectGrid(read_back);
  }
}

TEST_F(Loading, AUnitThatBeginsWithAMusicOnHoldLine0IsNoEmptyOne) {
  UseSite("plain");
  for (int line = 3; line <= 12; ++line) DeleteLine(Decimal(line));
  Store(u"LineType", u"8", u"1");
  Store(u"Line", u"0", u"1");
  const std::vector<Text> lines = AllStoredLines(3);
  const std::vector<Text> cards = StoredCards(3);
  Create();
  control().ShowControl(3);
  EXPECT_EQ(AllStoredLines(3), lines);
  EXPECT_EQ(StoredCards(3), cards);
}

TEST_F(Loading, AUnitOfWhichOnlyAHiddenLineIsStoredIsNoEmptyOne) {
  UseSite("plain");
  for (int line = 1; line <= 12; ++line) {
    if (line != 10) DeleteLine(Decimal(line));
  }
  const std::vector<Text> cards = StoredCards(3);
  Show(3);
  EXPECT_EQ(grid().RowCount(), 0);
  EXPECT_THAT(StoredLines(3), ElementsAre(10));
  EXPECT_EQ(StoredCards(3), cards);
}

TEST_F(Loading, ADefaultUnitIsStoredWithItsCodesNamesAndZeroOptions) {
  UseSite("plain");
  Show(2);
  EXPECT_EQ(StoredLine(2, 3),
            u"Only one,1,Message 3,0,3,High,128,Ring=1,1,1,,0,0,0,6,0,0,0,0,0,2,1,1,3");
  EXPECT_EQ(
      StoredLine(2, 11),
      u"Only one,1,Music 2,11,2,Above medium,6,Continuous=1,17,1,,0,0,0,8,0,0,0,0,0,2,1,1,11");
}

TEST_F(Loading, AnEmptyUnitHasItsCardRowRewrittenAndNoOtherCard) {
  UseSite("plain");
  const std::vector<Text> before = StoredCards(2);
  Show(2);
  EXPECT_THAT(before, ElementsAre(u"2,1,1,Slot 1,Hybrid Line Card,7,0,HL-412-07,49",
                                  u"2,2,3,Slot 12,Network Card,4,0,NC-001-00,49"));
  EXPECT_THAT(StoredCards(2), ElementsAre(u"2,1,1,Slot 1,Hybrid Line,6,0,,0", before[1]));
}

TEST_F(Loading, AStoredUnitHasNothingRewritten) {
  UseSite("plain");
  const std::vector<Text> lines = AllStoredLines(1);
  const std::vector<Text> cards = StoredCards(1);
  Show(1);
  EXPECT_EQ(AllStoredLines(1), lines);
  EXPECT_EQ(StoredCards(1), cards);
}

TEST_F(Loading, AMusicOnHoldPairShowsItsFirstLineOnly) {
  UseSite("plain");
  Show(1);
  EXPECT_THAT(Lines(), ElementsAre(u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"11"));
}

TEST_F(Loading, SoftStop2ShowsDisabledWithTheHiddenCode0OnEveryLineType) {
  UseSite("plain");
  Show(4);
  EXPECT_EQ(Cell(1, column::kSoftStopCode), u"0");
  EXPECT_EQ(Cell(1, column::kSoftStop), u"Disabled");
  EXPECT_EQ(Cell(6, column::kSoftStopCode), u"0");  // an impedance line
  EXPECT_EQ(Cell(6, column::kSoftStop), u"N/A");
}

TEST_F(Loading, Volume128ShowsHighOnEveryLineType) {
  UseSite("plain");
  Store(u"Volume_ID", u"128", u"9");
  Show(3);
  EXPECT_EQ(Cell(2, column::kVolume), u"High");
  EXPECT_EQ(Cell(9, column::kVolume), u"High");
}

TEST_F(Loading, Volume0OfAMusicOnHoldLineIsCaptionedByTheSettingsFile) {
  UseSite("plain");
  Store(u"Volume_ID", u"0", u"9");
  Show(3);
  EXPECT_EQ(Cell(9, column::kVolume), u"Off");
}

TEST_F(Loading, WithoutASettingsFileAMusicOnHoldVolumeShowsItsNumber) {
  UseSite("plain", "");
  Show(3);
  EXPECT_EQ(Cell(9, column::kVolume), u"6");
}

TEST_F(Loading, ANumberOf0AndAModeWithoutNumberShowTheBareModeName) {
  UseSite("plain");
  Show(4);
  EXPECT_EQ(Cell(1, column::kMode), u"Ring");
  EXPECT_EQ(Cell(4, column::kMode), u"Channel");  // mode 28 has the number 6 stored
  EXPECT_EQ(Cell(4, column::kModeNumber), u"6");
}

TEST_F(Loading, AnUnknownLineTypeTakesThatOfTheLineBeforeAndSoDoesNull) {
  UseSite("plain");
  Store(u"LineType", std::nullopt, u"2");
  Store(u"LineType", u"4", u"3");
  Store(u"LineType", u"5", u"1");
  Show(3);
  EXPECT_EQ(Cell(2, column::kLineTypeCode), u"5");
  EXPECT_EQ(Cell(3, column::kLineTypeCode), u"5");
  EXPECT_EQ(Cell(4, column::kLineTypeCode), u"6");
}

TEST_F(Loading, AFirstLineOfUnknownTypeHasNoTypeToTakeAndFails) {
  UseSite("plain");
  Store(u"LineType", u"7", u"1");
  Create();
  EXPECT_FALSE(control().ShowControl(3));
  EXPECT_THAT(Messages(),
              ElementsAre(CriticalError(u"Error Description:Invalid procedure call or argument\r\n"
                                        u"Error Source: TLV_RDV_Line_Config - LoadData")));
}

TEST_F(Loading, ANullNumberFailsAndANullLabelIsEmpty) {
  UseSite("plain");
  Store(u"Description", std::nullopt, u"1");
  Show(3);
  EXPECT_EQ(Cell(1, column::kLabel), u"");

  for (const TextView field : {u"Partition_ID", u"Starting_Node_Type_ID", u"Starting_Node_Number",
                               u"Volume_ID", u"Mode_Type_ID", u"Mode_Ring_Number", u"NIS_Option",
                               u"RTQA_Option", u"Impedance", u"SoftStop"}) {
    UseSite("plain");
    Store(field, std::nullopt, u"2");
    Create();
    EXPECT_FALSE(control().ShowControl(3)) << ToUtf8(field);
    EXPECT_THAT(Messages(),
                ElementsAre(CriticalError(u"Error Description:Invalid use of Null\r\n"
                                          u"Error Source: TLV_RDV_Line_Config - LoadData")))
        << ToUtf8(field);
    EXPECT_EQ(grid().RowCount(), 1) << ToUtf8(field);
  }
}

TEST_F(Loading, ANullAcdOptionIsNoFailure) {
  UseSite("plain");
  Store(u"ACD_Option", std::nullopt, u"1");
  Show(3);
  EXPECT_EQ(grid().RowCount(), 10);
}

TEST_F(Loading, ANotInstalledLineReadsNothingButItsNumberAndType) {
  UseSite("plain");
  for (const TextView field : {u"Partition_ID", u"Volume_ID", u"SoftStop", u"NIS_Option"}) {
    Store(field, std::nullopt, u"5");
  }
  Show(3);
  ExpectGrid(Configuration3());
}

TEST_F(Loading, MissingMusicOnHoldLinesAreFilledWithNotInstalledOnes) {
  UseSite("plain");
  for (const TextView line : {u"9", u"10", u"11", u"12"}) DeleteLine(line);
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"11"));
  EXPECT_EQ(Cell(9, column::kLineType), u"Not Installed");
  EXPECT_EQ(Cell(10, column::kLineType), u"Not Installed");
  EXPECT_THAT(StoredLines(3), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(Loading, TheFillLeavesOutALineThatARowShowsAlready) {
  UseSite("plain");
  for (const TextView line : {u"1", u"2", u"3", u"5", u"6", u"7", u"8", u"10", u"11", u"12"}) {
    DeleteLine(line);
  }
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"4", u"9", u"11"));
  EXPECT_EQ(Cell(2, column::kLineType), u"MOH Line");
  EXPECT_EQ(Cell(3, column::kLineType), u"Not Installed");
}

TEST_F(Loading, TheFillLeavesOutAStoredLineThatNoRowShows) {
  UseSite("plain");
  for (const TextView line : {u"11", u"12"}) DeleteLine(line);
  const Text partner = StoredLine(3, 10);
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9"));
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredLine(3, 10), partner);
}

// The second line of a pair takes the count along, however few rows there are.
TEST_F(Loading, APairEndsTheFillBeforeLine11) {
  UseSite("plain");
  for (const TextView line : {u"1", u"2", u"3", u"5", u"6", u"7", u"8", u"11", u"12"}) {
    DeleteLine(line);
  }
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"4", u"9"));
}

TEST_F(Loading, TenCountedRowsAreFilledUpToLine10) {
  UseSite("plain");
  for (const TextView line : {u"10", u"11", u"12"}) DeleteLine(line);
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10"));
  EXPECT_EQ(Cell(10, column::kLineType), u"Not Installed");
}

TEST_F(Loading, ARowWhoseKeyIsTakenIsLeftOutAndCounted) {
  // Line 5 is not installed and is keyed by its number, a5, as the third row; so the second hybrid
  // line after it finds its own running number taken.
  UseSite("plain");
  for (const TextView line : {u"1", u"2"}) DeleteLine(line);
  for (const TextView line : {u"6", u"7"}) Store(u"LineType", u"6", line);
  Show(3);
  EXPECT_THAT(Lines(), ElementsAre(u"3", u"4", u"5", u"6", u"8", u"9", u"11"));
  EXPECT_EQ(grid().FindRow(u"a5"), 3);
}

TEST_F(Loading, ASecondConfigurationReplacesTheRowsOfTheFirst) {
  UseSite("plain");
  Show(1);
  ASSERT_TRUE(control().ShowControl(3));
  ExpectGrid(Configuration3());
  EXPECT_EQ(control().BusinessRules().ConfigID, 3);
}

TEST_F(Loading, TheSecondLoadKeepsEachListButForTheLineTypesWhichPileUp) {
  UseSite("plain");
  Show(1);
  const int node_numbers = form().cmbStartingNodeNumber.ListCount();
  ASSERT_TRUE(control().ShowControl(1));
  EXPECT_EQ(grid().ColumnCount(), 20);
  EXPECT_EQ(form().cmbLineType.ListCount(), 8);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), node_numbers);
  EXPECT_EQ(form().cmbPartition.ListCount(), 3);
  EXPECT_EQ(form().cmbRDVType.ListCount(), 3);
}

// It waits five seconds each time: four of the lists ask for the file.
TEST_F(Loading, AFileThatOthersUseIsWaitedForOnceAndReportedForEachList) {
  UseSite("plain");
  int waits = 0;
  const SiteInPlace busy(GetSuiteFolder(), [&]() -> std::unique_ptr<Connection> {
    ++waits;
    throw RuntimeError(-2147467259, u"Could not use 'NewDB.mdb'; file already in use.",
                       u"Microsoft JET Database Engine");
  });
  Create();
  EXPECT_FALSE(control().ShowControl(1));
  EXPECT_EQ(waits, 1);
  const auto messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  for (const char* list : {"Load_List_of_All_Card_Types", "Load_List_of_All_Node_Names",
                           "Load_List_of_All_mode_Names", "LoadPartitionNameToCombo"}) {
    EXPECT_THAT(ToUtf8(messages.front().text),
                ::testing::HasSubstr(
                    std::string("Error Description:Could not use 'NewDB.mdb'; file already in "
                                "use.\r\nError Source: Microsoft JET Database Engine - ") +
                    list));
  }
  // The next attempt is one of its own.
  EXPECT_FALSE(control().ShowControl(1));
  EXPECT_EQ(waits, 2);
}

TEST_F(Loading, AnyOtherFailureIsThatOfItsOwnList) {
  UseSite("plain");
  int attempts = 0;
  const SiteInPlace broken(GetSuiteFolder(), [&]() -> std::unique_ptr<Connection> {
    ++attempts;
    throw RuntimeError(-2147467259, u"Not a valid password.", u"Microsoft JET Database Engine");
  });
  Create();
  EXPECT_FALSE(control().ShowControl(1));
  EXPECT_GE(attempts, 4);
}

}  // namespace
}  // namespace rdv::test
