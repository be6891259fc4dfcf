#include "runtime/text.h"

#include <gtest/gtest.h>

#include "runtime/json_text.h"

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

TEST(JsonText, IsEscapedWhereJsonDemandsItAndWhereUtf8CannotExpressIt) {
  EXPECT_EQ(JsonText(u"Lobby 2"), R"("Lobby 2")");
  EXPECT_EQ(JsonText(u""), R"("")");
  EXPECT_EQ(JsonText(u"say \"x\" \\ /"), R"("say \"x\" \\ /")");
  EXPECT_EQ(JsonText(u"\b\f\n\r\t\u0001\u001f"), R"("\b\f\n\r\t\u0001\u001f")");
  EXPECT_EQ(JsonText(u"Z\u00fcrich \u20ac \x7f"), "\"Z\xC3\xBCrich \xE2\x82\xAC \x7F\"");
  EXPECT_EQ(JsonText(u"\U0001F514"), "\"\xF0\x9F\x94\x94\"");
  const char16_t halves[] = {u'a', 0xD83D, u'b', 0xDD14, 0xD83D};
  EXPECT_EQ(JsonText(TextView(halves, 5)), R"("a\ud83db\udd14\ud83d")");
}

}  // namespace
}  // namespace rdv
