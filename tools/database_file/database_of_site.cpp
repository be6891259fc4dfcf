#include "tools/database_file/database_of_site.h"

#include <stdexcept>

#include "data/folders_and_files.h"
#include "tools/database_file/explained.h"

namespace rdv {
namespace {

namespace fs = std::filesystem;
namespace names = ORVANTPlusFilesAndFolders;

fs::path DatabaseBelow(const fs::path& folder) {
  return folder / names::kCompanyFolder / names::kSuiteFolder / names::kDatabaseFolder /
         names::kDatabaseFile;
}

bool IsSite(const fs::path& folder, std::error_code& error) {
  return fs::exists(DatabaseBelow(folder), error);
}

// The company's folder, the suite's and that of the database.
constexpr int kFoldersInside = 3;

}  // namespace

fs::path DatabaseOfSite(const fs::path& folder) {
  std::error_code error;
  if (IsSite(folder, error)) return DatabaseBelow(folder);
  if (error == std::errc::permission_denied)
    throw std::runtime_error(Quoted(folder.u16string()) +
                             " cannot be looked into: " + error.message());
  std::string text = Quoted(folder.u16string()) + " is a folder, and no site: there is no " +
                     ToUtf8(DatabaseBelow({}).generic_u16string()) + " in it";
  std::error_code ignored;
  fs::path outer = fs::absolute(folder / "", ignored).lexically_normal().parent_path();
  for (int i = 0; i < kFoldersInside; ++i) {
    outer = outer.parent_path();
    if (!IsSite(outer, ignored)) continue;
    text += "; the site is " + Quoted(outer.u16string());
    break;
  }
  throw std::runtime_error(text);
}

fs::path FileOf(const fs::path& database) {
  std::error_code failed;
  if (!fs::is_symlink(database, failed)) return database;
  const fs::path file = fs::canonical(database, failed);
  return failed ? database : file;
}

}  // namespace rdv
