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

TEST(FailureReport, StaysSilentWhenTheProcedureSucceeds) {
  const auto report = [](TextView message) { ADD_FAILURE() << ToUtf8(message); };
  EXPECT_EQ(ReportingFailure(u"p", report, -1, [] { return 7; }), 7);
}

}  // namespace
}  // namespace rdv
