// How text is set, typed and pasted, and where the caret stands.
#include <gmock/gmock.h>

#include "tests/widgets/grid_content.h"
#include "widgets/memory/memory_form.h"

namespace rdv::memory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TextBoxTest : public ::testing::Test {
 protected:
  TextBoxTest() {
    box.SetVisible(true);
    box.on_change = [this] { changes.push_back(ToUtf8(box.Text())); };
  }

  MemoryForm form{kContent};
  MemoryTextBox& box = form.txtLabel;
  std::vector<std::string> changes;
};

TEST_F(TextBoxTest, SetTextRaisesChangeOnlyForAnotherText) {
  box.SetText(u"abc");
  box.SetText(u"abc");
  EXPECT_THAT(changes, ElementsAre("abc"));
}

TEST_F(TextBoxTest, SetTextPutsTheCaretAtTheStart) {
  box.SetText(u"abc");
  box.SetCaret(3);
  box.SetText(u"xyz");
  EXPECT_EQ(box.Caret(), 0u);
}

TEST_F(TextBoxTest, TheCaretStaysWithinTheText) {
  box.SetText(u"abc");
  box.SetCaret(10);
  EXPECT_EQ(box.Caret(), 3u);
}

TEST_F(TextBoxTest, TheFirstCharacterReplacesTheWholeTextTheOthersFollow) {
  box.SetText(u"old");
  changes.clear();
  EXPECT_EQ(box.UserType(u"new"), std::nullopt);
  EXPECT_THAT(changes, ElementsAre("n", "ne", "new"));
  EXPECT_EQ(box.Caret(), 3u);
}

TEST_F(TextBoxTest, TypingGoesOnWhereARuleHasLeftTheCaret) {
  box.on_change = [this] {
    if (box.Text() == u"ab") box.SetText(u"xy");  // the caret goes to the start
  };
  box.UserType(u"abcd");
  EXPECT_EQ(box.Text(), u"cdxy");
}

TEST_F(TextBoxTest, EmptyTextTypesNothing) {
  box.SetText(u"kept");
  changes.clear();
  EXPECT_EQ(box.UserType(u""), std::nullopt);
  EXPECT_EQ(box.Text(), u"kept");
  EXPECT_THAT(changes, IsEmpty());
}

TEST_F(TextBoxTest, ACharacterThatChangesNothingRaisesNothing) {
  box.SetText(u"a");
  changes.clear();
  box.UserType(u"ab");
  EXPECT_THAT(changes, ElementsAre("ab"));
}

TEST_F(TextBoxTest, ABackspaceTakesTheSelectionAndThenTheCharacterBeforeTheCaret) {
  box.SetText(u"whole");
  box.UserType(u"\bab\b");
  EXPECT_EQ(box.Text(), u"a");
  box.UserType(u"\b\b");
  EXPECT_EQ(box.Text(), u"");
}

TEST_F(TextBoxTest, OtherControlCharactersAreNoText) {
  box.UserType(
      u"a\t\r\n\x7F\x1B"
      u"b");
  EXPECT_EQ(box.Text(), u"ab");
}

TEST_F(TextBoxTest, PastingReplacesTheWholeTextAtOnce) {
  box.SetText(u"old");
  changes.clear();
  EXPECT_EQ(box.UserPaste(u"new text"), std::nullopt);
  EXPECT_THAT(changes, ElementsAre("new text"));
  EXPECT_EQ(box.Caret(), 8u);
  box.UserPaste(u"");
  EXPECT_EQ(box.Text(), u"");
}

TEST_F(TextBoxTest, PastingTheSameTextRaisesNothing) {
  box.SetText(u"same");
  changes.clear();
  box.UserPaste(u"same");
  EXPECT_THAT(changes, IsEmpty());
}

TEST_F(TextBoxTest, APasteEndsAtTheFirstLineBreak) {
  box.UserPaste(u"one\r\ntwo");
  EXPECT_EQ(box.Text(), u"one");
  box.UserPaste(u"three\nfour");
  EXPECT_EQ(box.Text(), u"three");
}

TEST_F(TextBoxTest, ActionsOnAHiddenOrDisabledBoxAreRefused) {
  box.SetVisible(false);
  EXPECT_EQ(box.UserType(u"x"), refusal::kHidden);
  EXPECT_EQ(box.UserPaste(u"x"), refusal::kHidden);
  box.SetVisible(true);
  box.SetEnabled(false);
  EXPECT_EQ(box.UserType(u"x"), refusal::kDisabled);
  EXPECT_THAT(changes, IsEmpty());
}

TEST_F(TextBoxTest, AHandlerMayTakeItselfAway) {
  int runs = 0;
  box.on_change = [&runs, this] {
    box.on_change = nullptr;
    ++runs;
  };
  box.UserType(u"ab");
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(box.Text(), u"ab");
}

}  // namespace
}  // namespace rdv::memory
