// Where the database of a site lies.
#pragma once

#include <filesystem>

namespace rdv {

// In the folder that plays the common application data folder. Throws std::runtime_error with a
// sentence for people where there is none; of a folder inside of a site it says which one was
// meant.
std::filesystem::path DatabaseOfSite(const std::filesystem::path& folder);

// The file itself where the name is that of a link to it: whatever belongs to a database lies
// beside the file.
std::filesystem::path FileOf(const std::filesystem::path& database);

}  // namespace rdv
