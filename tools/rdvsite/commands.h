// The commands of rdvsite. Each function adds one to the line; what it prints goes to `out`, which
// outlives the line.
#pragma once

#include <iosfwd>

#include "tools/command_line/command_line.h"

namespace rdv {

void AddCreate(tools::CommandLine& line, std::ostream& out);
void AddTables(tools::CommandLine& line, std::ostream& out);
void AddSchema(tools::CommandLine& line, std::ostream& out);
void AddDump(tools::CommandLine& line, std::ostream& out, std::ostream& errors);
void AddSql(tools::CommandLine& line, std::ostream& out);
void AddCheck(tools::CommandLine& line, std::ostream& out);
void AddRepair(tools::CommandLine& line, std::ostream& out);

}  // namespace rdv
