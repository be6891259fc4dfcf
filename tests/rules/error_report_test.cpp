#include "rules/error_report.h"

#include <gtest/gtest.h>

namespace rdv {
namespace {

const RuntimeError kFailure(5, u"Invalid procedure call or argument", u"TLV_RDV_Line_Config");

TEST(ErrorBlock, NamesDescriptionSourceAndProcedure) {
  EXPECT_EQ(ErrorBlock(kFailure, u"cmdApply_Click"),
            u"Error Description:Invalid procedure call or argument\r\n"
            u"Error Source: TLV_RDV_Line_Config - cmdApply_Click");
}

TEST(CollectedBlock, RunsOnFromTheOneBeforeUnlessItsProcedureSaysThatItStartsALine) {
  ControlState state;
  state.LoadErrorText = u"before";
  AppendErrorBlock(state, kFailure, u"LoadData", BlockStart::RunOn);
  EXPECT_EQ(state.LoadErrorText, u"before" + ErrorBlock(kFailure, u"LoadData"));
  state.LoadErrorText = u"before";
  AppendErrorBlock(state, kFailure, u"FormatLVControl", BlockStart::OnALineOfItsOwn);
  EXPECT_EQ(state.LoadErrorText, u"before\r\n" + ErrorBlock(kFailure, u"FormatLVControl"));
}

TEST(Loader, ThatFailsIsFalseAndOnRecordOnce) {
  ControlState state;
  EXPECT_FALSE(RunLoader(state, u"LoadData", [] { Raise(LanguageError::InvalidUseOfNull); }));
  EXPECT_EQ(state.LoadErrorText,
            u"Error Description:Invalid use of Null\r\n"
            u"Error Source: TLV_RDV_Line_Config - LoadData");
  EXPECT_TRUE(RunLoader(state, u"LoadData", [] {}));
}

}  // namespace
}  // namespace rdv
