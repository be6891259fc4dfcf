#include "widgets/message_text.h"

#include <gtest/gtest.h>

#include "widgets/memory/memory_screen.h"

namespace rdv {
namespace {

TEST(MessageText, IsWhatItWasForEveryTextThatShowsItself) {
  for (const TextView text :
       {TextView(u""), TextView(u"Error Description:x\r\nError Source: y - LoadData"),
        TextView(u"a\tb"), TextView(u"\u00E4\u0416\u4E2D\u05D0\u200F!\u0915\u200D"),
        TextView(u"\U0001F514 bell")}) {
    EXPECT_EQ(MessageText(text), text);
  }
}

TEST(MessageText, ShowsWhatComesBehindANul) {
  EXPECT_EQ(MessageText(TextView(u"a\0b", 3)), u"a\uFFFDb");
}

TEST(MessageText, LetsNothingReorderOrHideWhatFollows) {
  EXPECT_EQ(MessageText(u"a\u202Eb\u2066c\u2069d\u2028e\uFFF9f"),
            u"a\uFFFDb\uFFFDc\uFFFDd\uFFFDe\uFFFDf");
  EXPECT_EQ(MessageText(u"a\u001Bb\u007Fc\u0085"), u"a\uFFFDb\uFFFDc\uFFFD");
}

TEST(MessageText, ShowsALoneSurrogateAsWhatCannotBeShown) {
  const Text high(1, char16_t{0xD83D});
  const Text low(1, char16_t{0xDD14});
  EXPECT_EQ(MessageText(u"a" + high + u"b"), u"a\uFFFDb");
  EXPECT_EQ(MessageText(u"a" + low + high), u"a\uFFFD\uFFFD");
  EXPECT_EQ(MessageText(high + high + low), u"\uFFFD" + high + low);
}

TEST(MessageText, KeepsTheButtonsOnTheScreen) {
  const Text longest(kLongestMessage, u'x');
  EXPECT_EQ(MessageText(longest), longest);
  EXPECT_EQ(MessageText(longest + u"y"), longest + u"\u2026");
  Text lines;
  for (size_t line = 1; line < kMostMessageLines; ++line) lines += u"x\r\n";
  EXPECT_EQ(MessageText(lines), lines);
  EXPECT_EQ(MessageText(lines + u"y\nz"), lines + u"y\u2026");
}

TEST(MessageText, IsNotCutWithinACharacterOfTwoUnits) {
  const Text before(kLongestMessage - 1, u'x');
  EXPECT_EQ(MessageText(before + u"\U0001F514"), before + u"\u2026");
}

TEST(MessageText, IsWhatAScreenShows) {
  memory::MemoryScreen screen;
  screen.ShowMessage(TextView(u"a\0\u202Eb", 4), 0, u"c\u202Ed");
  ASSERT_EQ(screen.Messages().size(), 1u);
  EXPECT_EQ(screen.Messages().front().text, u"a\uFFFD\uFFFDb");
  EXPECT_EQ(screen.Messages().front().title, u"c\uFFFDd");
}

}  // namespace
}  // namespace rdv
