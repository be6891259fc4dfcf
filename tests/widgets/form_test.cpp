// The form as a whole: focus, buttons, message boxes, layout.
#include <gmock/gmock.h>

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

  MemoryForm form;
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
  auto doomed = std::make_unique<MemoryForm>();
  doomed->cmdOK.on_click = [&doomed] { doomed.reset(); };
  EXPECT_EQ(doomed->cmdOK.UserPress(), std::nullopt);
  EXPECT_EQ(doomed, nullptr);
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

// The eleven visible columns of the grid, and ten rows.
TEST_F(FormTest, TheDesignSizeShowsAllColumnsAndTenRows) {
  EXPECT_GE(grid.Width(), 500 + 1300 + 1200 + 1500 + 800 + 1500 + 1100 + 1100 + 1200 + 1000 + 1800);
  EXPECT_GE(grid.Height(), kGridHeaderHeight + 10 * kGridRowHeight);
}

TEST_F(FormTest, ALargerFormHasALargerGrid) {
  Size size = DesignSize();
  size.width += 1000;
  size.height += 500;
  const MemoryForm large(size);
  EXPECT_EQ(large.LVRDVLineConfig.Width(), grid.Width() + 1000);
  EXPECT_EQ(large.LVRDVLineConfig.Height(), grid.Height() + 500);
}

// A host may have given the control less room than it wants.
TEST_F(FormTest, InALowerFormTheGridIsLowerAndNothingIsCutOff) {
  Size low = DesignSize();
  low.height -= 1320;
  const FormLayout layout = LayOut(low);
  EXPECT_EQ(layout.grid.height, LayOut(DesignSize()).grid.height - 1320);
  EXPECT_LT(layout.fraConfiguration.top + layout.fraConfiguration.height, layout.fraDefault.top);
  EXPECT_LT(layout.fraDefault.top + layout.fraDefault.height, layout.cmdOK.top);
  EXPECT_LT(layout.cmdOK.top + layout.cmdOK.height, low.height);
}

TEST_F(FormTest, TheGridOfTheLowestFormHasThreeRows) {
  EXPECT_GE(LayOut({0, 0}).grid.height, kGridHeaderHeight + 3 * kGridRowHeight);
  EXPECT_LT(LayOut({0, 0}).grid.height, kGridHeaderHeight + 4 * kGridRowHeight);
}

}  // namespace
}  // namespace rdv::memory
