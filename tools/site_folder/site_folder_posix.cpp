#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tools/site_folder/site_folder.h"

namespace rdv {
namespace {

// An environment variable of this process that has another value for a while.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) before_ = before;
    setenv(name_.c_str(), value.c_str(), 1);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() {
    if (before_) {
      setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

 private:
  const std::string name_;
  std::optional<std::string> before_;
};

std::filesystem::path WriteShellFolders(const Text& folder) {
  // A name that nobody can foresee: others may write that folder, too.
  std::string path = std::filesystem::temp_directory_path() / "rdv-shell-folders-XXXXXX.ini";
  const int file = mkstemps(path.data(), 4);
  if (file < 0) throw std::runtime_error("no file can be made in the folder for temporary files");
  close(file);
  std::ofstream(path, std::ios::binary)
      << "[Shell Folders]\r\nCommon AppData=\"" << ToUtf8(folder) << "\"\r\n";
  return path;
}

}  // namespace

class SiteFolder::Sources {
 public:
  Sources(const Text& first_source, const Text& second_source)
      : shell_folders_(WriteShellFolders(second_source)),
        first_("RDV_COMMON_APPDATA", ToUtf8(first_source)),
        second_("RDV_SHELL_FOLDERS", shell_folders_.string()) {}
  Sources(const Sources&) = delete;
  Sources& operator=(const Sources&) = delete;
  ~Sources() {
    std::error_code ignored;
    std::filesystem::remove(shell_folders_, ignored);
  }

 private:
  const std::filesystem::path shell_folders_;  // a settings file that names the folder
  const EnvironmentVariable first_;
  const EnvironmentVariable second_;
};

SiteFolder::SiteFolder(const Text& folder) : SiteFolder(folder, folder) {}

SiteFolder::SiteFolder(const Text& first_source, const Text& second_source)
    : sources_(std::make_unique<Sources>(first_source, second_source)) {}

SiteFolder::~SiteFolder() = default;

}  // namespace rdv
