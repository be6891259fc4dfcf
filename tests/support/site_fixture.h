// A site of its own for each test: a fresh common application data folder with a copy of one of the
// sample sites in it, which the data folder lookup finds for as long as the test runs.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/connection_route.h"
#include "data/folders_and_files.h"
#include "runtime/text.h"

namespace rdv::test {

inline std::filesystem::path SharedSites() {
  return std::filesystem::path(RDV_SHARED_DIR) / "sites";
}

inline void SetEnvironment(const char* name, const std::string& value) {
#ifdef _WIN32
  _putenv_s(name, value.c_str());
#else
  setenv(name, value.c_str(), 1);
#endif
}

// A folder that is removed with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    static int made = 0;
    const auto unique =
        std::to_string(reinterpret_cast<uintptr_t>(&made)) + "-" +
        std::to_string(std::filesystem::file_time_type::clock::now().time_since_epoch().count()) +
        "-" + std::to_string(++made);
    path_ = std::filesystem::temp_directory_path() / ("rdv-test-" + unique);
    std::filesystem::create_directories(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class Site {
 public:
  // `database` is a folder of the sample sites ("plain", "broken/03-no-bytes"), `settings` one of
  // the folders with a settings file in it; "" leaves the file out.
  explicit Site(std::string_view database, std::string_view settings = "plain/ini-china") {
    std::filesystem::create_directories(DatabaseFile().parent_path());
    if (!database.empty()) UseDatabase(database);
    if (!settings.empty()) {
      std::filesystem::copy_file(SharedSites() / settings / "ORVANTPlus.ini", SettingsFile());
    }
    SetEnvironment("RDV_COMMON_APPDATA", folder_.Path().string());
  }

  std::filesystem::path SuiteFolder() const { return folder_.Path() / "Tolvane" / "ORVANT+"; }
  std::filesystem::path DatabaseFile() const { return SuiteFolder() / "Database" / "NewDB.mdb"; }
  std::filesystem::path SettingsFile() const { return SuiteFolder() / "ORVANTPlus.ini"; }

  // Puts another sample database in the place of this one.
  void UseDatabase(std::string_view database) const {
    std::filesystem::copy_file(SharedSites() / database / "NewDB.mdb", DatabaseFile(),
                               std::filesystem::copy_options::overwrite_existing);
  }

  void WriteSettings(std::string_view text) const {
    std::ofstream(SettingsFile(), std::ios::binary | std::ios::trunc) << text;
  }

  // Runs a statement in the form of the stored commands on the site's database.
  RowTable Execute(TextView statement, const std::vector<Argument>& arguments = {}) const {
    const auto connection = OpenConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" +
                                           GetDatabaseFolder() + u"NewDB.mdb");
    return connection->Execute(statement, arguments).rows.value_or(RowTable{});
  }

 private:
  TemporaryFolder folder_;
};

// A test that works on a sample site; it is skipped where the samples are not at hand.
class SiteTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(SharedSites())) {
      GTEST_SKIP() << "the sample sites are not at hand in " << SharedSites();
    }
  }

  Site& UseSite(std::string_view database, std::string_view settings = "plain/ini-china") {
    return site_.emplace(database, settings);
  }
  Site& CurrentSite() { return site_.value(); }

 private:
  std::optional<Site> site_;
};

}  // namespace rdv::test
