// The files of a site, in a folder of their own that is removed with them.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/sites/sample_sites.h"

namespace rdv::test {

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

// A sample may be read-only; its copy is not.
inline void CopySample(const std::filesystem::path& sample, const std::filesystem::path& copy) {
  // The cross compiler's library refuses to overwrite, asked for or not.
  std::filesystem::remove(copy);
  std::filesystem::copy_file(sample, copy);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
}

// "plain/ini-china": of the site plain, its settings of this name.
inline std::filesystem::path SettingsOf(std::string_view settings) {
  const std::filesystem::path path(settings);
  return sites::SiteFolder(path.parent_path().generic_string()) / path.filename() /
         "ORVANTPlus.ini";
}

// A common application data folder with a copy of one of the sample sites in it.
class SiteFiles {
 public:
  // `database` is a folder of the sample sites ("plain", "broken/03-no-bytes"), `settings` one of
  // the folders with a settings file in it; "" leaves the file out.
  explicit SiteFiles(std::string_view database, std::string_view settings = "plain/ini-china") {
    std::filesystem::create_directories(DatabaseFile().parent_path());
    if (!database.empty()) UseDatabase(database);
    if (!settings.empty()) {
      CopySample(SettingsOf(settings), SettingsFile());
    }
  }

  std::filesystem::path Folder() const { return folder_.Path(); }
  std::filesystem::path SuiteFolder() const { return Folder() / "Tolvane" / "ORVANT+"; }
  std::filesystem::path DatabaseFile() const { return SuiteFolder() / "Database" / "NewDB.mdb"; }
  std::filesystem::path SettingsFile() const { return SuiteFolder() / "ORVANTPlus.ini"; }

  // Puts another sample database in the place of this one.
  void UseDatabase(std::string_view database) const {
    CopySample(sites::SiteFolder(std::string(database)) / "NewDB.mdb", DatabaseFile());
  }

  void WriteSettings(std::string_view text) const {
    std::ofstream(SettingsFile(), std::ios::binary | std::ios::trunc) << text;
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace rdv::test
