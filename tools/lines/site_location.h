// Which files a site is made of.
#pragma once

#include <optional>

#include "runtime/text.h"

namespace rdv::lines {

struct SiteLocation {
  Text database;      // the file's path
  Text suite_folder;  // where the settings file is looked for; ends with a separator
};

// `site` is the folder that plays the common application data folder, or a database file: its
// settings lie in the folder above one named "Database", else beside it. Without one, what the
// control finds on this machine. Throws std::runtime_error for a folder that has no database.
// Nothing is opened.
SiteLocation LocateSite(const std::optional<Text>& site);

}  // namespace rdv::lines
