// A folder in the place of the common application data folder.
#pragma once

#include <memory>

#include "runtime/text.h"

namespace rdv {

// Both sources of the folder's lookup give it for as long as the object lives. On Windows they
// belong to the machine: changing them needs the administrator's rights, and another process that
// asks for a folder of its own waits. Within a process the last one made must be the first to go.
class SiteFolder {
 public:
  // Throws std::runtime_error when the sources cannot be changed.
  explicit SiteFolder(const Text& folder);
  // Each source gives a folder of its own.
  SiteFolder(const Text& first_source, const Text& second_source);
  SiteFolder(const SiteFolder&) = delete;
  SiteFolder& operator=(const SiteFolder&) = delete;
  ~SiteFolder();

 private:
  class Sources;
  const std::unique_ptr<Sources> sources_;
};

}  // namespace rdv
