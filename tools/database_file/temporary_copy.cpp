#include "tools/database_file/temporary_copy.h"

#include <chrono>
#include <filesystem>

#include "data/jet/engine.h"
#include "data/jet/file/database_copy.h"
#include "data/jet/file/file.h"

namespace rdv {
namespace {

Text NameForCopy() {
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
  return (std::filesystem::temp_directory_path() / "rdv trial ").u16string() + Decimal(now) + u" " +
         Decimal(ticks) + u".mdb";
}

}  // namespace

TemporaryCopy::TemporaryCopy(const Text& path, jet::Suspects suspects) : path_(NameForCopy()) {
  jet::CopyDatabase(jet::NativeFileSystem(), path, path_, jet::EngineOptions().lock_wait, suspects);
  // A copy has the rights of the original, which may be there for reading only.
  namespace fs = std::filesystem;
  std::error_code ignored;
  fs::permissions(fs::path(path_), fs::perms::owner_read | fs::perms::owner_write,
                  fs::perm_options::add, ignored);
}

TemporaryCopy::~TemporaryCopy() {
  std::error_code ignored;
  std::filesystem::remove(std::filesystem::path(path_), ignored);
}

}  // namespace rdv
