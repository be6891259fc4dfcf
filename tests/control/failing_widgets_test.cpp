// Procedures that load the control, on widgets that fail; and what the screen is told meanwhile.
#include <gmock/gmock.h>

#include "runtime/error.h"
#include "tests/support/control_fixture.h"
#include "widgets/memory/memory_form.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FailingGrid : public memory::MemoryLineGrid {
 public:
  FailingGrid()
      : MemoryLineGrid("grid", focus_, nullptr,
                       LayOut(DesignSize(kGridContent), kGridContent).grid) {}
  void AddColumn(TextView, Twips) override { Raise(LanguageError::InvalidPropertyValue); }

 private:
  memory::Focus focus_{"LVRDVLineConfig"};
};

class FailingList : public memory::MemoryComboBox {
 public:
  FailingList() : MemoryComboBox("list", focus_, nullptr, TextEntry::Typed) {}
  void AddItem(TextView, int32_t) override { Raise(LanguageError::InvalidPropertyValue); }

 private:
  memory::Focus focus_{"LVRDVLineConfig"};
};

class FailingWidgets : public ControlTest {};

TEST_F(FailingWidgets, AGridThatTakesNoColumnFailsTheLoadWithItsBlockOnALineOfItsOwn) {
  UseSite("plain");
  FailingGrid grid;
  ucRDVLineConfig control(Replace(form(), {.LVRDVLineConfig = &grid}));
  EXPECT_FALSE(control.ShowControl(1));
  const std::vector<Message> messages = Messages();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back(), CriticalError(u"\r\nError Description:Invalid property value\r\n"
                                           u"Error Source: TLV_RDV_Line_Config - FormatLVControl"));
}

TEST_F(FailingWidgets, AUnitTypeListThatTakesNoEntryFailsTheLoadWithItsBlock) {
  UseSite("plain");
  FailingList list;
  ucRDVLineConfig control(Replace(form(), {.cmbRDVType = &list}));
  EXPECT_FALSE(control.ShowControl(1));
  EXPECT_THAT(Messages(), ElementsAre(CriticalError(
                              u"Error Description:Invalid property value\r\n"
                              u"Error Source: TLV_RDV_Line_Config - LoadDefaultRDVType")));
  EXPECT_EQ(form().LVRDVLineConfig.RowCount(), 0);
}

// Keeps every pointer that it is given.
class PointerLog : public Screen {
 public:
  MessageAnswer ShowMessage(TextView, int, std::optional<TextView>) override {
    pointers.push_back(-1);
    return MessageAnswer::Ok;
  }
  MousePointer Pointer() const override { return MousePointer::Default; }
  void SetPointer(MousePointer pointer) override { pointers.push_back(static_cast<int>(pointer)); }

  std::vector<int> pointers;  // -1: a message box
};

TEST_F(FailingWidgets, ThePointerIsAnHourglassWhileLinesAreWrittenAndTheDefaultInTheBoxOfAFailure) {
  UseSite("plain");
  PointerLog screen;
  ucRDVLineConfig control(Replace(form(), {.screen = &screen}));
  ASSERT_TRUE(control.ShowControl(1));
  EXPECT_THAT(screen.pointers, IsEmpty());
  form().cmdApply.SetEnabled(true);
  form().cmdApply.on_click();
  EXPECT_THAT(screen.pointers, ElementsAre(11, 0));
  form().LVRDVLineConfig.SetCell(2, column::kLabel, Text(256, u'x'));
  form().cmdApply.SetEnabled(true);
  screen.pointers.clear();
  form().cmdApply.on_click();
  EXPECT_THAT(screen.pointers, ElementsAre(11, 0, -1));
  form().cmdApply.SetEnabled(false);
  screen.pointers.clear();
  form().cmdApply.on_click();
  EXPECT_THAT(screen.pointers, ElementsAre(0));
}

}  // namespace
}  // namespace rdv::test
