// The fourteen commands stored with the configuration database: statement text and parameters.
#pragma once

#include <span>

#include "data/connection.h"
#include "runtime/text.h"

namespace rdv {

enum class Command {
  Get_All_Partitions,
  Get_All_Card_Name,
  Get_Used_Lines,
  Get_All_Node_Names,
  Get_All_Mode_Names,
  Get_Line_Type_Allowed_Modes,
  Get_Line_Type_Allowed_Volume,
  Get_Max_NodeNumber,
  Update_All_Lines,
  Insert_All_Lines,
  Insert_Used_Card,
  Delete_Used_Card,
  Get_Specific_Line,
  GetORVSettings,
};

struct CommandDefinition {
  Command command;
  TextView name;
  TextView statement;                     // exactly as stored, blanks included
  std::span<const Parameter> parameters;  // in the order in which arguments are bound
};

const CommandDefinition& DefinitionOf(Command command);
std::span<const CommandDefinition> AllCommands();

}  // namespace rdv
