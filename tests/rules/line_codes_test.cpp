#include "rules/line_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace rdv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(LineTypeCodes, AreOfferedInTheOrder1_6_8_5) {
  EXPECT_THAT(LineTypeCodes, ElementsAre(1, 6, 8, 5));
}

TEST(CardType, OfAHybridLineIs7AndOfEveryOtherLineItsOwnCode) {
  EXPECT_EQ(CardTypeFor(6), 7);
  for (const int16_t line_type : {int16_t{0}, int16_t{1}, int16_t{5}, int16_t{7}, int16_t{8}}) {
    EXPECT_EQ(CardTypeFor(line_type), line_type);
  }
}

TEST(StartingNodeTypes, FollowTheLineType) {
  EXPECT_THAT(StartNodeTypesOf(5), ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 13, 15, 999));
  EXPECT_THAT(StartNodeTypesOf(6), ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 11, 13, 15, 999));
  EXPECT_THAT(StartNodeTypesOf(8), ElementsAre(11, 999));
  for (const int16_t other : {int16_t{0}, int16_t{1}, int16_t{7}, int16_t{9}, int16_t{-1}}) {
    EXPECT_THAT(StartNodeTypesOf(other), IsEmpty()) << other;
  }
}

TEST(ModeTypes, WithANumberAreEightWhileEditingAndSevenWithout28WhenReadFromTheDatabase) {
  EXPECT_THAT(ModeTypesWithNumber, ElementsAre(1, 2, 25, 26, 27, 28, 32, 33));
  EXPECT_THAT(kStoredModeTypesWithNumber, ElementsAre(1, 2, 25, 26, 27, 32, 33));
}

struct ImpedanceRow {
  int16_t code;
  TextView caption;
};

class ImpedanceTable : public ::testing::TestWithParam<ImpedanceRow> {};

TEST_P(ImpedanceTable, ConvertsBothWays) {
  EXPECT_EQ(ImpedanceCodeToCaption(GetParam().code), GetParam().caption);
  EXPECT_EQ(ImpedanceCaptionToCode(GetParam().caption), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    AllCodes, ImpedanceTable,
    ::testing::Values(ImpedanceRow{0, u"Use Country Code"}, ImpedanceRow{1, u"PBX 600 ohm"},
                      ImpedanceRow{2, u"North America"}, ImpedanceRow{3, u"Europe"},
                      ImpedanceRow{4, u"Australia"}, ImpedanceRow{5, u"China"}));

TEST(Impedance, UnknownCodesShowAsUnknownAndUnknownConvertsBackToZero) {
  for (const int16_t code : {int16_t{6}, int16_t{-1}, std::numeric_limits<int16_t>::min(),
                             std::numeric_limits<int16_t>::max()}) {
    EXPECT_EQ(ImpedanceCodeToCaption(code), u"UNKNOWN") << code;
  }
  EXPECT_EQ(ImpedanceCaptionToCode(u"UNKNOWN"), 0);
}

TEST(Impedance, CaptionsAreComparedWithRegardToCaseAndInFull) {
  EXPECT_EQ(ImpedanceCaptionToCode(u"China"), 5);
  for (const TextView caption : {u"china", u"CHINA", u"China ", u"Chin", u""}) {
    EXPECT_EQ(ImpedanceCaptionToCode(caption), 0) << ToUtf8(caption);
  }
}

}  // namespace
}  // namespace rdv
