// A folder in the place of the common application data folder.
#pragma once

#include <filesystem>

#include "runtime/text.h"
#include "tools/play/memory/environment.h"

namespace rdv::play {

// Both sources of the folder's lookup give it for as long as the object lives.
class SiteFolder {
 public:
  explicit SiteFolder(const Text& folder);
  SiteFolder(const SiteFolder&) = delete;
  SiteFolder& operator=(const SiteFolder&) = delete;
  ~SiteFolder();

 private:
  const std::filesystem::path shell_folders_;  // a settings file that names the folder
  const EnvironmentVariable first_source_;
  const EnvironmentVariable second_source_;
};

}  // namespace rdv::play
