#include "rules/line_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "runtime/error.h"

namespace rdv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<int32_t> Numbers(std::span<const Code> codes) {
  std::vector<int32_t> numbers;
  for (const Code code : codes) numbers.push_back(NumberOf(code));
  return numbers;
}

TEST(Code, IsReadFromACellAsAWholeNumberOrNotAtAll) {
  EXPECT_EQ(CodeIn(u"999"), Code{999});
  EXPECT_EQ(CodeIn(u" 8 "), Code{8});
  EXPECT_EQ(CodeIn(u"-1"), Code{-1});
  for (const TextView text : {u"", u"N/A", u"6x"}) {
    EXPECT_THROW(CodeIn(text), RuntimeError) << ToUtf8(text);
  }
}

TEST(LineTypeCodes, AreOfferedInTheOrder1_6_8_5) {
  EXPECT_THAT(Numbers(LineTypeCodes), ElementsAre(1, 6, 8, 5));
}

TEST(CardType, OfAHybridLineIs7AndOfEveryOtherLineItsOwnCode) {
  EXPECT_EQ(CardTypeFor(Code{6}), Code{7});
  for (const Code line_type : Codes(0, 1, 5, 7, 8)) {
    EXPECT_EQ(CardTypeFor(line_type), line_type);
  }
}

TEST(StartingNodeTypes, FollowTheLineType) {
  EXPECT_THAT(Numbers(StartNodeTypesOf(Code{5})),
              ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 13, 15, 999));
  EXPECT_THAT(Numbers(StartNodeTypesOf(Code{6})),
              ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 11, 13, 15, 999));
  EXPECT_THAT(Numbers(StartNodeTypesOf(Code{8})), ElementsAre(11, 999));
  for (const Code other : Codes(0, 1, 7, 9, -1)) {
    EXPECT_THAT(StartNodeTypesOf(other), IsEmpty()) << NumberOf(other);
  }
}

TEST(ModeTypes, WithANumberAreEightWhileEditingAndSevenWithout28WhenReadFromTheDatabase) {
  EXPECT_THAT(Numbers(ModeTypesWithNumber), ElementsAre(1, 2, 25, 26, 27, 28, 32, 33));
  EXPECT_THAT(Numbers(kStoredModeTypesWithNumber), ElementsAre(1, 2, 25, 26, 27, 32, 33));
}

struct ImpedanceRow {
  Code code;
  TextView caption;
};

class ImpedanceTable : public ::testing::TestWithParam<ImpedanceRow> {};

TEST_P(ImpedanceTable, ConvertsBothWays) {
  EXPECT_EQ(ImpedanceCodeToCaption(GetParam().code), GetParam().caption);
  EXPECT_EQ(ImpedanceCaptionToCode(GetParam().caption), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(AllCodes, ImpedanceTable,
                         ::testing::Values(ImpedanceRow{Code{0}, u"Use Country Code"},
                                           ImpedanceRow{Code{1}, u"PBX 600 ohm"},
                                           ImpedanceRow{Code{2}, u"North America"},
                                           ImpedanceRow{Code{3}, u"Europe"},
                                           ImpedanceRow{Code{4}, u"Australia"},
                                           ImpedanceRow{Code{5}, u"China"}));

TEST(Impedance, UnknownCodesShowAsUnknownAndUnknownConvertsBackToZero) {
  for (const Code code : Codes(6, -1, -32768, 32767)) {
    EXPECT_EQ(ImpedanceCodeToCaption(code), u"UNKNOWN") << NumberOf(code);
  }
  EXPECT_EQ(ImpedanceCaptionToCode(u"UNKNOWN"), Code{0});
}

TEST(Impedance, CaptionsAreComparedWithRegardToCaseAndInFull) {
  EXPECT_EQ(ImpedanceCaptionToCode(u"China"), Code{5});
  for (const TextView caption : {u"china", u"CHINA", u"China ", u"Chin", u""}) {
    EXPECT_EQ(ImpedanceCaptionToCode(caption), Code{0}) << ToUtf8(caption);
  }
}

}  // namespace
}  // namespace rdv
