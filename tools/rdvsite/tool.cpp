#include "tools/rdvsite/tool.h"

#include "tools/command_line/command_line.h"
#include "tools/rdvsite/commands.h"

namespace rdv {

int RunSiteTool(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors) {
  tools::CommandLine line("rdvsite", "makes, shows, checks and repairs the databases of sites");
  AddCreate(line, out);
  AddTables(line, out);
  AddSchema(line, out);
  AddDump(line, out, errors);
  AddSql(line, out);
  AddCheck(line, out);
  AddRepair(line, out);
  return line.Execute(arguments, out, errors);
}

}  // namespace rdv
