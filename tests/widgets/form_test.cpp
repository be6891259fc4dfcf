// The form as a whole: focus, buttons, message boxes, layout.
#include <gmock/gmock.h>

#include <new>
#include <set>

#include "runtime/error.h"
#include "tests/widgets/grid_content.h"
#include "widgets/memory/memory_form.h"

namespace rdv::memory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

class FormTest : public ::testing::Test {
 protected:
  FormTest() {
    grid.AddColumn(u"Line", 500);
    grid.AddRow(u"a1", u"6");
  }

  MemoryForm form{kContent};
  MemoryLineGrid& grid = form.LVRDVLineConfig;
};

TEST_F(FormTest, AFreshFormHasHiddenEmptyEditorsAndNothingToApply) {
  for (const Editor* editor : form.Widgets().Editors()) {
    EXPECT_FALSE(editor->Visible());
    EXPECT_EQ(editor->Text(), u"");
  }
  EXPECT_FALSE(form.cmdApply.Enabled());
  EXPECT_TRUE(form.cmdOK.Enabled());
  EXPECT_TRUE(form.fraConfiguration.Enabled());
  EXPECT_EQ(form.FocusedWidget(), std::nullopt);
  EXPECT_EQ(form.screen.Pointer(), MousePointer::Default);
}

TEST_F(FormTest, OnlyTheNumberEditorsAndTheUnitTypeTakeTypedText) {
  const auto takes_text = [](MemoryComboBox& list) {
    list.SetVisible(true);
    return list.UserType(u"1") != refusal::kNotTypeable;
  };
  EXPECT_TRUE(takes_text(form.cmbStartingNodeNumber));
  EXPECT_TRUE(takes_text(form.cmbModeNumber));
  EXPECT_TRUE(takes_text(form.cmbRDVType));
  for (MemoryComboBox* list :
       {&form.cmbPartition, &form.cmbStartingNodeName, &form.cmbVolume, &form.cmbModeType,
        &form.cmbNISOption, &form.cmbLineType, &form.cmbImpedance, &form.cmbSoftStop}) {
    EXPECT_FALSE(takes_text(*list)) << list->Name();
  }
}

TEST_F(FormTest, AWidgetThatIsHiddenLeavesTheFocusToTheGridAndOneThatIsDisabledLosesIt) {
  form.txtLabel.SetVisible(true);
  form.txtLabel.SetFocus();
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("txtLabel")));
  form.txtLabel.SetVisible(false);
  EXPECT_EQ(form.FocusedWidget(), "LVRDVLineConfig");
  form.cmdOK.SetFocus();
  form.cmdOK.SetEnabled(false);
  EXPECT_EQ(form.FocusedWidget(), std::nullopt);
}

TEST_F(FormTest, HidingAnotherWidgetLeavesTheFocus) {
  form.cmdOK.SetFocus();
  form.txtLabel.SetVisible(false);
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("cmdOK")));
}

TEST_F(FormTest, TheFocusDoesNotGoWhereTheKeyboardCannot) {
  form.cmdOK.SetFocus();
  form.txtLabel.SetFocus();
  form.cmdApply.SetFocus();
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("cmdOK")));
}

TEST_F(FormTest, TheUsersActionsMoveTheFocus) {
  grid.UserClickCell(1, 1);
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("LVRDVLineConfig")));
  form.cmbRDVType.UserType(u"x");
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("cmbRDVType")));
  grid.UserKey(u'x');
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("LVRDVLineConfig")));
  form.cmdCancel.UserPress();
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("cmdCancel")));
}

TEST_F(FormTest, MouseUpMayMoveTheFocusOnToAnEditor) {
  form.txtLabel.SetVisible(true);
  grid.on_mouse_up = [this](Twips, Twips) { form.txtLabel.SetFocus(); };
  grid.UserClickCell(1, 1);
  EXPECT_THAT(form.FocusedWidget(), Optional(std::string("txtLabel")));
}

TEST_F(FormTest, APressOnAButtonRunsItsHandlerWithTheFocusOnIt) {
  std::optional<std::string> focused;
  form.cmdOK.on_click = [&] { focused = form.FocusedWidget(); };
  EXPECT_EQ(form.cmdOK.UserPress(), std::nullopt);
  EXPECT_THAT(focused, Optional(std::string("cmdOK")));
  EXPECT_EQ(form.cmdApply.UserPress(), refusal::kDisabled);
}

TEST_F(FormTest, TheHandlerOfAButtonMayDestroyTheForm) {
  auto doomed = std::make_unique<MemoryForm>(kContent);
  doomed->cmdOK.on_click = [&doomed] { doomed.reset(); };
  EXPECT_EQ(doomed->cmdOK.UserPress(), std::nullopt);
  EXPECT_EQ(doomed, nullptr);
}

TEST_F(FormTest, WhateverAHandlerThrowsEndsThereAndWhoRaisedItsEventGoesOn) {
  bool went_on = false;
  form.cmbRDVType.AddItem(u"One", 1);
  form.cmbRDVType.on_click = [] { throw std::bad_alloc(); };
  form.cmdOK.on_click = [&] {
    form.cmbRDVType.SetListIndex(0);
    went_on = true;
    Raise(LanguageError::TypeMismatch);
  };
  EXPECT_EQ(form.cmdOK.UserPress(), std::nullopt);
  EXPECT_TRUE(went_on);
  EXPECT_EQ(form.cmbRDVType.ListIndex(), 0);
}

TEST_F(FormTest, MessageBoxesTakeTheAnswersInTheirOrder) {
  form.screen.QueueAnswer(MessageAnswer::No);
  form.screen.QueueAnswer(MessageAnswer::Yes);
  EXPECT_EQ(form.screen.ShowMessage(u"First?", message_style::kYesNoCancelQuestion, u"Save"),
            MessageAnswer::No);
  EXPECT_EQ(form.screen.ShowMessage(u"Second?", message_style::kYesNoCancelQuestion, u"Save"),
            MessageAnswer::Yes);
}

TEST_F(FormTest, WithoutAnAnswerABoxIsOkedOrCancelled) {
  EXPECT_EQ(form.screen.ShowMessage(u"Note", message_style::kInformation, std::nullopt),
            MessageAnswer::Ok);
  EXPECT_EQ(form.screen.ShowMessage(u"Save?", message_style::kYesNoCancelQuestion, u"Save"),
            MessageAnswer::Cancel);
}

TEST_F(FormTest, MessageBoxesAreKeptUntilTheyAreTaken) {
  form.screen.ShowMessage(u"One", message_style::kPlain, std::nullopt);
  form.screen.ShowMessage(u"Two", message_style::kCritical, u"Error");
  EXPECT_THAT(form.screen.TakeMessages(),
              ElementsAre(ShownMessage{u"One", std::nullopt, 0, MessageAnswer::Ok},
                          ShownMessage{u"Two", u"Error", 16, MessageAnswer::Ok}));
  EXPECT_THAT(form.screen.Messages(), IsEmpty());
}

TEST_F(FormTest, TheDesignSizeShowsTheContentAndScrollBars) {
  EXPECT_EQ(grid.Width(), kContent.width + 320);
  EXPECT_EQ(grid.Height(), kGridHeaderHeight + kContent.rows * kGridRowHeight + 285);
  const MemoryForm higher({kContent.width, kContent.rows + 2});
  EXPECT_EQ(higher.LVRDVLineConfig.Height(), grid.Height() + 2 * kGridRowHeight);
}

TEST_F(FormTest, ANarrowerFormIsCutOff) {
  const MemoryForm narrow(kContent, {100, DesignSize(kContent).height});
  EXPECT_EQ(narrow.LVRDVLineConfig.Width(), grid.Width());
}

TEST(FormTable, NamesEveryWidgetOnceAndGivesItAWindowOfItsOwn) {
  std::set<std::string_view> names;
  std::set<int> ids;
  for (const WidgetEntry& entry : kFormTable) {
    names.insert(entry.name);
    ids.insert(entry.id);
  }
  EXPECT_EQ(names.size(), kFormTable.size());
  EXPECT_EQ(ids.size(), kFormTable.size());
}

TEST_F(FormTest, TheTableNamesEachWidgetByItsMember) {
  ForEachWidget(form, [](const auto& widget, const WidgetEntry& entry) {
    EXPECT_EQ(widget.Name(), entry.name);
  });
  EXPECT_EQ(form.cmbPartition.Name(), "cmbPartition");
  EXPECT_EQ(form.txtLabel.Name(), "txtLabel");
  EXPECT_EQ(form.cmbRDVType.Name(), "cmbRDVType");
  EXPECT_EQ(form.cmdApply.Name(), "cmdApply");
}

TEST_F(FormTest, ALargerFormHasALargerGrid) {
  Size size = DesignSize(kContent);
  size.width += 1000;
  size.height += 500;
  const MemoryForm large(kContent, size);
  EXPECT_EQ(large.LVRDVLineConfig.Width(), grid.Width() + 1000);
  EXPECT_EQ(large.LVRDVLineConfig.Height(), grid.Height() + 500);
}

// A host may have given the control less room than it wants.
TEST_F(FormTest, InALowerFormTheGridIsLowerAndNothingIsCutOff) {
  Size low = DesignSize(kContent);
  low.height -= 1320;
  const FormLayout layout = LayOut(low, kContent);
  EXPECT_EQ(layout.grid.height, LayOut(DesignSize(kContent), kContent).grid.height - 1320);
  EXPECT_LT(layout.fraConfiguration.top + layout.fraConfiguration.height, layout.fraDefault.top);
  EXPECT_LT(layout.fraDefault.top + layout.fraDefault.height, layout.cmdOK.top);
  EXPECT_LT(layout.cmdOK.top + layout.cmdOK.height, low.height);
}

TEST_F(FormTest, TheGridOfTheLowestFormHasThreeRows) {
  EXPECT_GE(LayOut({0, 0}, kContent).grid.height, kGridHeaderHeight + 3 * kGridRowHeight);
  EXPECT_LT(LayOut({0, 0}, kContent).grid.height, kGridHeaderHeight + 4 * kGridRowHeight);
}

// The fonts that the systems come with.
TEST_F(FormTest, TextsOfTheUsualSizeLeaveTheDesignAsItIs) {
  const FormLayout usual =
      LayOut(DesignSize(kContent), kContent, {.line = 225, .captions = 700, .restore = 1200});
  const FormLayout design = LayOut(DesignSize(kContent), kContent);
  EXPECT_EQ(usual.grid.top, design.grid.top);
  EXPECT_EQ(usual.grid.height, design.grid.height);
  EXPECT_EQ(usual.cmdOK.width, design.cmdOK.width);
  EXPECT_EQ(usual.cmdOK.height, design.cmdOK.height);
  EXPECT_EQ(usual.cmdShowDefaults.width, design.cmdShowDefaults.width);
  EXPECT_EQ(TextSizes{.line = 225}.EditorHeight(), kEditorHeight);
  EXPECT_EQ(TextSizes{.line = 225}.GridRowHeight(), kGridRowHeight);
  EXPECT_EQ(TextSizes{.line = 225}.GridHeaderHeight(), kGridHeaderHeight);
}

TEST_F(FormTest, LargeTextsAreGivenTheRoomThatTheyNeed) {
  const TextSizes texts = {.line = 600, .captions = 2000, .restore = 3000};
  const FormLayout layout = LayOut(DesignSize(kContent), kContent, texts);
  EXPECT_GE(layout.grid.top, texts.line);
  EXPECT_GT(layout.cmdCancel.height, texts.line);
  EXPECT_GT(layout.cmdCancel.width, texts.captions);
  EXPECT_GT(layout.cmdShowDefaults.height, texts.line);
  EXPECT_GT(layout.cmdShowDefaults.width, texts.restore);
  EXPECT_GE(layout.cmdShowDefaults.top, texts.line);
  EXPECT_GT(layout.cmbRDVType.height, texts.line);
  EXPECT_GT(texts.GridHeaderHeight(), texts.line);
  EXPECT_GE(texts.GridRowHeight(), kEditorTopOffset + texts.EditorHeight());
  EXPECT_GE(layout.grid.height, texts.GridHeaderHeight() + 3 * texts.GridRowHeight());
  // One below the other, and one beside the other.
  EXPECT_LT(layout.fraConfiguration.top + layout.fraConfiguration.height, layout.fraDefault.top);
  EXPECT_LT(layout.cmdShowDefaults.top + layout.cmdShowDefaults.height, layout.fraDefault.height);
  EXPECT_LT(layout.cmbRDVType.top + layout.cmbRDVType.height, layout.fraDefault.height);
  EXPECT_LT(layout.fraDefault.top + layout.fraDefault.height, layout.cmdOK.top);
  EXPECT_LT(layout.cmdOK.left + layout.cmdOK.width, layout.cmdCancel.left);
  EXPECT_LT(layout.cmdCancel.left + layout.cmdCancel.width, layout.cmdApply.left);
}

}  // namespace
}  // namespace rdv::memory
