// What an independent reader (the tools of mdbtools) finds in a file, against what the engine
// reads. Not on Windows, where there is none.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "data/jet/engine.h"

namespace rdv::jet {

// Whether mdb-json and mdb-export are installed.
bool HasOtherReader();

// Every value of every row of every user table. The first difference, or "".
std::string DifferenceFromMdbJson(const std::filesystem::path& path, Engine& engine);
std::string DifferenceFromMdbExport(const std::filesystem::path& path, Engine& engine);

}  // namespace rdv::jet
