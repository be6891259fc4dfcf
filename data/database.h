// The configuration database "NewDB.mdb" and its fourteen named commands.
#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>

#include "data/commands.h"
#include "data/connection.h"
#include "data/recordset.h"
#include "runtime/error.h"

namespace rdv {

// What opens the database file of the data folder as it is at this moment.
Text DatabaseConnectionString();

// The 24 arguments of Update_All_Lines and Insert_All_Lines, in the order of their parameters.
using LineArguments = std::array<Text, 24>;

// A data-environment object: one connection, opened when a command first needs it and closed with
// the object. A procedure that needs the database makes one of its own and lets it go at its end;
// objects are not shared. Every command raises RuntimeError; rows written before a failure stay
// written. Arguments are text; a number is passed as its decimal digits.
class DataBase {
 public:
  // The database file of the data folder as it is when the object is made.
  DataBase();
  // One of several that are used one after the other. As soon as others have kept the file from one
  // of them for as long as it waits, `in_use` has its error; the rest raise that without waiting.
  explicit DataBase(std::optional<RuntimeError>& in_use);
  DataBase(const DataBase&) = delete;
  DataBase& operator=(const DataBase&) = delete;
  ~DataBase();

  // Lets the connection go before the object goes, for procedures that write: raises when what was
  // written may not have reached the disk, which the end of the object cannot.
  void Close();

  void Get_All_Partitions(TextView Given_ConfigID);
  void Get_All_Card_Name();
  void Get_Used_Lines(TextView Given_ConfigID);
  void Get_All_Node_Names();
  void Get_All_Mode_Names();
  void Get_Line_Type_Allowed_Modes(TextView Given_CardTypeID);
  void Get_Line_Type_Allowed_Volume(TextView Given_Card_Type_ID);
  void Get_Max_NodeNumber(TextView Given_ConfigID, TextView Given_PartID,
                          TextView Given_NodeTypeID);
  void Update_All_Lines(const LineArguments& arguments);
  void Insert_All_Lines(const LineArguments& arguments);
  void Insert_Used_Card(const std::array<Text, 9>& arguments);
  void Delete_Used_Card(TextView Given_ConfigID, TextView Given_Base_Slot_No,
                        TextView Given_Slot_Offset);
  void Get_Specific_Line(TextView Given_ConfigID, TextView Given_Base_Slot_No,
                         TextView Given_Slot_Offset, TextView Given_Line);
  void GetORVSettings(TextView Given_ConfigID);

  // Rows of the last run. Close one before its command runs again.
  Recordset rsGet_All_Partitions;
  Recordset rsGet_All_Card_Name;
  Recordset rsGet_Used_Lines;
  Recordset rsGet_All_Node_Names;
  Recordset rsGet_All_Mode_Names;
  Recordset rsGet_Line_Type_Allowed_Modes;
  Recordset rsGet_Line_Type_Allowed_Volume;
  Recordset rsGet_Max_NodeNumber;
  Recordset rsGet_Specific_Line;
  Recordset rsGetORVSettings;

 private:
  CommandResult Run(Command command, std::span<const Argument> arguments);
  void Query(Recordset& recordset, Command command, std::initializer_list<TextView> arguments);

  CommandResult RunNow(Command command, std::span<const Argument> arguments);

  Text connection_string_;
  std::optional<RuntimeError>* in_use_ = nullptr;
  std::unique_ptr<Connection> Conn;
};

}  // namespace rdv
