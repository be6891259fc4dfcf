// What every program of ours answers to whoever started it.
#pragma once

namespace rdv::tools {

enum ExitCode : int {
  kDone = 0,      // all was done, and there is nothing to tell
  kFindings = 1,  // it was done, and something was found, refused or left out
  kUsage = 2,     // the words make no command; nothing was done
  kUnusable = 3,  // what was named cannot be used: not there, not readable, damaged beyond reading
};

}  // namespace rdv::tools
