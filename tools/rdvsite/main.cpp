#include "tools/command_line/program.h"
#include "tools/rdvsite/tool.h"

int rdv::tools::Program(std::span<const std::string> arguments, std::ostream& out,
                        std::ostream& errors) {
  return RunSiteTool(arguments, out, errors);
}
