// The sites of the texts in tests/sites as folders with files in them. Each is made once, by the
// first test that asks for it, and kept in the build tree; the first test of a run (see
// make_sites.cpp) makes all of them anew.
#pragma once

#include <filesystem>
#include <string>

namespace rdv::sites {

// Where the site's NewDB.mdb and its folders with settings lie; nobody may change anything there.
// Raises SiteTextError for a text that is not there or makes no site. Safe among many processes.
std::filesystem::path SiteFolder(const std::string& name);

// Makes the site anew.
void RemakeSite(const std::string& name);

}  // namespace rdv::sites
