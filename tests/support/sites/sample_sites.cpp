#include "tests/support/sites/sample_sites.h"

#include <cstdlib>
#include <random>
#include <system_error>

#include "tests/support/sites/places.h"
#include "tests/support/sites/site_builder.h"

namespace rdv::sites {
namespace {

namespace fs = std::filesystem;

fs::path FolderOf(const std::string& name) {
  return Place("sites") / name;
}

// Beside its place first: others see all of it or nothing.
void Make(const std::string& name) {
  const fs::path drafts = Place("sites") / (".draft-" + std::to_string(std::random_device()()));
  const fs::path draft = drafts / name;
  MakeSite(ReadSite(name), draft);
  fs::create_directories(FolderOf(name).parent_path());
  std::error_code error;
  fs::rename(draft, FolderOf(name), error);
  std::error_code ignored;
  fs::remove_all(drafts, ignored);
  // Another process was faster.
  if (error && !fs::exists(FolderOf(name) / "NewDB.mdb"))
    throw SiteTextError("cannot make " + FolderOf(name).string() + ": " + error.message());
}

}  // namespace

fs::path SiteFolder(const std::string& name) {
  if (const char* foreign = std::getenv("RDV_SITES")) return fs::path(foreign) / name;
  if (!fs::exists(FolderOf(name) / "NewDB.mdb")) Make(name);
  return FolderOf(name);
}

void RemakeSite(const std::string& name) {
  fs::remove_all(FolderOf(name));
  Make(name);
}

fs::path SamplePath(const std::string& name) {
  const fs::path path(name);
  const fs::path rest = path.lexically_relative(*path.begin());
  if (*path.begin() == "foreign") return Place("shared") / "sites" / rest;
  if (*path.begin() != "sites") return Place("shared") / path;
  return SiteFolder(rest.parent_path().generic_string()) / rest.filename();
}

bool IsAtHand(const std::string& name) {
  return name.starts_with("sites/") || fs::exists(SamplePath(name));
}

std::vector<std::string> SoundDatabases() {
  std::vector<std::string> names;
  for (const std::string& name : SiteNames()) {
    if (ReadSite(name).damage.empty()) names.push_back("sites/" + name + "/NewDB.mdb");
  }
  return names;
}

}  // namespace rdv::sites
