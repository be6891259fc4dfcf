// What the settings file decides.
#include "data/settings_file.h"

#include <gtest/gtest.h>

#include "tests/support/site_fixture.h"

namespace rdv {
namespace {

class SettingsFile : public testing::Test {
 protected:
  SettingsFile() : site_("", "") {}

  static Text Caption(const Text& caption) {
    return GetMOHVolumeCaptionfromINI(caption, ReportUnexpected);
  }
  bool ChinaWith(const std::string& line) {
    site_.WriteSettings("[IMPEDANCE]\r\n" + line + "\r\n");
    return GetHasImplementedImpedanceForChinaFromINI(ReportUnexpected);
  }
  static void ReportUnexpected(TextView message) { ADD_FAILURE() << ToUtf8(message); }

  test::Site site_;
};

TEST_F(SettingsFile, ThatIsAbsentMapsEachCaptionToItselfAndSwitchesChinaOff) {
  EXPECT_EQ(Caption(u"6"), u"6");
  EXPECT_EQ(Caption(u"Någon volym €"), u"Någon volym €");
  EXPECT_FALSE(GetHasImplementedImpedanceForChinaFromINI(ReportUnexpected));
}

TEST_F(SettingsFile, MapsTheCaptionsThatItLists) {
  site_.WriteSettings("[MOHLINEVOLUME]\r\n6=Above medium\r\nhigh=Loud \x80\r\n");
  EXPECT_EQ(Caption(u"6"), u"Above medium");
  EXPECT_EQ(Caption(u"HIGH"), u"Loud €");
  EXPECT_EQ(Caption(u"7"), u"7");
  EXPECT_EQ(Caption(u""), u"");
}

TEST_F(SettingsFile, ThatCannotBeReadIsReportedByEachReaderInItsOwnName) {
  std::filesystem::create_directories(site_.SettingsFile());
  std::vector<Text> messages;
  const auto report = [&](TextView message) { messages.emplace_back(message); };
  EXPECT_EQ(GetMOHVolumeCaptionfromINI(u"6", report), u"");
  EXPECT_FALSE(GetHasImplementedImpedanceForChinaFromINI(report));
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_TRUE(messages[0].starts_with(u"ERROR_Handler: GetMOHVolumeCaptionfromINI   \r\n'"));
  EXPECT_TRUE(
      messages[1].starts_with(u"ERROR_Handler: GetHasImplementedImpedanceForChinaFromINI   \r\n'"));
}

TEST_F(SettingsFile, GivesAtMost254Characters) {
  site_.WriteSettings("[MOHLINEVOLUME]\r\n6=" + std::string(300, 'x') + "\r\n");
  EXPECT_EQ(Caption(u"6"), Text(254, u'x'));
  EXPECT_EQ(Caption(Text(300, u'y')), Text(254, u'y'));
}

TEST_F(SettingsFile, SwitchesChinaOffByNInEitherCaseOrWithoutTheKey) {
  EXPECT_FALSE(ChinaWith("IMPLEMENTEDCHINA=N"));
  EXPECT_FALSE(ChinaWith("implementedchina = n"));
  EXPECT_FALSE(ChinaWith("IMPLEMENTEDCHINA=\"N\""));
  EXPECT_FALSE(ChinaWith("OTHER=Y"));
}

TEST_F(SettingsFile, SwitchesChinaOnByAnyOtherValueAnEmptyOneIncluded) {
  for (const char* value : {"Y", "yes", "0", "No", "NN", ""})
    EXPECT_TRUE(ChinaWith(std::string("IMPLEMENTEDCHINA=") + value)) << value;
}

}  // namespace
}  // namespace rdv
