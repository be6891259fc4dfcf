// Where the data folder is found.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "data/folders_and_files.h"
#include "data/settings_file.h"
#include "tests/data/folder_sources.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"

namespace rdv {
namespace {

class Folders : public testing::Test {
 protected:
  Folders() { UseSources(Path(first_), Path(second_)); }

  void UseSources(const Text& first, const Text& second) {
    sources_.reset();
    sources_.emplace(first, second);
  }

  static Text Path(const test::TemporaryFolder& folder) { return folder.Path().u16string(); }
  // With the separator behind each name.
  static Text Below(Text folder, std::initializer_list<TextView> names) {
    for (const TextView name : names) (folder += name) += kPathSeparator;
    return folder;
  }
  static Text SuiteFolderIn(const test::TemporaryFolder& folder) {
    return Below(Path(folder) + Text(kPathSeparator), {u"Tolvane", u"ORVANT+"});
  }
  static void MakeSuiteFolder(const test::TemporaryFolder& folder) {
    std::filesystem::create_directories(folder.Path() / "Tolvane" / "ORVANT+");
  }

  test::TemporaryFolder first_;
  test::TemporaryFolder second_;

  std::optional<test::FolderSources> sources_;
};

TEST_F(Folders, TheFirstSourcesSuiteFolderIsTakenWhenItExists) {
  MakeSuiteFolder(first_);
  MakeSuiteFolder(second_);
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(first_));
}

TEST_F(Folders, TheSecondSourceIsTakenEvenWhenItNamesTheSameFolder) {
  UseSources(Path(first_), Path(first_));
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(first_));
}

TEST_F(Folders, PathsKeepCharactersOutsideAscii) {
#ifdef _WIN32
  const Text name = u"Größe";  // what the code page has
#else
  const Text name = u"Größe 名";
#endif
  const Text folder = Path(second_) + Text(kPathSeparator) + name;
  UseSources(Path(first_), folder);
  EXPECT_EQ(GetCommonAppDataFolder(), folder);
}

TEST_F(Folders, TheDatabaseFolderLiesInTheSuiteFolder) {
  MakeSuiteFolder(first_);
  EXPECT_EQ(GetDatabaseFolder(), Below(SuiteFolderIn(first_), {u"Database"}));
}

TEST_F(Folders, TheSecondSourceIsTakenWhenTheFirstHasNoSuiteFolder) {
  std::filesystem::create_directories(first_.Path() / "Tolvane");
  MakeSuiteFolder(second_);
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
}

TEST_F(Folders, TheSecondSourcesSuiteFolderIsTakenWhetherItExistsOrNotAndIsNotCreated) {
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
  EXPECT_FALSE(std::filesystem::exists(second_.Path() / "Tolvane"));
  EXPECT_FALSE(std::filesystem::exists(first_.Path() / "Tolvane"));
}

TEST_F(Folders, AFileInThePlaceOfTheSuiteFolderIsNoFolder) {
  std::filesystem::create_directories(first_.Path() / "Tolvane");
  std::ofstream(first_.Path() / "Tolvane" / "ORVANT+") << "x";
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
}

#ifndef _WIN32

TEST_F(Folders, NamesAreMatchedAsTheyStandOnDisk) {
  std::filesystem::create_directories(first_.Path() / "TOLVANE" / "ORVANT+");
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
}

TEST_F(Folders, WithoutAnySourceTheFolderLiesAtTheRoot) {
  UseSources(u"", u"");
  EXPECT_EQ(GetSpecialFolder(kCommonAppDataFolder), u"");
  EXPECT_EQ(GetCommonAppDataFolder(), u"");
  EXPECT_EQ(GetSuiteFolder(), u"/Tolvane/ORVANT+/");
}

TEST_F(Folders, OnlyTheCommonApplicationDataFolderIsKnown) {
  EXPECT_EQ(GetSpecialFolder(kCommonAppDataFolder), Path(first_));
  EXPECT_EQ(GetSpecialFolder(26), u"");
}

#else

TEST_F(Folders, ASecondSourceOfAnUnknownTypeIsReportedByTheReadersOfTheSettingsFile) {
  const uint64_t number = 7;
  sources_->Registry().SetFolder(REG_QWORD, &number, sizeof number);
  std::vector<Text> messages;
  const auto report = [&](TextView message) { messages.emplace_back(message); };
  EXPECT_EQ(GetMOHVolumeCaptionfromINI(u"6", report), u"");
  EXPECT_FALSE(GetHasImplementedImpedanceForChinaFromINI(report));
  const std::vector<Text> expected = {
      u"ERROR_Handler: GetMOHVolumeCaptionfromINI   \r\nUnsupported value type",
      u"ERROR_Handler: GetHasImplementedImpedanceForChinaFromINI   \r\nUnsupported value type"};
  EXPECT_EQ(messages, expected);
}

TEST_F(Folders, OnlyTheCommonApplicationDataFolderIsThatOfTheEnvironment) {
  const SiteFolder named(Path(first_));
  EXPECT_EQ(GetSpecialFolder(kCommonAppDataFolder), Path(first_));
  EXPECT_EQ(GetSpecialFolder(0x7FF), u"");
}

#endif

// A process that was given a folder never works on the machine's.
TEST_F(Folders, ThatOfTheEnvironmentStandsForBothSources) {
  MakeSuiteFolder(first_);
  MakeSuiteFolder(second_);
  const test::TemporaryFolder third;
  {
    const SiteFolder named(Path(third));
    EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(third));
    MakeSuiteFolder(third);
    EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(third));
  }
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(first_));
}

}  // namespace
}  // namespace rdv
