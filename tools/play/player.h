// Plays scenario scripts from the command line on.
#pragma once

#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace rdv::play {

enum class ExitStatus { Played = 0, ScriptError = 2 };

struct Options {
  std::optional<std::string> site;   // played as a `site` command before each script's first line
  std::vector<std::string> scripts;  // paths; "-" is standard input
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `arguments` without the program's name. Raises UsageError.
Options ParseOptions(const std::vector<std::string_view>& arguments);

// Answers go to `out` as they come, what is wrong with a script to `err` as "SCRIPT:LINE: reason";
// the scripts after it are not played.
ExitStatus PlayAll(const Options& options, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace rdv::play
