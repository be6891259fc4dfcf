// rdvsite: makes, shows and checks site databases from the command line.
#pragma once

#include <iosfwd>
#include <span>

#include "runtime/text.h"

namespace rdv {

// Exit codes.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;  // an error, or a file that is not sound
inline constexpr int kUsage = 2;

// Runs the command that the arguments name. Results go to `out`, errors to `errors` as
// "number: description (source)"; both in UTF-8.
int RunSiteTool(std::span<const Text> arguments, std::ostream& out, std::ostream& errors);

}  // namespace rdv
