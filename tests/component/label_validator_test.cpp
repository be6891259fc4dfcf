// Which component is asked about a label, with a stand-in for the suite's own.
#include "component/object/label_validator.h"

#include <gtest/gtest.h>

#include "runtime/error.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/stand_in_class.h"

namespace rdv::test {
namespace {

constexpr const wchar_t* kValidatorName = L"TLV_Validate_TEXTField.Business_Rules";

// Accepted by the check that is built in, and the other way round by the stand-in.
constexpr TextView kPlain = u"Hall 1";
constexpr TextView kQuoted = u"\"Hall\"";

class Label : public OleTest {
 protected:
  static bool AcceptedByTheBuiltIn(LabelValidator& validator) {
    return validator.IsAcceptable(kPlain) && !validator.IsAcceptable(kQuoted);
  }
};

TEST_F(Label, IsCheckedByTheBuiltInRuleWhereNothingIsRegistered) {
  EXPECT_TRUE(AcceptedByTheBuiltIn(*MakeLabelValidator()));
}

TEST_F(Label, IsShownToTheOneMethodThatTakesATextAndAnswersABoolean) {
  StandInClass suite(kValidatorName, {{.name = L"Version", .result = VT_I4},
                                      {.name = L"Length", .takes = VT_BSTR, .result = VT_I4},
                                      {.name = L"IsValid", .takes = VT_BSTR},
                                      {.name = L"IsNumber", .takes = VT_I4}});
  suite.answer = VARIANT_FALSE;
  const auto validator = MakeLabelValidator();
  EXPECT_FALSE(validator->IsAcceptable(kPlain));
  suite.answer = VARIANT_TRUE;
  EXPECT_TRUE(validator->IsAcceptable(kQuoted));
  EXPECT_EQ(suite.asked, (std::vector<std::wstring>{L"IsValid: Hall 1", L"IsValid: \"Hall\""}));
}

TEST_F(Label, MayBePassedByReference) {
  StandInClass suite(kValidatorName,
                     {{.name = L"IsValid", .takes = VT_BSTR, .by_reference = true}});
  suite.answer = VARIANT_FALSE;
  EXPECT_FALSE(MakeLabelValidator()->IsAcceptable(kPlain));
  EXPECT_EQ(suite.asked, std::vector<std::wstring>{L"IsValid: Hall 1"});
}

TEST_F(Label, IsCheckedByTheBuiltInRuleWhereTwoMethodsFit) {
  StandInClass suite(kValidatorName, {{.name = L"IsValid", .takes = VT_BSTR},
                                      {.name = L"IsShort", .takes = VT_BSTR}});
  EXPECT_TRUE(AcceptedByTheBuiltIn(*MakeLabelValidator()));
  EXPECT_TRUE(suite.asked.empty());
}

TEST_F(Label, IsCheckedByTheBuiltInRuleWhereNoMethodFits) {
  StandInClass suite(kValidatorName, {{.name = L"Length", .takes = VT_BSTR, .result = VT_I4},
                                      {.name = L"IsNumber", .takes = VT_I4},
                                      {.name = L"IsReady"}});
  EXPECT_TRUE(AcceptedByTheBuiltIn(*MakeLabelValidator()));
  EXPECT_TRUE(suite.asked.empty());
}

TEST_F(Label, ThatTheComponentFailsOnRaisesItsError) {
  StandInClass suite(kValidatorName, {{.name = L"IsValid", .takes = VT_BSTR}});
  suite.failure = L"The dictionary is missing";
  const auto validator = MakeLabelValidator();
  try {
    validator->IsAcceptable(kPlain);
    ADD_FAILURE() << "no error";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), kStandInFailure);
    EXPECT_EQ(error.Description(), u"The dictionary is missing");
    EXPECT_EQ(error.Source(), u"Stand-in");
  }
}

}  // namespace
}  // namespace rdv::test
