// rdvsite: makes, shows, checks and repairs the databases of sites from the command line.
#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace rdv {

// Runs the command that the arguments (UTF-8) name. Results go to `out`, what is wrong to `errors`.
// Gives one of tools::ExitCode.
int RunSiteTool(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors);

}  // namespace rdv
