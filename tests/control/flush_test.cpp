// A disk that takes no more: what was written may not be there after a loss of power, and the
// procedure that wrote it says so.
#ifndef _WIN32

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/control_fixture.h"

namespace {

// How many of the coming flushes still succeed.
constexpr int kAll = -1;
int flushes_left = kAll;

}  // namespace

// In the place of the system's own.
extern "C" int fdatasync(int file) {
  if (flushes_left == 0) {
    errno = EIO;
    return -1;
  }
  if (flushes_left > 0) --flushes_left;
  return static_cast<int>(syscall(SYS_fdatasync, file));
}

namespace rdv::test {
namespace {

using ::testing::EndsWith;
using ::testing::SizeIs;

class FailingFlush : public ControlTest {
 protected:
  void TearDown() override { flushes_left = kAll; }
};

TEST_F(FailingFlush, OfADefaultLineIsReportedByItsTemplate) {
  UseSite("plain");
  Create();
  flushes_left = 0;
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

TEST_F(FailingFlush, OfApplyIsReportedAndLeavesTheChangesPending) {
  UseSite("plain");
  Create();
  ASSERT_TRUE(control().ShowControl(1));
  form().cmdApply.SetEnabled(true);
  flushes_left = 0;
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
    flushes_left = flushes;
    Press(form().cmdApply);
    return flushes - flushes_left;
  };
  constexpr int kMany = 1000;
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
