// The files that tests work on. Those of the sites in tests/sites are made from their texts: each
// once, by the first test that asks for it, and kept in the build tree; before a run of all tests
// (see make_sites.cpp) all are made anew. Files that other programs have written lie outside of the
// tree, where there are any. places.h finds all of them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rdv::sites {

// Where the site's NewDB.mdb and its folders with settings lie; nobody may change anything there.
// Raises SiteTextError for a text that is not there or makes no site. Safe among many processes.
// Where RDV_SITES names a folder, the site lies there: another program has made it.
std::filesystem::path SiteFolder(const std::string& name);

// Makes the site anew.
void RemakeSite(const std::string& name);

// "sites/plain/NewDB.mdb" is a file of a site of the texts, "foreign/plain/NewDB.mdb" one of the
// sites that another program has made, "corpus/..." one of the other databases of others.
std::filesystem::path SamplePath(const std::string& name);

// False for a foreign file that is not at hand.
bool IsAtHand(const std::string& name);

// The databases of all sites that are not damaged ("sites/plain/NewDB.mdb"), sorted.
std::vector<std::string> SoundDatabases();

}  // namespace rdv::sites
