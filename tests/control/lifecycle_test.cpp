// The control's life between its creation and its removal, and what it tells host and user.
#include <gmock/gmock.h>

#include <fstream>
#include <memory>

#include "runtime/error.h"
#include "tests/support/control_fixture.h"
#include "widgets/memory/memory_form.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class Lifecycle : public ControlTest {
 protected:
  void MakeLoadDataFail() {
    CurrentSite().Execute(
        u"UPDATE Used_Lines SET Partition_ID = `Given_PartID` WHERE Config_ID = `Given_ConfigID` "
        u"AND Base_Slot_No = 1 AND Slot_Offset = 1 AND Line = `Given_Line`",
        {u"99", u"3", u"2"});
  }

  void DeleteCardType(TextView id) {
    CurrentSite().Execute(u"DELETE FROM SR_Card_Type_Names WHERE ID = `Given_ID`", {Text(id)});
  }
};

TEST_F(Lifecycle, AFreshControlHasHiddenEditorsAndNothingPending) {
  UseSite("plain");
  Create();
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
  EXPECT_FALSE(form().cmdApply.Enabled());
  EXPECT_TRUE(form().fraConfiguration.Enabled());
  EXPECT_EQ(control().BusinessRules().ConfigID, 0);
  EXPECT_EQ(control().BusinessRules().PartitionID, 0);
}

TEST_F(Lifecycle, FailingLineLoadingShowsItsBlockKeepsApplyAndEnablesTheFrame) {
  UseSite("plain");
  MakeLoadDataFail();
  for (const bool pending : {false, true}) {
    Create();
    form().cmdApply.SetEnabled(pending);
    EXPECT_FALSE(control().ShowControl(3));
    EXPECT_THAT(Messages(), ElementsAre(CriticalError(
                                u"Error Description:Invalid procedure call or argument\r\n"
                                u"Error Source: TLV_RDV_Line_Config - LoadData")));
    EXPECT_EQ(form().cmdApply.Enabled(), pending);
    EXPECT_TRUE(form().fraConfiguration.Enabled());
  }
}

TEST_F(Lifecycle, TwoFailingLoadersShareOneBoxWithBothBlocksInOrder) {
  UseSite("broken/10-missing-table");
  DeleteCardType(u"8");
  Create();
  EXPECT_FALSE(control().ShowControl(1));
  EXPECT_THAT(
      Messages(),
      ElementsAre(CriticalError(
          u"\r\nError Description:The Microsoft Jet database engine cannot find the input table or "
          u"query 'SR_Mode_Type_Names'. Make sure it exists and that its name is spelled "
          u"correctly.\r\n"
          u"Error Source: Microsoft JET Database Engine - Load_List_of_All_mode_Names"
          u"Error Description:Invalid procedure call or argument\r\n"
          u"Error Source: TLV_RDV_Line_Config - LoadLineTypeToCombo")));
}

TEST_F(Lifecycle, AMissingCardTypeFailsTheWholeLoad) {
  for (const TextView code : {u"5", u"6", u"8"}) {
    UseSite("plain");
    DeleteCardType(code);
    Create();
    EXPECT_FALSE(control().ShowControl(1));
    EXPECT_THAT(Messages(), ElementsAre(CriticalError(
                                u"Error Description:Invalid procedure call or argument\r\n"
                                u"Error Source: TLV_RDV_Line_Config - LoadLineTypeToCombo")));
    EXPECT_EQ(grid().RowCount(), 0);
  }
}

TEST_F(Lifecycle, WithoutADatabaseEveryLoaderThatNeedsItIsOnRecord) {
  UseSite("");
  Create();
  EXPECT_FALSE(control().ShowControl(1));
  const Text not_found = u"Error Description:Could not find file '" +
                         FromUtf8(CurrentSite().DatabaseFile().string()) +
                         u"'.\r\nError Source: Microsoft JET Database Engine - ";
  const Text no_card_type =
      u"Error Description:Invalid procedure call or argument\r\n"
      u"Error Source: TLV_RDV_Line_Config - LoadLineTypeToCombo";
  EXPECT_THAT(Messages(),
              ElementsAre(CriticalError(u"\r\n" + not_found + u"Load_List_of_All_Card_Types\r\n" +
                                        not_found + u"Load_List_of_All_Node_Names\r\n" + not_found +
                                        u"Load_List_of_All_mode_Names" + no_card_type + not_found +
                                        u"LoadPartitionNameToCombo")));
  EXPECT_EQ(grid().RowCount(), 0);
  EXPECT_TRUE(form().fraConfiguration.Enabled());
}

struct BrokenSiteRow {
  const char* site;
  int16_t config;
  // What the box says; empty where the fault is not met and the grid is shown.
  const char* error;
};

class BrokenSite : public Lifecycle, public ::testing::WithParamInterface<BrokenSiteRow> {};

TEST_P(BrokenSite, EndsInOneErrorBoxOrInALoadedGrid) {
  UseSite(GetParam().site);
  Create();
  const std::string expected = GetParam().error;
  EXPECT_EQ(control().ShowControl(GetParam().config), expected.empty());
  EXPECT_TRUE(form().fraConfiguration.Enabled());
  EXPECT_FALSE(form().cmdApply.Enabled());
  if (expected.empty()) {
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(grid().RowCount(), 10);
  } else {
    const std::vector<Message> messages = Messages();
    ASSERT_THAT(messages, SizeIs(1));
    EXPECT_EQ(messages[0].title, u"Error");
    EXPECT_EQ(messages[0].style, 16);
    EXPECT_THAT(ToUtf8(messages[0].text), HasSubstr("Error Description:" + expected));
    EXPECT_EQ(grid().RowCount(), 0);
  }
}

constexpr const char* kNoDatabase = "Unrecognized database format '";
constexpr const char* kDamaged = "Cannot open database '";

INSTANTIATE_TEST_SUITE_P(
    Files, BrokenSite,
    ::testing::Values(BrokenSiteRow{"broken/01-cut-in-header", 1, kNoDatabase},
                      BrokenSiteRow{"broken/02-cut-in-page", 1, kNoDatabase},
                      BrokenSiteRow{"broken/03-no-bytes", 1, kNoDatabase},
                      BrokenSiteRow{"broken/04-text-file", 1, kNoDatabase},
                      BrokenSiteRow{"broken/05-random-header", 1, kNoDatabase},
                      BrokenSiteRow{"broken/06-catalog-overwritten", 1, kDamaged},
                      BrokenSiteRow{"broken/07-pointer-out-of-range", 1, ""},
                      BrokenSiteRow{"broken/08-cyclic-index", 1, ""},
                      BrokenSiteRow{"broken/09-row-offset-outside", 1, kDamaged},
                      BrokenSiteRow{"broken/10-missing-table", 1,
                                    "The Microsoft Jet database engine cannot find the input table "
                                    "or query 'SR_Mode_Type_Names'. "}));

TEST_F(Lifecycle, ATextFileInPlaceOfTheDatabaseIsNamedInEveryBlock) {
  UseSite("broken/04-text-file");
  Create();
  EXPECT_FALSE(control().ShowControl(1));
  const std::vector<Message> messages = Messages();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_THAT(ToUtf8(messages[0].text),
              StartsWith("\r\nError Description:Unrecognized database format '" +
                         CurrentSite().DatabaseFile().string() + "'."));
  EXPECT_THAT(ToUtf8(messages[0].text), EndsWith(" - LoadPartitionNameToCombo"));
}

TEST_F(Lifecycle, ALoadThatFailsAfterOneThatWorkedShowsNoLinesOfTheEarlierOne) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  std::filesystem::remove(CurrentSite().DatabaseFile());
  EXPECT_FALSE(control().ShowControl(3));
  EXPECT_EQ(grid().RowCount(), 0);
  CurrentSite().UseDatabase("plain");
  EXPECT_TRUE(control().ShowControl(3));
  EXPECT_EQ(grid().RowCount(), 10);
}

// A frame that fails where the control has no loader to blame.
class FailingFrame : public Frame {
 public:
  bool Visible() const override { return true; }
  void SetVisible(bool) override {}
  bool Enabled() const override { return enabled_; }
  void SetEnabled(bool enabled) override {
    if (enabled) Raise(LanguageError::ObjectVariableNotSet);
    enabled_ = enabled;
  }
  bool Focused() const override { return false; }
  void SetFocus() override {}

 private:
  bool enabled_ = true;
};

TEST_F(Lifecycle, AFailureOfShowControlItselfIsShownAtOnceAndLeavesTheFrameDisabled) {
  UseSite("plain");
  FailingFrame frame;
  ucRDVLineConfig control(Replace(form(), {.fraConfiguration = &frame}));
  EXPECT_FALSE(control.ShowControl(1));
  EXPECT_THAT(Messages(), ElementsAre(CriticalError(
                              u"Error Description:Object variable or With block variable not set"
                              u"\r\nError Source: TLV_RDV_Line_Config - ShowControl")));
  EXPECT_FALSE(frame.Enabled());
}

struct UnitTypeRow {
  int16_t line1;
  int16_t line5;
  TextView text;  // "" where the box is left as it is
};

class AssignedUnitType : public Lifecycle, public ::testing::WithParamInterface<UnitTypeRow> {};

TEST_P(AssignedUnitType, FollowsTheLineTypesOfLines1And5) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  form().cmbRDVType.SetText(u"as it was");
  control().AssignIndextoDefaultBox(GetParam().line1, GetParam().line5);
  const TextView text = GetParam().text.empty() ? TextView(u"as it was") : GetParam().text;
  EXPECT_EQ(form().cmbRDVType.Text(), text);
  const int index = form().cmbRDVType.ListIndex();
  EXPECT_EQ(index >= 0 ? form().cmbRDVType.List(index) : Text(u"as it was"), text);
}

INSTANTIATE_TEST_SUITE_P(Pairs, AssignedUnitType,
                         ::testing::Values(UnitTypeRow{5, 5, u"8 Impedance Lines 2 MOH Lines"},
                                           UnitTypeRow{5, 6, u""}, UnitTypeRow{5, 1, u""},
                                           UnitTypeRow{6, 6, u"8 Hybrid Lines 2 MOH Lines"},
                                           UnitTypeRow{6, 5, u"4 Hybrid Lines 2 MOH Lines"},
                                           UnitTypeRow{6, 1, u"4 Hybrid Lines 2 MOH Lines"},
                                           UnitTypeRow{6, 8, u"4 Hybrid Lines 2 MOH Lines"},
                                           UnitTypeRow{1, 1, u""}, UnitTypeRow{8, 8, u""},
                                           UnitTypeRow{1, 6, u""}, UnitTypeRow{-1, 5, u""}));

TEST_F(Lifecycle, AssigningBeforeTheListsAreLoadedSetsTheTextAllTheSame) {
  UseSite("plain");
  Create();
  control().AssignIndextoDefaultBox(6, 1);
  EXPECT_EQ(form().cmbRDVType.Text(), u"4 Hybrid Lines 2 MOH Lines");
  EXPECT_EQ(form().cmbRDVType.ListIndex(), -1);
}

TEST_F(Lifecycle, RestoringTheDefaultBeforeTheColumnsAreMadeIsReportedForEachLineAndAddsNoRow) {
  UseSite("plain");
  Create();
  Press(form().cmdShowDefaults);
  EXPECT_EQ(grid().RowCount(), 0);
  EXPECT_THAT(Messages(), SizeIs(11));
}

TEST_F(Lifecycle, ShowingAllEditorsLeavesTheLineTypeInvisible) {
  UseSite("plain");
  ShowEditors(form(), true);
  for (const Editor* editor : form().Editors()) {
    EXPECT_EQ(editor->Visible(), editor != &form().cmbLineType);
  }
  ShowEditors(form(), false);
  for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
}

TEST_F(Lifecycle, EveryListHasItsDropDownWidth) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  const Form& f = form();
  for (ComboBox* wide : {&f.cmbLineType, &f.cmbPartition, &f.cmbStartingNodeName, &f.cmbModeType,
                         &f.cmbImpedance, &f.cmbRDVType}) {
    EXPECT_EQ(DropDownWidth(*wide), 200);
  }
  for (ComboBox* narrow : {&f.cmbStartingNodeNumber, &f.cmbVolume, &f.cmbModeNumber,
                           &f.cmbNISOption, &f.cmbSoftStop}) {
    EXPECT_EQ(DropDownWidth(*narrow), 50);
  }
}

TEST_F(Lifecycle, AGridThatMovesHidesTheEditorAndKeepsTheCell) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  ChangeColumnWidth(column::kLabel, 9000);
  const std::vector<std::function<void()>> moves = {
      [this] { ScrollRight(300); }, [this] { ScrollDown(grid().RowHeight(1)); },
      [this] { ClickHeader(10); }, [this] { ChangeColumnWidth(column::kLine, 600); }};
  for (const auto& move : moves) {
    Click(1, column::kVolume);
    ASSERT_TRUE(form().cmbVolume.Visible());
    const Twips left = grid().RowLeft(1);
    move();
    for (const Editor* editor : form().Editors()) EXPECT_FALSE(editor->Visible());
    EXPECT_EQ(Cell(1, column::kVolume), u"High");
    EXPECT_EQ(grid().RowLeft(1), &move == &moves.front() ? left - 300 : left);
  }
}

TEST_F(Lifecycle, ADestroyedControlNoLongerListensToItsForm) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  Destroy();
  const Form& f = form();
  EXPECT_FALSE(f.LVRDVLineConfig.on_mouse_down || f.LVRDVLineConfig.on_item_click ||
               f.LVRDVLineConfig.on_mouse_up || f.LVRDVLineConfig.on_key_press ||
               f.LVRDVLineConfig.on_column_click || f.LVRDVLineConfig.on_before_move ||
               f.LVRDVLineConfig.on_edit || f.LVRDVLineConfig.on_edit_next ||
               f.LVRDVLineConfig.on_edit_end || f.LVRDVLineConfig.on_edit_cancel);
  for (const Editor* editor : f.Editors()) EXPECT_FALSE(editor->on_change);
  for (const ComboBox* list :
       {&f.cmbLineType, &f.cmbPartition, &f.cmbStartingNodeName, &f.cmbStartingNodeNumber,
        &f.cmbVolume, &f.cmbModeType, &f.cmbModeNumber, &f.cmbNISOption, &f.cmbImpedance,
        &f.cmbSoftStop, &f.cmbRDVType}) {
    EXPECT_FALSE(list->on_click);
  }
  for (const Button* button : {&f.cmdShowDefaults, &f.cmdOK, &f.cmdCancel, &f.cmdApply}) {
    EXPECT_FALSE(button->on_click);
  }
}

TEST_F(Lifecycle, TheHostMayDestroyTheControlInRemoveMe) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  int removed = 0;
  const auto marker = std::make_shared<int>(7);  // dies with the function that holds it
  control().RemoveME = [this, &removed, marker] {
    Destroy();
    removed += *marker;
  };
  Press(form().cmdCancel);
  EXPECT_EQ(removed, 7);
}

TEST_F(Lifecycle, AControlDestroyedByTheFirstOfTwoRemoveMeRaisesNoSecond) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  int removed = 0;
  control().RemoveME = [this, &removed] {
    ++removed;
    Destroy();
  };
  form().cmdApply.SetEnabled(true);
  Answer(MessageAnswer::Yes);
  Press(form().cmdCancel);
  EXPECT_EQ(removed, 1);
}

TEST_F(Lifecycle, TheHostMayDestroyTheFormWithTheControlInRemoveMe) {
  UseSite("plain");
  auto widgets =
      std::make_unique<memory::MemoryForm>(kGridContent);  // those that a handler may destroy
  auto control = std::make_unique<ucRDVLineConfig>(widgets->Widgets());
  ASSERT_TRUE(control->ShowControl(1));
  int removed = 0;
  control->RemoveME = [&] {
    ++removed;
    control.reset();
    widgets.reset();
  };
  widgets->cmdApply.SetEnabled(true);
  widgets->screen.QueueAnswer(MessageAnswer::Yes);
  widgets->cmdCancel.UserPress();
  EXPECT_EQ(removed, 1);
}

// A screen whose boxes let something else happen before they are answered.
class InterruptedScreen : public Screen {
 public:
  MessageAnswer ShowMessage(TextView, int, std::optional<TextView>) override {
    during_box();
    return MessageAnswer::Yes;
  }
  MousePointer Pointer() const override { return MousePointer::Default; }
  void SetPointer(MousePointer) override {}

  std::function<void()> during_box;
};

TEST_F(Lifecycle, AControlDestroyedWhileItAsksStillSavesAndRaisesNothing) {
  UseSite("plain");
  InterruptedScreen screen;
  auto control = std::make_unique<ucRDVLineConfig>(Replace(form(), {.screen = &screen}));
  ASSERT_TRUE(control->ShowControl(1));
  int removed = 0;
  control->RemoveME = [&] { ++removed; };
  screen.during_box = [&] { control.reset(); };
  grid().SetCell(1, column::kLabel, u"answered yes");
  form().cmdApply.SetEnabled(true);
  Press(form().cmdCancel);
  EXPECT_EQ(control, nullptr);
  EXPECT_EQ(removed, 0);
  EXPECT_EQ(StoredField(1, 1, u"Description"), u"answered yes");
}

TEST_F(Lifecycle, AControlMayBeShownAnewInRemoveMe) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  control().RemoveME = [this] { control().ShowControl(3); };
  Press(form().cmdCancel);
  EXPECT_EQ(Cell(1, column::kPartition), u"North");
}

}  // namespace
}  // namespace rdv::test
