#include "data/failure_report.h"

#include <gtest/gtest.h>

#include <vector>

namespace rdv {
namespace {

TEST(FailureReport, NamesTheProcedureAndTheDescriptionOfItsError) {
  std::vector<Text> messages;
  const auto report = [&](TextView message) { messages.emplace_back(message); };
  const int result = ReportingFailure(u"GetMOHVolumeCaptionfromINI", report, -1,
                                      []() -> int { Raise(LanguageError::UnsupportedValueType); });
  EXPECT_EQ(result, -1);
  EXPECT_EQ(messages, std::vector<Text>{u"ERROR_Handler: GetMOHVolumeCaptionfromINI   \r\n"
                                        u"Unsupported value type"});
}

TEST(FailureReport, GoesToTheLogOfFailuresToo) {
  static std::vector<Text> logged;
  logged.clear();
  const FailureLog before = ReplaceFailureLog([](TextView line) { logged.emplace_back(line); });
  ReportingFailure(
      u"GetMOHVolumeCaptionfromINI", [](TextView) {}, -1,
      []() -> int { Raise(LanguageError::UnsupportedValueType); });
  ReplaceFailureLog(before);
  ASSERT_EQ(logged.size(), 1u);
  EXPECT_NE(logged[0].find(u"GetMOHVolumeCaptionfromINI"), Text::npos);
  EXPECT_NE(logged[0].find(u"Unsupported value type"), Text::npos);
}

TEST(FailureReport, StaysSilentWhenTheProcedureSucceeds) {
  const auto report = [](TextView message) { ADD_FAILURE() << ToUtf8(message); };
  EXPECT_EQ(ReportingFailure(u"p", report, -1, [] { return 7; }), 7);
}

}  // namespace
}  // namespace rdv
