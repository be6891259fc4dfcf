// A complete site to try the product on: an invented one, with every table that the named commands
// use.
#pragma once

#include <filesystem>

#include "runtime/text.h"

namespace rdv {

inline constexpr int kDefaultConfigurations = 3;
inline constexpr int kMaxConfigurations = 32767;  // the largest number of a configuration

// Makes the suite's folders below `common_app_data`, the database and the settings file, and gives
// the path of the database. Configuration 1 mixes all kinds of lines, 2 has none, 3 is a unit of
// four hybrid lines, each further one holds eight hybrid lines and a second unit of four: sixteen
// rows of lines. A settings file that is there is kept. Raises when there is a database already;
// nothing is left behind by a failure but folders, and what a process that was ended leaves behind
// is in nobody's way.
std::filesystem::path CreateDemonstrationSite(const Text& common_app_data, int configurations);

}  // namespace rdv
