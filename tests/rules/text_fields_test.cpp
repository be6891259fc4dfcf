// The EWT option and the label as they are typed.
#include "rules/text_fields.h"

#include <gmock/gmock.h>

#include "runtime/error.h"
#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Message kLabelMessage{
    u"Double quotes and continuous single quotes are not allowed in the Label field", 64,
    Text(u"Information")};

class TextEditors : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }
};

struct PastedRow {
  TextView pasted;
  TextView text;
  TextView shown;
};

class EwtOption : public TextEditors, public ::testing::WithParamInterface<PastedRow> {};

TEST_P(EwtOption, KeepsItsDigitsAndShowsZeroAsDisabled) {
  Click(2, column::kEWTOption);
  Paste(form().txtEWTOption, GetParam().pasted);
  EXPECT_EQ(form().txtEWTOption.Text(), GetParam().text);
  EXPECT_EQ(Cell(2, column::kEWTOption), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Table, EwtOption,
    ::testing::Values(PastedRow{u"12a", u"12", u"12"}, PastedRow{u"", u"0", u"Disabled"},
                      PastedRow{u"000", u"000", u"Disabled"}, PastedRow{u"007", u"007", u"007"},
                      PastedRow{u"-1.5", u"15", u"15"}, PastedRow{u"abc", u"0", u"Disabled"},
                      PastedRow{u" 1 2 ", u"12", u"12"}, PastedRow{u"\u0661", u"0", u"Disabled"},
                      PastedRow{u"2147483647", u"2147483647", u"2147483647"}));

TEST_F(TextEditors, AnEwtOptionBeyond32BitsStaysInTheBoxAndOutOfTheGrid) {
  Click(2, column::kEWTOption);
  Paste(form().txtEWTOption, u"2147483648");
  EXPECT_EQ(form().txtEWTOption.Text(), u"2147483648");
  EXPECT_EQ(Cell(2, column::kEWTOption), u"30");
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(TextEditors, TypingDigitsOneByOneKeepsTheirOrder) {
  Click(2, column::kEWTOption);
  Type(form().txtEWTOption, u"123");
  EXPECT_EQ(form().txtEWTOption.Text(), u"123");
}

TEST_F(TextEditors, ADroppedCharacterPutsTheCaretAtTheStart) {
  Click(2, column::kEWTOption);
  Type(form().txtEWTOption, u"12a");
  EXPECT_EQ(form().txtEWTOption.Text(), u"12");
  EXPECT_EQ(form().txtEWTOption.Caret(), 0u);
}

TEST_F(TextEditors, WithoutASelectedRowTypingMarksTheControlAsChangedAndNothingElse) {
  const auto before = Rows();
  form().txtEWTOption.SetText(u"5x");
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(form().txtEWTOption.Text(), u"5x");
  form().cmdApply.SetEnabled(false);
  form().txtLabel.SetText(u"\"quoted\"");
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(form().txtLabel.Text(), u"\"quoted\"");
  EXPECT_EQ(Rows(), before);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(TextEditors, EverySelectedRowWhoseLineTypeAllowsItTakesTheText) {
  Click(kHybridRow, column::kEWTOption);
  Key(1);
  Paste(form().txtEWTOption, u"44");
  EXPECT_EQ(Cell(2, column::kEWTOption), u"44");
  EXPECT_EQ(Cell(kImpedanceRow, column::kEWTOption), u"44");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kEWTOption), u"N/A");
  EXPECT_EQ(Cell(kMohRow, column::kEWTOption), u"N/A");

  Click(kHybridRow, column::kLabel);
  Key(1);
  Paste(form().txtLabel, u"everywhere");
  EXPECT_EQ(Cell(2, column::kLabel), u"everywhere");
  EXPECT_EQ(Cell(kImpedanceRow, column::kLabel), u"everywhere");
  EXPECT_EQ(Cell(kNotInstalledRow, column::kLabel), u"");
  EXPECT_EQ(Cell(kMohRow, column::kLabel), u"everywhere");
}

TEST_F(TextEditors, AWordInDoubleQuotesIsReportedOnceAndStaysWithoutThem) {
  Click(1, column::kLabel);
  Paste(form().txtLabel, u"the \"front\" desk");
  EXPECT_THAT(Messages(), ElementsAre(kLabelMessage));
  EXPECT_EQ(form().txtLabel.Text(), u"the front desk");
  EXPECT_EQ(Cell(1, column::kLabel), u"the front desk");
}

TEST_F(TextEditors, OfTwoSingleQuotesInARowOneStays) {
  Click(1, column::kLabel);
  Paste(form().txtLabel, u"a''b");
  EXPECT_THAT(Messages(), ElementsAre(kLabelMessage));
  EXPECT_EQ(Cell(1, column::kLabel), u"a'b");
}

TEST_F(TextEditors, TheCaretOfACleanedLabelStaysWhereItWasLessWhatWasDroppedBeforeIt) {
  Click(1, column::kLabel);
  Type(form().txtLabel, u"ab\"c");
  EXPECT_EQ(form().txtLabel.Text(), u"abc");
  EXPECT_EQ(form().txtLabel.Caret(), 3u);
  EXPECT_THAT(Messages(), ElementsAre(kLabelMessage));
}

// Counts how many validators there are and have been, and notes what happens to them, with the text
// of a cell as it is then; rejects or fails as it is told.
struct ValidatorProbe {
  int made = 0;
  int alive = 0;
  bool fails = false;
  std::function<std::string()> cell = [] { return ""; };
  std::vector<std::string> events;

  LabelValidatorFactory Factory() {
    return [this] { return std::make_unique<Validator>(*this); };
  }
  void Note(const std::string& event) { events.push_back(event + " at " + cell()); }

  class Validator : public LabelValidator {
   public:
    explicit Validator(ValidatorProbe& probe) : probe_(probe) {
      ++probe_.made;
      ++probe_.alive;
      probe_.Note("made");
    }
    ~Validator() override {
      --probe_.alive;
      probe_.Note("let go");
    }
    bool IsAcceptable(TextView label) override {
      probe_.Note("asked for " + ToUtf8(label));
      if (probe_.fails) Raise(LanguageError::ObjectVariableNotSet);
      return label != u"refused" && label.find(u'"') == TextView::npos;
    }

   private:
    ValidatorProbe& probe_;
  };
};

TEST_F(TextEditors, AValidatorIsMadeForEachLabelChangeAndLetGoAtItsEnd) {
  ValidatorProbe probe;
  Create({.make_label_validator = probe.Factory()});
  ASSERT_TRUE(control().ShowControl(1));
  Click(1, column::kLabel);
  const int made = probe.made;
  Paste(form().txtLabel, u"one");
  Paste(form().txtLabel, u"two");
  EXPECT_EQ(probe.made, made + 2);
  EXPECT_EQ(probe.alive, 0);
}

// Cleaning the label is a change of its own, with a validator of its own, in the middle of the
// first. Each is let go when its change has written the rows.
TEST_F(TextEditors, AValidatorLivesToTheEndOfItsChange) {
  ValidatorProbe probe;
  Create({.make_label_validator = probe.Factory()});
  ASSERT_TRUE(control().ShowControl(1));
  Click(1, column::kLabel);
  Paste(form().txtLabel, u"one");
  probe.events.clear();
  probe.cell = [&] { return ToUtf8(Cell(1, column::kLabel)); };
  Paste(form().txtLabel, u"two");
  EXPECT_THAT(probe.events, ElementsAre("made at one", "asked for two at one", "let go at two"));
  probe.events.clear();
  Paste(form().txtLabel, u"\"three\"");
  EXPECT_THAT(probe.events,
              ElementsAre("made at two", "asked for \"three\" at two", "made at two",
                          "asked for three at two", "let go at three", "let go at three"));
}

TEST_F(TextEditors, ALabelRefusedForAnotherReasonIsReportedAndKept) {
  ValidatorProbe probe;
  Create({.make_label_validator = probe.Factory()});
  ASSERT_TRUE(control().ShowControl(1));
  Click(1, column::kLabel);
  Paste(form().txtLabel, u"refused");
  EXPECT_THAT(Messages(), ElementsAre(kLabelMessage));
  EXPECT_EQ(Cell(1, column::kLabel), u"refused");
}

TEST_F(TextEditors, AFailingValidatorEndsTheRuleSilently) {
  ValidatorProbe probe;
  Create({.make_label_validator = probe.Factory()});
  ASSERT_TRUE(control().ShowControl(1));
  Click(1, column::kLabel);
  probe.fails = true;
  Paste(form().txtLabel, u"new");
  EXPECT_EQ(Cell(1, column::kLabel), u"Front desk");
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_EQ(probe.alive, 0);
  EXPECT_THAT(Messages(), IsEmpty());
}

}  // namespace
}  // namespace rdv::test
