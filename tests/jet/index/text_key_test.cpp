// Keys of texts: bytes found in the indexes of files that Access wrote.
#include <gtest/gtest.h>

#include "data/jet/index/index_key.h"
#include "tests/jet/bytes_of.h"
#include "tests/jet/corpus.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

Key Jet4Key(TextView text, bool descending = false) {
  Key key = {0x7F};
  char16_t unsupported = 0;
  EXPECT_TRUE(AppendTextKeyJet4(text, descending, key, unsupported))
      << static_cast<int>(unsupported);
  return key;
}

Key Jet3Key(TextView text) {
  Key key = {0x7F};
  AppendTextKeyJet3(text, false, key);
  return key;
}

TEST(TextKeyJet4, OfPlainText) {
  EXPECT_EQ(Jet4Key(u"only ascii chars"),
            BytesOf("7f 64 62 5e 76 07 4a 6b 4d 59 59 07 4d 57 4a 69 6b 01 00"));
  EXPECT_EQ(Jet4Key(u"CORE USER"), BytesOf("7f 4d 64 69 51 07 6f 6b 51 69 01 00"));
  EXPECT_EQ(Jet4Key(u"row2"), BytesOf("7f 69 64 73 3a 01 00"));
  EXPECT_EQ(Jet4Key(u""), BytesOf("7f 01 00"));
}

TEST(TextKeyJet4, OfAccents) {
  EXPECT_EQ(Jet4Key(u"ääkkösiä"),
            BytesOf("7f 4a 4a 5c 5c 64 6b 59 4a 01 13 13 02 02 13 02 02 13 00"));
  EXPECT_EQ(Jet4Key(u"ümlaut"), BytesOf("7f 6f 60 5e 4a 6f 6d 01 13 00"));
}

TEST(TextKeyJet4, OfACombiningMarkIsThatOfTheAccentedLetter) {
  EXPECT_EQ(Jet4Key(u"\u0065\u0301"), Jet4Key(u"\u00E9"));
  EXPECT_EQ(Jet4Key(u"\u0043\u0327a"), Jet4Key(u"\u00C7a"));
}

TEST(TextKeyJet4, OfOtherAlphabets) {
  EXPECT_EQ(Jet4Key(u"Мир"), BytesOf("7f 79 43 79 3b 79 48 01 00"));
  EXPECT_EQ(Jet4Key(u"\u03F0\u03B1\u1F76 \u03C4\u1F79\u03C4' \u1F10\u03B3\u1F7C \u039A\u1F7B"
                    u"\u03F0\u03BB\u03C9\u03C0\u03B1"),
            BytesOf("7f 79 15 79 0c 07 79 1e 79 1e 07 79 0e 07 79 15 79 15 79 16 79 23 79 1b 79 0c "
                    "01 03 02 02 02 02 02 02 02 02 03 01 01 01 80 1b 06 80 00"));
}

TEST(TextKeyJet4, PutsHyphensAndApostrophesLast) {
  EXPECT_EQ(Jet4Key(u"-1"), BytesOf("7f 38 01 01 01 01 80 07 06 82 00"));
}

TEST(TextKeyJet4, IsBlindToCaseAndToBlanksAtTheEnd) {
  EXPECT_EQ(Jet4Key(u"Straße 5  "), Jet4Key(u"STRASSE 5"));
  EXPECT_EQ(Jet4Key(u"ŽLUŤOUČKÝ kůň"), Jet4Key(u"žluťoučký KŮŇ"));
  EXPECT_NE(Jet4Key(u" a"), Jet4Key(u"a"));
}

TEST(TextKeyJet4, TakesTheFirst255CharactersOnly) {
  const Text text(255, u'x');
  EXPECT_EQ(Jet4Key(text + u"yz"), Jet4Key(text));
  EXPECT_NE(Jet4Key(text.substr(1)), Jet4Key(text));
}

TEST(TextKeyJet4, DescendingIsTheComplementAndATerminator) {
  const Key ascending = Jet4Key(u"row2");
  const Key descending = Jet4Key(u"row2", true);
  ASSERT_EQ(descending.size(), ascending.size() + 1);
  for (size_t i = 1; i < ascending.size(); ++i) EXPECT_EQ(descending[i], uint8_t(~ascending[i]));
  EXPECT_EQ(descending.back(), 0);
}

TEST(TextKeyJet4, KnowsEveryCharacterOfLatin1AndLatinExtendedA) {
  for (char16_t unit = 0; unit < 0x180; ++unit) {
    Key key;
    char16_t unsupported = 0;
    EXPECT_TRUE(AppendTextKeyJet4(TextView(&unit, 1), false, key, unsupported))
        << static_cast<int>(unit);
  }
}

TEST(TextKeyJet4, TellsTheCharacterThatItDoesNotKnow) {
  Key key;
  char16_t unsupported = 0;
  EXPECT_FALSE(AppendTextKeyJet4(u"a\u6F22b", false, key, unsupported));
  EXPECT_EQ(unsupported, u'\u6F22');
}

RDV_TEST_ON_FILE(testing::Test, TextKeyOfEveryCharacterOfLatin1AsAccessStoredIt,
                 "corpus/jet4/testUnicodeCompV2003.mdb") {
  Text all;
  for (char16_t unit = 1; unit <= 0xFF; ++unit) all.push_back(unit);
  const Key key = Jet4Key(all);
  ASSERT_EQ(key.size(), 685u);
  OpenFile file(GetParam());
  const Bytes page = file.Reader().RawPage(57);
  const Bytes stored = page.subspan(kJet4.index.entries, key.size());
  EXPECT_EQ(key, Key(stored.begin(), stored.end()));
}

TEST(TextKeyJet3, OfAccentsCountsTheLettersBetweenThem) {
  EXPECT_EQ(Jet3Key(u"AAÄAA"), BytesOf("7f 60 60 60 60 60 02 26 00"));
  EXPECT_EQ(Jet3Key(u"Plutzer Lebensmittelgroßmärkte AG"),
            BytesOf("7f 73 6d 78 77 7e 66 75 11 6d 66 61 66 70 76 6f 6a 77 77 66 6d 68 75 72 76 76 "
                    "6f 60 75 6c 77 66 11 60 68 02 22 22 22 22 22 60"));
}

TEST(TextKeyJet3, WithoutAccentsEndsAtOnce) {
  EXPECT_EQ(Jet3Key(u"AAßAA"), BytesOf("7f 60 60 76 76 60 60 00"));
  EXPECT_EQ(Jet3Key(u"AA-AA"), BytesOf("7f 60 60 1e 60 60 00"));
  EXPECT_EQ(Jet3Key(u"Frankfurt a.M. "),
            BytesOf("7f 67 75 60 70 6c 67 78 75 77 11 60 1f 6f 1f 00"));
}

TEST(TextKeyJet3, LeavesCharactersOutsideTheCodePageOut) {
  EXPECT_EQ(Jet3Key(u"a\u6F22b"), Jet3Key(u"ab"));
  EXPECT_NE(Jet3Key(u"a?b"), Jet3Key(u"ab"));
}

TEST(CompareTexts, OrdersAsJetDoes) {
  EXPECT_EQ(CompareTexts(u"Sales ", u"SALES"), 0);
  EXPECT_LT(CompareTexts(u"a", u"B"), 0);
  EXPECT_LT(CompareTexts(u"resume", u"résumé"), 0);
  EXPECT_LT(CompareTexts(u"résumé", u"resumes"), 0);
  EXPECT_GT(CompareTexts(u"coop", u"a"), 0);
  EXPECT_NE(CompareTexts(u"co-op", u"coop"), 0);
  EXPECT_GT(CompareTexts(u"漢", u"z"), 0);
  EXPECT_EQ(CompareTexts(u"漢", u"漢"), 0);
  EXPECT_LT(CompareTexts(u"漢", u"漣"), 0);
}

}  // namespace
}  // namespace rdv::jet
