// Where the data folder is found off Windows, where its two sources are a variable and a file.
#ifndef _WIN32

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "data/folders_and_files.h"
#include "tests/support/site_fixture.h"

namespace rdv {
namespace {

class Folders : public testing::Test {
 protected:
  Folders() {
    SetFirstSource(first_.Path().string());
    SetSecondSource(second_.Path().string());
  }
  ~Folders() override { unsetenv("RDV_SHELL_FOLDERS"); }

  static void SetFirstSource(const std::string& folder) {
    test::SetEnvironment("RDV_COMMON_APPDATA", folder);
  }
  void SetSecondSource(const std::string& folder) {
    const auto file = second_.Path() / "shell-folders.ini";
    std::ofstream(file) << "[Shell Folders]\nCommon AppData=" << folder << "\n";
    test::SetEnvironment("RDV_SHELL_FOLDERS", file.string());
  }

  static Text SuiteFolderIn(const test::TemporaryFolder& folder) {
    return FromUtf8(folder.Path().string()) + u"/Tolvane/ORVANT+/";
  }
  static void MakeSuiteFolder(const test::TemporaryFolder& folder) {
    std::filesystem::create_directories(folder.Path() / "Tolvane" / "ORVANT+");
  }

  test::TemporaryFolder first_;
  test::TemporaryFolder second_;
};

TEST_F(Folders, TheFirstSourcesSuiteFolderIsTakenWhenItExists) {
  MakeSuiteFolder(first_);
  MakeSuiteFolder(second_);
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(first_));
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

TEST_F(Folders, TheSecondSourceIsTakenEvenWhenItNamesTheSameFolder) {
  SetSecondSource(first_.Path().string());
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(first_));
}

TEST_F(Folders, AFileInThePlaceOfTheSuiteFolderIsNoFolder) {
  std::filesystem::create_directories(first_.Path() / "Tolvane");
  std::ofstream(first_.Path() / "Tolvane" / "ORVANT+") << "x";
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
}

TEST_F(Folders, NamesAreMatchedAsTheyStandOnDisk) {
  std::filesystem::create_directories(first_.Path() / "TOLVANE" / "ORVANT+");
  EXPECT_EQ(GetSuiteFolder(), SuiteFolderIn(second_));
}

TEST_F(Folders, WithoutAnySourceTheFolderLiesAtTheRoot) {
  SetFirstSource("");
  test::SetEnvironment("RDV_SHELL_FOLDERS", (first_.Path() / "none.ini").string());
  EXPECT_EQ(GetSpecialFolder(kCommonAppDataFolder), u"");
  EXPECT_EQ(GetCommonAppDataFolder(), u"");
  EXPECT_EQ(GetSuiteFolder(), u"/Tolvane/ORVANT+/");
}

TEST_F(Folders, OnlyTheCommonApplicationDataFolderIsKnown) {
  EXPECT_EQ(GetSpecialFolder(kCommonAppDataFolder), FromUtf8(first_.Path().string()));
  EXPECT_EQ(GetSpecialFolder(26), u"");
}

TEST_F(Folders, PathsKeepCharactersOutsideAscii) {
  SetSecondSource("/srv/Größe 名");
  EXPECT_EQ(GetCommonAppDataFolder(), u"/srv/Größe 名");
}

TEST_F(Folders, TheDatabaseFolderLiesInTheSuiteFolder) {
  MakeSuiteFolder(first_);
  EXPECT_EQ(GetDatabaseFolder(), SuiteFolderIn(first_) + u"Database/");
}

}  // namespace
}  // namespace rdv

#endif
