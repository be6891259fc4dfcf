// The files of a site, in a folder of their own that is removed with them.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

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

// A sample may be read-only; its copy is not.
inline void CopySample(const std::filesystem::path& sample, const std::filesystem::path& copy) {
  // The cross compiler's library refuses to overwrite, asked for or not.
  std::filesystem::remove(copy);
  std::filesystem::copy_file(sample, copy);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
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
      CopySample(SharedSites() / settings / "ORVANTPlus.ini", SettingsFile());
    }
  }

  std::filesystem::path Folder() const { return folder_.Path(); }
  std::filesystem::path SuiteFolder() const { return Folder() / "Tolvane" / "ORVANT+"; }
  std::filesystem::path DatabaseFile() const { return SuiteFolder() / "Database" / "NewDB.mdb"; }
  std::filesystem::path SettingsFile() const { return SuiteFolder() / "ORVANTPlus.ini"; }

  // Puts another sample database in the place of this one.
  void UseDatabase(std::string_view database) const {
    CopySample(SharedSites() / database / "NewDB.mdb", DatabaseFile());
  }

  void WriteSettings(std::string_view text) const {
    std::ofstream(SettingsFile(), std::ios::binary | std::ios::trunc) << text;
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace rdv::test
