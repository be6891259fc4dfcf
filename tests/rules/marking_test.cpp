// Each rule by itself: that it marks the control as changed, and that nothing else does it for it.
#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::IsEmpty;

class Marking : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }

  // Runs the rule without a selected row and without an entry, so that no other rule follows.
  bool Marks(const std::function<void()>& rule) {
    form().cmdApply.SetEnabled(false);
    rule();
    return form().cmdApply.Enabled();
  }
};

struct ListRow {
  const char* name;
  ComboBox& (*list)(const Form&);
};

class ListRule : public Marking, public ::testing::WithParamInterface<ListRow> {};

TEST_P(ListRule, MarksTheControlAsChangedAlsoWithoutASelectedRow) {
  ComboBox& list = GetParam().list(form());
  list.Clear();
  EXPECT_TRUE(Marks(list.on_click));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ListRule,
    ::testing::Values(
        ListRow{"LineType", [](const Form& f) -> ComboBox& { return f.cmbLineType; }},
        ListRow{"Partition", [](const Form& f) -> ComboBox& { return f.cmbPartition; }},
        ListRow{"NodeName", [](const Form& f) -> ComboBox& { return f.cmbStartingNodeName; }},
        ListRow{"NodeNumber", [](const Form& f) -> ComboBox& { return f.cmbStartingNodeNumber; }},
        ListRow{"Volume", [](const Form& f) -> ComboBox& { return f.cmbVolume; }},
        ListRow{"ModeType", [](const Form& f) -> ComboBox& { return f.cmbModeType; }},
        ListRow{"ModeNumber", [](const Form& f) -> ComboBox& { return f.cmbModeNumber; }},
        ListRow{"NISOption", [](const Form& f) -> ComboBox& { return f.cmbNISOption; }},
        ListRow{"Impedance", [](const Form& f) -> ComboBox& { return f.cmbImpedance; }},
        ListRow{"SoftStop", [](const Form& f) -> ComboBox& { return f.cmbSoftStop; }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Marking, TypingANumberMarksTheControlAsChangedAlsoInAnEmptyList) {
  for (ComboBox* list : {&form().cmbModeNumber, &form().cmbStartingNodeNumber}) {
    list->Clear();
    list->SetText(u"1");
    EXPECT_TRUE(Marks(list->on_change));
  }
}

TEST_F(Marking, TypingTextMarksTheControlAsChanged) {
  EXPECT_TRUE(Marks(form().txtEWTOption.on_change));
  EXPECT_TRUE(Marks(form().txtLabel.on_change));
}

TEST_F(Marking, RestoringTheDefaultMarksTheControlAsChanged) {
  EXPECT_TRUE(Marks(form().cmdShowDefaults.on_click));
}

TEST_F(Marking, AModeFitsItsEditorsWithoutASelectedRow) {
  ComboBox& number = form().cmbModeNumber;
  form().cmbModeType.Clear();
  form().cmbModeType.AddItem(u"Ring", 1);
  form().cmbModeType.AddItem(u"Loop Start", 13);
  number.SetWidth(700);
  form().cmbModeType.SetListIndex(0);
  EXPECT_TRUE(number.Visible());
  EXPECT_EQ(form().cmbModeType.Width(), 700);
  form().cmbModeType.SetListIndex(1);
  EXPECT_FALSE(number.Visible());
  EXPECT_EQ(form().cmbModeType.Width(), 1400);
}

TEST_F(Marking, AStartingNodeOffersNoNumbersWithoutASelectedRow) {
  const int numbers = form().cmbStartingNodeNumber.ListCount();
  form().cmbStartingNodeName.Clear();
  form().cmbStartingNodeName.AddItem(u"Menu", 1);
  form().cmbStartingNodeName.SetListIndex(0);
  EXPECT_EQ(form().cmbStartingNodeNumber.ListCount(), numbers);
  EXPECT_FALSE(form().cmbStartingNodeNumber.Visible());
}

// Their templates could insert the line as well: it is stored already, so that would be reported.
TEST_F(Marking, ALineTypeIsChangedInTheGridOnly) {
  const auto stored = AllStoredLines(1);
  for (const int32_t line_type : {6, 8, 1}) {
    for (int row = 1; row <= grid().RowCount(); ++row) grid().SetSelected(row, row == 7);
    SelectCode(form().cmbLineType, line_type);
    EXPECT_EQ(Cell(7, column::kLineTypeCode), Decimal(line_type));
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(AllStoredLines(1), stored);
  }
  CurrentSite().Execute(
      u"DELETE FROM Used_Lines WHERE Config_ID = `c` AND Base_Slot_No = 1 AND Slot_Offset = 1 AND "
      u"Line = `l`",
      {u"1", u"7"});
  for (const int32_t line_type : {6, 8}) {
    SelectCode(form().cmbLineType, line_type);
    EXPECT_EQ(StoredLine(1, 7), u"");
  }
}

}  // namespace
}  // namespace rdv::test
