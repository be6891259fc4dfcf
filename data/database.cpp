#include "data/database.h"

#include <utility>
#include <vector>

#include "data/connection_route.h"
#include "data/folders_and_files.h"
#include "data/site_in_place.h"

namespace rdv {
namespace {

std::vector<Argument> ToArguments(std::span<const Text> texts) {
  return std::vector<Argument>(texts.begin(), texts.end());
}

// In the words of the engine and of the providers alike.
bool SaysInUse(const RuntimeError& error) {
  return error.Description().ends_with(u"; file already in use.");
}

}  // namespace

Text DatabaseConnectionString() {
  return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + GetDatabaseFolder() +
         Text(ORVANTPlusFilesAndFolders::kDatabaseFile);
}

DataBase::DataBase() : connection_string_(DatabaseConnectionString()) {}

DataBase::DataBase(std::optional<RuntimeError>& in_use)
    : connection_string_(DatabaseConnectionString()), in_use_(&in_use) {}

DataBase::~DataBase() = default;

void DataBase::Close() {
  if (const auto connection = std::exchange(Conn, nullptr)) connection->Close();
}

CommandResult DataBase::Run(Command command, std::span<const Argument> arguments) {
  if (!in_use_) return RunNow(command, arguments);
  if (*in_use_) throw RuntimeError(**in_use_);
  try {
    return RunNow(command, arguments);
  } catch (const RuntimeError& error) {
    if (SaysInUse(error)) *in_use_ = error;
    throw;
  }
}

CommandResult DataBase::RunNow(Command command, std::span<const Argument> arguments) {
  if (!Conn) {
    const SiteInPlace* site = SiteInPlace::Current();
    Conn = site ? site->Connect() : OpenConnection(connection_string_);
  }
  const CommandDefinition& definition = DefinitionOf(command);
  return Conn->Execute(definition.statement, arguments, definition.parameters);
}

void DataBase::Query(Recordset& recordset, Command command,
                     std::initializer_list<TextView> arguments) {
  recordset.RequireClosed();
  CommandResult result = Run(command, std::vector<Argument>(arguments.begin(), arguments.end()));
  recordset.Open(std::move(result.rows).value());
}

void DataBase::Get_All_Partitions(TextView Given_ConfigID) {
  Query(rsGet_All_Partitions, Command::Get_All_Partitions, {Given_ConfigID});
}

void DataBase::Get_All_Card_Name() {
  Query(rsGet_All_Card_Name, Command::Get_All_Card_Name, {});
}

void DataBase::Get_Used_Lines(TextView Given_ConfigID) {
  Query(rsGet_Used_Lines, Command::Get_Used_Lines, {Given_ConfigID});
}

void DataBase::Get_All_Node_Names() {
  Query(rsGet_All_Node_Names, Command::Get_All_Node_Names, {});
}

void DataBase::Get_All_Mode_Names() {
  Query(rsGet_All_Mode_Names, Command::Get_All_Mode_Names, {});
}

void DataBase::Get_Line_Type_Allowed_Modes(TextView Given_CardTypeID) {
  Query(rsGet_Line_Type_Allowed_Modes, Command::Get_Line_Type_Allowed_Modes, {Given_CardTypeID});
}

void DataBase::Get_Line_Type_Allowed_Volume(TextView Given_Card_Type_ID) {
  Query(rsGet_Line_Type_Allowed_Volume, Command::Get_Line_Type_Allowed_Volume,
        {Given_Card_Type_ID});
}

void DataBase::Get_Max_NodeNumber(TextView Given_ConfigID, TextView Given_PartID,
                                  TextView Given_NodeTypeID) {
  Query(rsGet_Max_NodeNumber, Command::Get_Max_NodeNumber,
        {Given_ConfigID, Given_PartID, Given_NodeTypeID});
}

void DataBase::Update_All_Lines(const LineArguments& arguments) {
  Run(Command::Update_All_Lines, ToArguments(arguments));
}

void DataBase::Insert_All_Lines(const LineArguments& arguments) {
  Run(Command::Insert_All_Lines, ToArguments(arguments));
}

void DataBase::Insert_Used_Card(const std::array<Text, 9>& arguments) {
  Run(Command::Insert_Used_Card, ToArguments(arguments));
}

void DataBase::Delete_Used_Card(TextView Given_ConfigID, TextView Given_Base_Slot_No,
                                TextView Given_Slot_Offset) {
  const Text arguments[] = {Text(Given_ConfigID), Text(Given_Base_Slot_No),
                            Text(Given_Slot_Offset)};
  Run(Command::Delete_Used_Card, ToArguments(arguments));
}

void DataBase::Get_Specific_Line(TextView Given_ConfigID, TextView Given_Base_Slot_No,
                                 TextView Given_Slot_Offset, TextView Given_Line) {
  Query(rsGet_Specific_Line, Command::Get_Specific_Line,
        {Given_ConfigID, Given_Base_Slot_No, Given_Slot_Offset, Given_Line});
}

void DataBase::GetORVSettings(TextView Given_ConfigID) {
  Query(rsGetORVSettings, Command::GetORVSettings, {Given_ConfigID});
}

}  // namespace rdv
