// A folder in the place of the common application data folder.
#pragma once

#include <memory>

#include "runtime/text.h"

namespace rdv {

// Both sources of the folder's lookup give it to this process, and to those that it starts, for as
// long as the object lives; the machine is not touched. The last one made must be the first to go.
class SiteFolder {
 public:
  explicit SiteFolder(const Text& folder);
#ifndef _WIN32
  // Each source gives a folder of its own.
  SiteFolder(const Text& first_source, const Text& second_source);
#endif
  SiteFolder(const SiteFolder&) = delete;
  SiteFolder& operator=(const SiteFolder&) = delete;
  ~SiteFolder();

 private:
  class Sources;
  const std::unique_ptr<Sources> sources_;
};

}  // namespace rdv
