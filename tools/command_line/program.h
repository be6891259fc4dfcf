// The beginning and the end of every program of ours; main() is here.
#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace rdv::tools {

// Defined by each program. `arguments` are in UTF-8 and without the program's name; `out` is a
// StandardOutput. Gives the exit code.
int Program(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors);

}  // namespace rdv::tools
