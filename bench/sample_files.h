// The files that are measured: copies of the sample sites and files that the engine makes itself,
// in a folder of the run's own.
#pragma once

#include <filesystem>
#include <string>

#include "data/connection.h"

namespace rdv::bench {

// The run's own folder, emptied at the start and removed at the end of the program.
const std::filesystem::path& WorkFolder();

// A fresh copy of the sample site's database, laid out as a data folder; returns the folder that
// plays the common application data folder.
std::filesystem::path CopySite(const std::string& site, const std::string& copy_name);
std::filesystem::path DatabaseOf(const std::filesystem::path& site_folder);

// The folder becomes the data folder of every DataBase made from now on.
void UseSite(const std::filesystem::path& site_folder);

// All rows of Used_Lines of a database file.
const RowTable& LinesOf(const std::filesystem::path& database);

}  // namespace rdv::bench
