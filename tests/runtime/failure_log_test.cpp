#include "runtime/failure_log.h"

#include <gtest/gtest.h>

#include <vector>

#include "runtime/environment.h"
#include "tests/support/site_files.h"

namespace rdv {
namespace {

class FailureLogTest : public testing::Test {
 protected:
  void SetUp() override {
    Clear();
    lines_.clear();
    before_ = ReplaceFailureLog([](TextView line) { lines_.emplace_back(line); });
  }
  void TearDown() override {
    ReplaceFailureLog(before_);
    Clear();
  }
  static void Clear() {
    for (const char* name :
         {"RDV_DATABASE_ROUTE", "RDV_COMMON_APPDATA", "RDV_SHELL_FOLDERS", "RDV_REGISTRATION"})
      test::SetEnvironment(name, "");
  }

  static std::vector<Text> lines_;

 private:
  FailureLog before_ = nullptr;
};
std::vector<Text> FailureLogTest::lines_;

TEST_F(FailureLogTest, HasTheFailureOnOneLine) {
  LogFailure(u"Error Description:no such file\r\nError Source: engine - LoadData");
  EXPECT_EQ(lines_, std::vector<Text>{u"TLV_RDV_Line_Config: Error Description:no such file  "
                                      u"Error Source: engine - LoadData"});
}

TEST_F(FailureLogTest, NamesTheVariablesThatAreSetAndNoOthers) {
  test::SetEnvironment("RDV_DATABASE_ROUTE", "jet");
  test::SetEnvironment("RDV_REGISTRATION", "user");
  LogFailure(u"failed");
  test::SetEnvironment("RDV_DATABASE_ROUTE", "");
  LogFailure(u"failed");
  EXPECT_EQ(lines_,
            (std::vector<Text>{
                u"TLV_RDV_Line_Config: failed (RDV_DATABASE_ROUTE=jet, RDV_REGISTRATION=user)",
                u"TLV_RDV_Line_Config: failed (RDV_REGISTRATION=user)"}));
}

TEST_F(FailureLogTest, StaysOnOneLineWhateverAVariableHolds) {
  test::SetEnvironment("RDV_COMMON_APPDATA", "/a\nTLV_RDV_Line_Config: all is well");
  LogFailure(u"failed\u2028twice");
  ASSERT_EQ(lines_.size(), 1u);
  EXPECT_EQ(lines_[0],
            u"TLV_RDV_Line_Config: failed twice "
            u"(RDV_COMMON_APPDATA=/a TLV_RDV_Line_Config: all is well)");
}

TEST_F(FailureLogTest, EachVariableHasItsOwnValue) {
  test::SetEnvironment("RDV_COMMON_APPDATA", "folder");
  test::SetEnvironment("RDV_SHELL_FOLDERS", "file");
  EXPECT_EQ(ValueOf(EnvironmentVariable::CommonAppData), u"folder");
  EXPECT_EQ(ValueOf(EnvironmentVariable::ShellFolders), u"file");
  EXPECT_EQ(ValueOf(EnvironmentVariable::DatabaseRoute), u"");
  EXPECT_EQ(ValueOf(EnvironmentVariable::Registration), u"");
}

}  // namespace
}  // namespace rdv
