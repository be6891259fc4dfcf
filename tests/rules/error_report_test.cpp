#include "rules/error_report.h"

#include <gtest/gtest.h>

#include <vector>

#include "runtime/failure_log.h"
#include "widgets/memory/memory_screen.h"

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

std::vector<Text> logged;

TEST(FailureLogOfProcedures, HasWhatLoadingCollectsAndWhatIsShownAtOnce) {
  logged.clear();
  const FailureLog before = ReplaceFailureLog([](TextView line) { logged.emplace_back(line); });
  ControlState state;
  AppendErrorBlock(state, kFailure, u"LoadData", BlockStart::RunOn);
  memory::MemoryScreen screen;
  ShowErrorBlock(screen, kFailure, u"cmdApply_Click");
  ReplaceFailureLog(before);
  ASSERT_EQ(logged.size(), 2u);
  EXPECT_NE(logged[0].find(u"Invalid procedure call or argument"), Text::npos);
  EXPECT_NE(logged[0].find(u"LoadData"), Text::npos);
  EXPECT_NE(logged[1].find(u"cmdApply_Click"), Text::npos);
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
