// Apply, OK and Cancel.
#include <gmock/gmock.h>

#include "data/database.h"
#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Message kQuestion{u"Do you want to save changes?", 35, Text(u"Save")};

class Saving : public ControlTest {
 protected:
  void Show(int16_t config) {
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(config));
  }

  void MakeApplyFail() {
    grid().SetCell(2, column::kLabel, Text(256, u'x'));  // the column takes 255
    form().cmdApply.SetEnabled(true);
  }

  void DeleteLine(TextView line) {
    CurrentSite().Execute(
        u"DELETE FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND "
        u"Base_Slot_No = 1 AND Slot_Offset = 1 AND Line = `Given_Line`",
        {u"3", Text(line)});
  }
};

TEST_F(Saving, ApplyWhileDisabledWritesNothingAndLeavesThePointerAtItsDefault) {
  Show(1);
  const auto stored = AllStoredLines(1);
  grid().SetCell(1, column::kLabel, u"changed");
  form().cmdApply.on_click();
  EXPECT_EQ(AllStoredLines(1), stored);
  EXPECT_EQ(form().screen.Pointer(), MousePointer::Default);
  EXPECT_FALSE(form().cmdApply.Enabled());
}

TEST_F(Saving, ApplyWritesTheRowsAndNothingIsPendingAfterwards) {
  Show(1);
  Click(2, column::kLabel);
  Paste(form().txtLabel, u"New label");
  ASSERT_TRUE(form().cmdApply.Enabled());
  Press(form().cmdApply);
  EXPECT_FALSE(form().cmdApply.Enabled());
  EXPECT_FALSE(form().txtLabel.Visible());
  EXPECT_EQ(form().screen.Pointer(), MousePointer::Default);
  EXPECT_EQ(StoredLine(1, 2),
            u"Sales,2,Queue 12,2,12,Low,0,Ring Count=4,25,4,New label,5,30,1,6,3,1,0,0,0,1,1,1,2");
}

TEST_F(Saving, WhatIsSavedIsShownTheSameAgain) {
  for (const int16_t config : {int16_t{1}, int16_t{3}, int16_t{4}}) {
    Show(config);
    form().cmdApply.SetEnabled(true);
    const auto shown = Rows();
    Press(form().cmdApply);
    EXPECT_THAT(Messages(), IsEmpty());
    ASSERT_TRUE(control().ShowControl(config));
    EXPECT_EQ(Rows(), shown) << config;
  }
}

TEST_F(Saving, KeepsTheAcdOptionAndZeroesTheReservedFields) {
  Show(1);
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredField(1, 3, u"ACD_Option"), u"2");
  EXPECT_EQ(StoredField(1, 2, u"ACD_Option"), u"1");
  EXPECT_EQ(StoredField(1, 1, u"ACD_Option"), u"0");
  for (const TextView reserved : {u"rsvd1", u"rsvd2", u"rsvd3"}) {
    EXPECT_EQ(StoredField(1, 2, reserved), u"0");
  }
}

TEST_F(Saving, AnAcdOptionIsNotKeptForAnotherConfiguration) {
  Show(1);  // line 3 has 2
  CurrentSite().Execute(
      u"UPDATE Used_Lines SET ACD_Option = `a` WHERE Config_ID = 3 AND Base_Slot_No = 1 AND "
      u"Slot_Offset = 1 AND Line = 3",
      {std::nullopt});
  ASSERT_TRUE(control().ShowControl(3));
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredField(3, 3, u"ACD_Option"), u"0");
}

TEST_F(Saving, ANotInstalledLineIsStoredAsSuchWhateverItsCellsHold) {
  Show(1);
  grid().SetCell(7, column::kLabel, u"none of the user's");
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredField(1, 7, u"Description"), u"");
}

TEST_F(Saving, AnAcdOptionBelongsToItsLineAlsoAfterRestoringTheDefault) {
  Show(1);
  Press(form().cmdShowDefaults);
  Press(form().cmdApply);
  EXPECT_EQ(StoredField(1, 3, u"ACD_Option"), u"2");
  EXPECT_EQ(StoredField(1, 3, u"Description"), u"");
}

TEST_F(Saving, DisabledAndNotApplicableOptionsAreStoredAs0) {
  Show(1);
  grid().SetCell(1, column::kNISOption, u"dISABLED");
  grid().SetCell(1, column::kEWTOption, u"n/a");
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredField(1, 1, u"NIS_Option"), u"0");
  EXPECT_EQ(StoredField(1, 1, u"RTQA_Option"), u"0");
  EXPECT_EQ(StoredField(1, 4, u"NIS_Option"), u"99");
}

TEST_F(Saving, ANotInstalledLineIsStoredWithTheNotInstalledValues) {
  Show(1);
  grid().SetSelected(2, true);
  SelectCode(form().cmbLineType, 1);
  Press(form().cmdApply);
  EXPECT_EQ(StoredLine(1, 2), u"N/A,1,N/A,999,-1,N/A,0,N/A,1,1,,0,0,1,1,0,0,0,0,0,1,1,1,2");
}

TEST_F(Saving, LinesOfOtherSlotsPartnersAndCardsAreNotTouched) {
  Show(1);
  const auto cards = StoredCards(1);
  const auto others = StoredLinesOfOtherSlots(1);
  const Text partner = StoredLine(1, 10);
  ASSERT_THAT(others, SizeIs(8));
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_EQ(StoredCards(1), cards);
  EXPECT_EQ(StoredLinesOfOtherSlots(1), others);
  EXPECT_EQ(StoredLine(1, 10), partner);
}

TEST_F(Saving, AMissingMusicOnHoldLineIsInsertedWithItsPartnerBeforeItIsUpdated) {
  UseSite("plain");
  for (const TextView line : {u"9", u"10", u"11", u"12"}) DeleteLine(line);
  Create();
  ASSERT_TRUE(control().ShowControl(3));
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(StoredLines(3), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
  // Lines 9 and 11 are shown as not installed and are updated to that; the partners stay as made.
  EXPECT_EQ(StoredField(3, 9, u"LineType"), u"1");
  EXPECT_EQ(StoredLine(3, 10),
            u"North,1,Music,11,1,6,6,Continuous,17,1,,0,0,0,8,0,0,0,0,0,3,1,1,10");
  EXPECT_EQ(StoredLine(3, 12),
            u"North,1,Music,11,2,6,6,Continuous,17,1,,0,0,0,8,0,0,0,0,0,3,1,1,12");
}

TEST_F(Saving, AnotherLineThatIsGoneMeanwhileIsNotInserted) {
  Show(3);
  DeleteLine(u"2");
  form().cmdApply.SetEnabled(true);
  Press(form().cmdApply);
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(StoredLines(3), ElementsAre(1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

TEST_F(Saving, ARestoredUnitFillsInTheMusicOnHoldLinesThatAreMissing) {
  UseSite("plain");
  for (const TextView line : {u"11", u"12"}) DeleteLine(line);
  Create();
  ASSERT_TRUE(control().ShowControl(3));
  Press(form().cmdShowDefaults);
  const auto shown = Rows();
  Press(form().cmdApply);
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_EQ(StoredLine(3, 11),
            u"North,1,Music 2,11,2,Above medium,6,Continuous=1,17,1,,0,0,0,8,0,0,0,0,0,3,1,1,11");
  ASSERT_TRUE(control().ShowControl(3));
  EXPECT_EQ(grid().RowCount(), 10);
}

TEST_F(Saving, APartnerThatIsStoredWithoutItsLineEndsTheFirstApplyWithTheLineInserted) {
  Show(4);  // line 12 is there, line 11 is not
  Press(form().cmdShowDefaults);
  Press(form().cmdApply);
  ASSERT_THAT(Messages(), SizeIs(1));
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(StoredField(4, 11, u"Volume_Name"), u"6");
  Press(form().cmdApply);
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_FALSE(form().cmdApply.Enabled());
  EXPECT_EQ(StoredField(4, 12, u"Description"), u"Second of a pair, first is missing");
}

TEST_F(Saving, AFailureShowsTheValuesOfItsLineAndLeavesTheRestPending) {
  Show(1);
  MakeApplyFail();
  grid().SetCell(1, column::kLabel, u"written before");
  grid().SetCell(3, column::kLabel, u"not reached");
  Press(form().cmdApply);
  EXPECT_THAT(
      Messages(),
      ElementsAre(PlainMessage(
          u"Error Description:The field is too small to accept the amount of data you attempted to "
          u"add. Try inserting or pasting less data.\r\n"
          u"Error Source: Microsoft JET Database Engine - cmdApply_Click\r\n"
          u"Sales,2,Queue 12,2,12,Low,0,Ring Count=4,25,4," +
          Text(256, u'x') + u",5,30,1,6,3,1,0,0,0,1,1,1,2")));
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(form().screen.Pointer(), MousePointer::Default);
  EXPECT_EQ(StoredField(1, 1, u"Description"), u"written before");
  EXPECT_EQ(StoredField(1, 2, u"Description"), u"Sales \u2013 group A");
  EXPECT_EQ(StoredField(1, 3, u"Description"), u"O'Brien \"direct\"");
}

TEST_F(Saving, AnOptionTheColumnCannotHoldIsReported) {
  Show(1);
  Click(2, column::kEWTOption);
  Paste(form().txtEWTOption, u"40000");
  Press(form().cmdApply);
  ASSERT_THAT(Messages(), SizeIs(1));
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(StoredField(1, 2, u"RTQA_Option"), u"30");
}

TEST_F(Saving, OkAfterASuccessfulApplyRaisesRemoveMeOnce) {
  Show(1);
  form().cmdApply.SetEnabled(true);
  Press(form().cmdOK);
  EXPECT_EQ(Removals(), 1);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Saving, OkWithNothingPendingRaisesRemoveMeAndWritesNothing) {
  Show(1);
  const auto stored = AllStoredLines(1);
  Press(form().cmdOK);
  EXPECT_EQ(Removals(), 1);
  EXPECT_EQ(AllStoredLines(1), stored);
}

TEST_F(Saving, OkAfterAFailedApplyRaisesNoRemoveMe) {
  Show(1);
  MakeApplyFail();
  Press(form().cmdOK);
  EXPECT_EQ(Removals(), 0);
  EXPECT_THAT(Messages(), SizeIs(1));
}

TEST_F(Saving, CancelWithNothingPendingAsksNothing) {
  Show(1);
  Press(form().cmdCancel);
  EXPECT_EQ(Removals(), 1);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Saving, CancelAnsweredYesRaisesRemoveMeTwiceAfterASuccessfulApply) {
  Show(1);
  grid().SetCell(1, column::kLabel, u"saved");
  form().cmdApply.SetEnabled(true);
  Answer(MessageAnswer::Yes);
  Press(form().cmdCancel);
  EXPECT_THAT(Messages(), ElementsAre(kQuestion));
  EXPECT_EQ(Removals(), 2);
  EXPECT_EQ(StoredField(1, 1, u"Description"), u"saved");
}

TEST_F(Saving, CancelAnsweredYesRaisesRemoveMeOnceAfterAFailedApply) {
  Show(1);
  MakeApplyFail();
  Answer(MessageAnswer::Yes);
  Press(form().cmdCancel);
  EXPECT_THAT(Messages(), SizeIs(2));
  EXPECT_EQ(Removals(), 1);
}

TEST_F(Saving, CancelAnsweredNoRaisesRemoveMeAndWritesNothing) {
  Show(1);
  const auto stored = AllStoredLines(1);
  grid().SetCell(1, column::kLabel, u"dropped");
  form().cmdApply.SetEnabled(true);
  Answer(MessageAnswer::No);
  Press(form().cmdCancel);
  EXPECT_EQ(Removals(), 1);
  EXPECT_EQ(AllStoredLines(1), stored);
}

TEST_F(Saving, CancelAnsweredCancelKeepsTheEdits) {
  Show(1);
  grid().SetCell(1, column::kLabel, u"kept");
  form().cmdApply.SetEnabled(true);
  Answer(MessageAnswer::Cancel);
  Press(form().cmdCancel);
  EXPECT_EQ(Removals(), 0);
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(Cell(1, column::kLabel), u"kept");
}

}  // namespace
}  // namespace rdv::test
