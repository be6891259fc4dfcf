// Running a scenario player on scripts and taking what it prints.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/site_files.h"

namespace rdv::test {

struct Script {
  std::string name;
  std::string text;
  const SiteFiles* site;  // what it is played on
};

struct Played {
  int status = 0;
  std::string errors;
  // By the name of the script. The folder of the site, which is another one each time, is SITE.
  std::map<std::string, std::vector<std::string>> answers;
};

// All scripts are played by one run of the player, because starting it can cost more than playing.
Played Play(const std::filesystem::path& player, const std::vector<Script>& scripts);

// Where the player creates the control as any host does, from the registry: registers it until the
// end of the program, and ends the program as skipped where no control can be placed.
void MakeTheControlKnown();

std::vector<std::string> LinesOf(const std::filesystem::path& file);
std::string ContentsOf(const std::filesystem::path& file);

}  // namespace rdv::test
