#include "runtime/text.h"

#include <gtest/gtest.h>

namespace rdv {
namespace {

TEST(Text, Utf8RoundTripKeepsCharactersBeyondTheBasicPlaneAndLoneSurrogates) {
  const Text text = u"Zürich \U0001F4DE \xD800x";
  EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
}

TEST(Text, MalformedUtf8BecomesTheReplacementCharacter) {
  EXPECT_EQ(FromUtf8("a\xFF"), u"a\uFFFD");
  EXPECT_EQ(FromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");
  EXPECT_EQ(FromUtf8("\xE2\x82"), u"\uFFFD\uFFFD");
}

TEST(Text, Windows1252MapsItsUndefinedBytesToControlCharacters) {
  EXPECT_EQ(FromWindows1252("\x80\x81\xE4"), u"\u20AC\u0081\u00E4");
  EXPECT_EQ(ToWindows1252(u"\u20AC\u0081\u00E4\u0416"), "\x80\x81\xE4?");
}

TEST(Text, UpperCasePairsLatinExtendedGreekAndCyrillic) {
  EXPECT_EQ(UpperCase(TextView(u"äÿ÷ß")), u"ÄŸ÷ß");
  EXPECT_EQ(UpperCase(TextView(u"āĺőž")), u"ĀĹŐŽ");
  EXPECT_EQ(UpperCase(TextView(u"άέως")), u"ΆΈΩΣ");
  EXPECT_EQ(UpperCase(TextView(u"яѐ")), u"ЯЀ");
  EXPECT_TRUE(EqualsIgnoringCase(u"Disabled", u"dISABLED"));
  EXPECT_FALSE(EqualsIgnoringCase(u"Disabled", u"Disable"));
}

TEST(Text, TrimTakesBlanksOffBothEndsOnly) {
  EXPECT_EQ(Trim(u"  a b  "), u"a b");
  EXPECT_EQ(Trim(u"   "), u"");
}

}  // namespace
}  // namespace rdv
