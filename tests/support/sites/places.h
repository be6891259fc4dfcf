// Where the files lie that tests work with. A list of them, places.txt, lies beside the test
// program or in a folder above it; so programs can be moved together with their files.
#pragma once

#include <filesystem>
#include <string_view>

namespace rdv::sites {

// The path behind `name` in that list ("NAME = PATH" on a line, relative to the list's folder).
// Throws std::runtime_error when there is no list, or no such name in it.
std::filesystem::path Place(std::string_view name);

}  // namespace rdv::sites
