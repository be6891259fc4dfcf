// A disk that takes no more: what was written may not be there after a loss of power, and the
// procedure that wrote it says so.
#ifndef _WIN32

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "rules/line_templates.h"
#include "tests/support/control_fixture.h"

namespace {

constexpr int kAll = -1;
constexpr int kMany = 1000;  // more than anything needs

struct Disk {
  // How many of the coming flushes still succeed. What happens then: all others fail, or one does.
  int left = kAll;
  bool one_fails = false;
};

Disk& TheDisk() {
  static Disk disk;
  return disk;
}

}  // namespace

// In the place of the system's own.
extern "C" int RefusingFlush(int file) __asm__("fdatasync");
extern "C" int RefusingFlush(int file) {
  if (TheDisk().left == 0) {
    if (TheDisk().one_fails) TheDisk().left = kAll;
    errno = EIO;
    return -1;
  }
  if (TheDisk().left > 0) --TheDisk().left;
  return static_cast<int>(syscall(SYS_fdatasync, file));
}

namespace rdv::test {
namespace {

using ::testing::EndsWith;
using ::testing::SizeIs;

class FailingFlush : public ControlTest {
 protected:
  void TearDown() override {
    TheDisk().left = kAll;
    TheDisk().one_fails = false;
  }
};

TEST_F(FailingFlush, OfADefaultLineIsReportedByItsTemplate) {
  UseSite("plain");
  Create();
  TheDisk().left = 0;
  EXPECT_FALSE(control().ShowControl(2));
  const std::vector<Message> messages = Messages();
  ASSERT_THAT(messages, SizeIs(11));
  for (size_t line = 0; line < 8; ++line) {
    EXPECT_THAT(ToUtf8(messages[line].text), EndsWith(" - LoadDefaultHybrideLine"));
  }
  for (size_t line = 8; line < 10; ++line) {
    EXPECT_THAT(ToUtf8(messages[line].text), EndsWith(" - LoadDefaultMOHLine"));
  }
  EXPECT_THAT(ToUtf8(messages[10].text), EndsWith(" - LoadData"));
}

TEST_F(FailingFlush, OfATemplateIsReportedWhicheverItIs) {
  ControlState state;
  state.BusinessRules.ConfigID = 2;
  state.CardTypes.Add(u"Hybrid Line", u"6");
  state.PartitionList.Add(u"First", u"1");
  state.NodeNames.Add(u"Message", u"0");
  state.ModeNames.Add(u"Ring", u"1");
  LineTemplates templates(form(), state);
  for (const GridColumn& column : kGridColumns) grid().AddColumn(column.caption, column.width);
  const auto store = [&](int flushes) {
    UseSite("plain");
    grid().RemoveRows();
    TheDisk().left = flushes;
    return templates.LoadDefaultHybrideLine(1, Target::NewRow, Store::Yes);
  };
  ASSERT_TRUE(store(kMany));
  const int needed = kMany - TheDisk().left;
  ASSERT_GT(needed, 0);
  TheDisk().one_fails = true;
  for (int good = 0; good < needed; ++good) {
    EXPECT_FALSE(store(good)) << good;
    EXPECT_THAT(Messages(), SizeIs(1)) << good;
  }
}

TEST_F(FailingFlush, OfTheLastOneOfADefaultUnitIsReportedByTheLoad) {
  const auto show = [&](int flushes) {
    UseSite("plain");
    Create();
    TheDisk().left = flushes;
    return control().ShowControl(2);
  };
  ASSERT_TRUE(show(kMany));
  const int needed = kMany - TheDisk().left;
  EXPECT_FALSE(show(needed - 1));
  const std::vector<Message> messages = Messages();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_THAT(ToUtf8(messages[0].text), EndsWith(" - LoadData"));
}

TEST_F(FailingFlush, OfApplyIsReportedAndLeavesTheChangesPending) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  form().cmdApply.SetEnabled(true);
  TheDisk().left = 0;
  Press(form().cmdApply);
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_THAT(Messages(), SizeIs(1));
}

TEST_F(FailingFlush, OfTheLastOneOfApplyIsReportedToo) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  const auto apply = [&](TextView label, int flushes) {
    form().LVRDVLineConfig.SetCell(1, column::kLabel, label);
    form().cmdApply.SetEnabled(true);
    TheDisk().left = flushes;
    Press(form().cmdApply);
    return flushes - TheDisk().left;
  };
  apply(u"one", kMany);  // whatever else differs from the stored lines is written now
  const int needed = apply(u"two", kMany);
  ASSERT_GT(needed, 0);
  ASSERT_FALSE(form().cmdApply.Enabled());
  ASSERT_THAT(Messages(), SizeIs(0));
  apply(u"one", needed - 1);
  EXPECT_TRUE(form().cmdApply.Enabled());
  EXPECT_THAT(Messages(), SizeIs(1));
}

}  // namespace
}  // namespace rdv::test

#endif
