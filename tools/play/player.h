// Plays scenario scripts from the command line on.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "tools/command_line/exit_codes.h"

namespace rdv::play {

enum class ExitStatus {
  Played = tools::kDone,
  ScriptError = tools::kUsage,
  NoScript = tools::kUnusable
};

struct Options {
  std::optional<std::string> site;   // played as a `site` command before each script's first line
  std::vector<std::string> scripts;  // paths; "-" is standard input
};

// Answers go to `out` as they come, what is wrong with a script to `err` as "SCRIPT:LINE: reason",
// or that there is none; the scripts after it are not played.
ExitStatus PlayAll(const Options& options, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace rdv::play
