#include "tools/lines/site_location.h"

#include <filesystem>

#include "data/folders_and_files.h"
#include "tools/command_line/command_line.h"
#include "tools/database_file/database_of_site.h"

namespace rdv::lines {
namespace {

namespace fs = std::filesystem;
namespace names = ORVANTPlusFilesAndFolders;

Text WithSeparator(const fs::path& folder) {
  return folder.u16string() + Text(kPathSeparator);
}

}  // namespace

SiteLocation LocateSite(const std::optional<Text>& site) {
  if (!site) {
    if (GetSpecialFolder(kCommonAppDataFolder).empty() && GetCommonAppDataFolder().empty()) {
      throw tools::UsageError(
          "SITE is missing: this machine has no folder of common application data to look in");
    }
    return {GetDatabaseFolder() + Text(names::kDatabaseFile), GetSuiteFolder()};
  }
  const fs::path path = FileOf(fs::path(*site));
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) {
    const fs::path database = DatabaseOfSite(path);
    return {FileOf(database).u16string(), WithSeparator(database.parent_path().parent_path())};
  }
  const fs::path folder = fs::absolute(path, ignored).parent_path();
  const bool is_database_folder =
      EqualsIgnoringCase(folder.filename().u16string(), names::kDatabaseFolder);
  return {path.u16string(), WithSeparator(is_database_folder ? folder.parent_path() : folder)};
}

}  // namespace rdv::lines
