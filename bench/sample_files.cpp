#include "bench/sample_files.h"

#include <stdlib.h>
#include <unistd.h>

#include <map>

#include "data/jet/sql/jet_connection.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

struct OwnFolder {
  OwnFolder() : path(fs::temp_directory_path() / ("rdvbench-" + std::to_string(getpid()))) {
    fs::remove_all(path);
    fs::create_directories(path);
  }
  ~OwnFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  fs::path path;
};

}  // namespace

const fs::path& WorkFolder() {
  static const OwnFolder folder;
  return folder.path;
}

fs::path DatabaseOf(const fs::path& site_folder) {
  return site_folder / "Tolvane" / "ORVANT+" / "Database" / "NewDB.mdb";
}

fs::path CopySite(const std::string& site, const std::string& copy_name) {
  const fs::path from = fs::path(RDV_SHARED_DIR) / "sites" / site;
  const fs::path to = WorkFolder() / copy_name;
  fs::create_directories(DatabaseOf(to).parent_path());
  fs::copy_file(from / "NewDB.mdb", DatabaseOf(to), fs::copy_options::overwrite_existing);
  fs::permissions(DatabaseOf(to), fs::perms::owner_read | fs::perms::owner_write);
  fs::copy_file(from / "ini-china" / "ORVANTPlus.ini",
                to / "Tolvane" / "ORVANT+" / "ORVANTPlus.ini",
                fs::copy_options::overwrite_existing);
  return to;
}

void UseSite(const fs::path& site_folder) {
  setenv("RDV_COMMON_APPDATA", site_folder.c_str(), 1);
  setenv("RDV_DATABASE_ROUTE", "jet", 1);
}

const RowTable& LinesOf(const fs::path& database) {
  static std::map<fs::path, RowTable> known;
  const auto found = known.find(database);
  if (found != known.end()) return found->second;
  const std::unique_ptr<Connection> connection =
      jet::OpenJetConnection(FromUtf8(database.string()));
  CommandResult result = connection->Execute(u"SELECT * FROM Used_Lines", {});
  return known.emplace(database, std::move(*result.rows)).first->second;
}

}  // namespace rdv::bench
