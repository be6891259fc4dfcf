#include "tools/command_line/program.h"
#include "tools/lines/program.h"

#ifdef _WIN32
#include <io.h>
#include <stdio.h>
#else
#include <unistd.h>
#endif

namespace {

bool ErrorsGoToATerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

}  // namespace

int rdv::tools::Program(std::span<const std::string> arguments, std::ostream& out,
                        std::ostream& errors) {
  return lines::RunLines(arguments, out, errors, ErrorsGoToATerminal());
}
