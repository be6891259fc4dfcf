// Which component is asked about a label, with a stand-in for the suite's own.
#include "component/object/label_validator.h"

#include <gtest/gtest.h>

#include "runtime/error.h"
#include "tests/component/support/loaded_control.h"
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

// What the rows show whenever a component that was asked about a label is let go.
class LabelOfSelectedRows : public LoadedControl {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(LoadedControl::SetUp());
    suite_.on_object_gone = [this] { shown_at_release_.push_back(Text(row_, column::kLabel)); };
    ASSERT_NO_FATAL_FAILURE(PlaceAndLoad());
    ASSERT_NO_FATAL_FAILURE(Open(control_id::txtLabel));
  }
  StandInClass suite_{kValidatorName, {{.name = L"IsValid", .takes = VT_BSTR}}};
  std::vector<std::wstring> shown_at_release_;
};

// A component may end the whole of its library with its last object.
TEST_F(LabelOfSelectedRows, IsWrittenBeforeTheComponentIsLetGo) {
  SendMessageW(GetFocus(), WM_CHAR, L'x', 1);
  EXPECT_EQ(suite_.asked, std::vector<std::wstring>{L"IsValid: x"});
  EXPECT_EQ(shown_at_release_, std::vector<std::wstring>{L"x"});
}

TEST_F(LabelOfSelectedRows, ThatIsRejectedIsWrittenCleanedBeforeEitherComponentIsLetGo) {
  const BoxAnswerer boxes;
  suite_.answer = VARIANT_FALSE;
  SetWindowTextW(GetFocus(), L"y\"");
  // The change that cleaning makes is asked about, too, and ends first.
  EXPECT_EQ(suite_.asked, (std::vector<std::wstring>{L"IsValid: y\"", L"IsValid: y"}));
  EXPECT_EQ(shown_at_release_, (std::vector<std::wstring>{L"y", L"y"}));
  EXPECT_EQ(boxes.Texts().size(), 2u);
}

}  // namespace
}  // namespace rdv::test
