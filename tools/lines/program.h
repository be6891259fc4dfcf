// rdvlines: reads, checks, changes and compares the lines of whole sites by the rules of the
// control.
#pragma once

#include <functional>
#include <iosfwd>
#include <span>
#include <string>

namespace rdv::lines {

// Runs what the words say; results go to `out`, what is wrong and, on a terminal, how far long work
// has come, to `errors`. Gives the exit code. `before_writing` is called between reading and
// writing, for tests that change the site there.
int RunLines(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors,
             bool on_terminal = false, std::function<void()> before_writing = {});

}  // namespace rdv::lines
