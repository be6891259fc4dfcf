#include "tools/play/memory/site_folder.h"

#include <unistd.h>

#include <fstream>
#include <string>

namespace rdv::play {
namespace {

std::filesystem::path WriteShellFolders(const Text& folder) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("rdvplay-" + std::to_string(getpid()) + ".ini");
  std::ofstream(path, std::ios::binary)
      << "[Shell Folders]\r\nCommon AppData=\"" << ToUtf8(folder) << "\"\r\n";
  return path;
}

}  // namespace

SiteFolder::SiteFolder(const Text& folder)
    : shell_folders_(WriteShellFolders(folder)),
      first_source_("RDV_COMMON_APPDATA", ToUtf8(folder)),
      second_source_("RDV_SHELL_FOLDERS", shell_folders_.string()) {}

SiteFolder::~SiteFolder() {
  std::error_code ignored;
  std::filesystem::remove(shell_folders_, ignored);
}

}  // namespace rdv::play
