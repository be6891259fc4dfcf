// When a drop-down list raises its handlers, and what is selected and shown meanwhile.
#include <gmock/gmock.h>

#include "runtime/error.h"
#include "tests/widgets/grid_content.h"
#include "widgets/memory/memory_form.h"

namespace rdv::memory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ComboBoxTest : public ::testing::Test {
 protected:
  ComboBoxTest() {
    for (MemoryComboBox* list : {&fixed, &typed}) {
      list->AddItem(u"Low", 0);
      list->AddItem(u"High", 128);
      list->AddItem(u"3", 3);
      list->SetVisible(true);
      list->on_click = [this, list] {
        events.push_back("click " + std::to_string(list->ListIndex()));
      };
      list->on_change = [this, list] { events.push_back("change " + ToUtf8(list->Text())); };
    }
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
  MemoryComboBox& fixed = form.cmbVolume;
  MemoryComboBox& typed = form.cmbModeNumber;
  std::vector<std::string> events;
};

TEST_F(ComboBoxTest, SelectingAnotherEntryRaisesClickAfterTheTextIsShown) {
  Text shown;
  fixed.on_click = [&] { shown = fixed.Text(); };
  fixed.SetListIndex(1);
  EXPECT_EQ(shown, u"High");
}

TEST_F(ComboBoxTest, SelectingTheSelectedEntryRaisesClickAgain) {
  fixed.SetListIndex(1);
  fixed.SetListIndex(1);
  EXPECT_THAT(events, ElementsAre("click 1", "click 1"));
}

TEST_F(ComboBoxTest, SelectingNothingEmptiesTheTextAndRaisesNothing) {
  for (MemoryComboBox* list : {&fixed, &typed}) {
    list->SetListIndex(0);
    events.clear();
    list->SetListIndex(-1);
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(list->ListIndex(), -1);
    EXPECT_EQ(list->Text(), u"");
  }
}

TEST_F(ComboBoxTest, SelectingNeverRaisesChange) {
  typed.SetListIndex(2);
  EXPECT_THAT(events, ElementsAre("click 2"));
}

TEST_F(ComboBoxTest, AUsersPickAlwaysRaisesClick) {
  fixed.SetListIndex(1);
  events.clear();
  EXPECT_EQ(fixed.UserPick(1), std::nullopt);
  EXPECT_EQ(fixed.UserPick(2), std::nullopt);
  EXPECT_THAT(events, ElementsAre("click 1", "click 2"));
}

TEST_F(ComboBoxTest, ClearingSelectsNothingShowsNothingAndRaisesNothing) {
  typed.SetListIndex(1);
  events.clear();
  typed.Clear();
  EXPECT_EQ(typed.ListIndex(), -1);
  EXPECT_EQ(typed.Text(), u"");
  EXPECT_EQ(typed.ListCount(), 0);
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(ComboBoxTest, IndexesOutsideTheListAreErrors) {
  EXPECT_EQ(NumberOf([&] { fixed.SetListIndex(3); }), 380);
  EXPECT_EQ(NumberOf([&] { fixed.SetListIndex(-2); }), 380);
  EXPECT_EQ(NumberOf([&] { fixed.ItemData(-1); }), 381);
  EXPECT_EQ(NumberOf([&] { fixed.ItemData(3); }), 381);
  EXPECT_EQ(NumberOf([&] { fixed.List(-1); }), 381);
}

TEST_F(ComboBoxTest, SettingTheTextThatIsShownKeepsTheEntryAndRaisesNothing) {
  typed.SetListIndex(2);
  events.clear();
  typed.SetText(u"3");
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(typed.ListIndex(), 2);
}

TEST_F(ComboBoxTest, SettingAnotherTextRaisesChangeAndLeavesNoEntrySelected) {
  typed.SetListIndex(2);
  events.clear();
  typed.SetText(u"4");
  EXPECT_THAT(events, ElementsAre("change 4"));
  EXPECT_EQ(typed.ListIndex(), -1);
  EXPECT_EQ(typed.Caret(), 0u);
}

TEST_F(ComboBoxTest, TypedTextLeavesNoEntrySelectedUntilARuleSelectsOne) {
  typed.SetListIndex(1);
  EXPECT_EQ(typed.UserType(u"3"), std::nullopt);
  EXPECT_EQ(typed.ListIndex(), -1);
  EXPECT_EQ(typed.Text(), u"3");
  typed.SetListIndex(2);
  EXPECT_THAT(events, ElementsAre("click 1", "change 3", "click 2"));
}

TEST_F(ComboBoxTest, TypingTheTextThatIsShownChangesNothing) {
  typed.SetListIndex(2);
  events.clear();
  EXPECT_EQ(typed.UserType(u"3"), std::nullopt);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(typed.ListIndex(), 2);
}

TEST_F(ComboBoxTest, ActionsAreRefusedForAReason) {
  EXPECT_EQ(fixed.UserPick(3), refusal::kNoSuchEntry);
  EXPECT_EQ(fixed.UserType(u"x"), refusal::kNotTypeable);
  EXPECT_EQ(fixed.UserPaste(u"x"), refusal::kNotTypeable);
  fixed.SetVisible(false);
  EXPECT_EQ(fixed.UserPick(0), refusal::kHidden);
  typed.SetEnabled(false);
  EXPECT_EQ(typed.UserPick(0), refusal::kDisabled);
  typed.SetEnabled(true);
  form.fraConfiguration.SetEnabled(false);
  EXPECT_EQ(typed.UserType(u"1"), refusal::kDisabled);
  EXPECT_EQ(typed.UserPaste(u"1"), refusal::kDisabled);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(form.FocusedWidget(), std::nullopt);
}

}  // namespace
}  // namespace rdv::memory
