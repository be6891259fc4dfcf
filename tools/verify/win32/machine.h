// What this machine is, for the report.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace rdv::verify {

using Facts = std::vector<std::pair<std::string, std::string>>;

// System, rights, languages, screens, fonts, appearance.
Facts AboutTheMachine();

// Of the programs that this system runs: 64 and 32, or 32 alone.
std::vector<int> WordSizes();

// Windows itself, not Wine.
bool IsWindows();

// The current date and time as text.
std::string Now();

}  // namespace rdv::verify
