#include "data/commands.h"

#include <array>
#include <iterator>

namespace rdv {
namespace {

// Captions, names and the label are texts, everything else is a whole number.
constexpr auto kText = ParameterKind::AnyText;
constexpr auto kNumber = ParameterKind::WholeNumber;

constexpr Parameter kConfigID[] = {{u"Given_ConfigID", kNumber}};
constexpr Parameter kCardTypeID[] = {{u"Given_CardTypeID", kNumber}};
constexpr Parameter kCard_Type_ID[] = {{u"Given_Card_Type_ID", kNumber}};
constexpr Parameter kNodeTypeOfPartition[] = {
    {u"Given_ConfigID", kNumber}, {u"Given_PartID", kNumber}, {u"Given_NodeTypeID", kNumber}};
constexpr Parameter kSlot[] = {{u"Given_ConfigID", kNumber},
                               {u"Given_Base_Slot_No", kNumber},
                               {u"Given_Slot_Offset", kNumber}};
constexpr Parameter kLine[] = {{u"Given_ConfigID", kNumber},
                               {u"Given_Base_Slot_No", kNumber},
                               {u"Given_Slot_Offset", kNumber},
                               {u"Given_Line", kNumber}};

// The two statements that write a line take the same values in the same order; three of the names
// that are stored with them differ.
constexpr std::array<Parameter, 24> ValuesOfLine(TextView queue_time, TextView configuration,
                                                 TextView slot_offset) {
  return {{{u"Given_Partition_Name", kText},
           {u"Given_Partition_ID", kNumber},
           {u"Given_Starting_Node_Caption", kText},
           {u"Given_Starting_Node_Type_ID", kNumber},
           {u"Given_Starting_Node_Number", kNumber},
           {u"Given_Volume_Name", kText},
           {u"Given_Volume_ID", kNumber},
           {u"Given_Mode_Caption", kText},
           {u"Given_Mode_Type_ID", kNumber},
           {u"Given_Mode_Ring_Number", kNumber},
           {u"Given_Description", kText},
           {u"Given_NIS_Option", kNumber},
           {queue_time, kNumber},
           {u"Given_ACD_Option", kNumber},
           {u"Given_LineType", kNumber},
           {u"Given_Impedance", kNumber},
           {u"Given_SoftStop", kNumber},
           {u"Given_rsvd1", kNumber},
           {u"Given_rsvd2", kNumber},
           {u"Given_rsvd3", kNumber},
           {configuration, kNumber},
           {u"Given_Base_Slot_No", kNumber},
           {slot_offset, kNumber},
           {u"Given_Line", kNumber}}};
}
constexpr auto kUpdatedLine =
    ValuesOfLine(u"Given_EWT_Option", u"Given_ConfigID", u"Given_SlotOffset");
constexpr auto kInsertedLine =
    ValuesOfLine(u"Given_RTQA_Option", u"Given_Config_ID", u"Given_Slot_Offset");

constexpr Parameter kInsertedCard[] = {
    {u"Given_Config_ID", kNumber},    {u"Given_Base_Slot_No", kNumber},
    {u"Given_Slot_Offset", kNumber},  {u"Given_Slot_Caption", kText},
    {u"Given_Card_Type_Name", kText}, {u"Given_Card_Type_No", kNumber},
    {u"Given_Card_Variant", kNumber}, {u"Given_Part_Num", kText},
    {u"Given_Country_Code", kNumber}};

// In the order of Command. The statements are the stored ones; their blanks, trailing ones
// included, are part of them.
constexpr CommandDefinition kCommands[] = {
    {Command::Get_All_Partitions, u"Get_All_Partitions",
     u"SELECT Partition_Settings.* FROM Partition_Settings WHERE Config_ID = `Given_ConfigID` "
     u"ORDER BY PartitionID",
     kConfigID},
    {Command::Get_All_Card_Name,
     u"Get_All_Card_Name",
     u"SELECT SR_Card_Type_Names.* FROM SR_Card_Type_Names ORDER BY ID",
     {}},
    {Command::Get_Used_Lines, u"Get_Used_Lines",
     u"SELECT Used_Lines.* FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = 1 AND Slot_Offset = 1 ORDER BY Line ",
     kConfigID},
    {Command::Get_All_Node_Names,
     u"Get_All_Node_Names",
     u"SELECT * FROM SR_Node_Type_Names ORDER BY id",
     {}},
    {Command::Get_All_Mode_Names,
     u"Get_All_Mode_Names",
     u"SELECT SR_Mode_Type_Names.* FROM SR_Mode_Type_Names ORDER BY ID",
     {}},
    {Command::Get_Line_Type_Allowed_Modes, u"Get_Line_Type_Allowed_Modes",
     u"SELECT SR_Card_Type_can_use_Mode.* FROM SR_Card_Type_can_use_Mode WHERE "
     u"Card_Type_ID = `Given_CardTypeID` ",
     kCardTypeID},
    {Command::Get_Line_Type_Allowed_Volume, u"Get_Line_Type_Allowed_Volume",
     u"SELECT SR_Card_Type_can_use_Volume.* FROM SR_Card_Type_can_use_Volume WHERE "
     u"Card_Type_ID = `Given_Card_Type_ID` ORDER BY Volume_Type_ID",
     kCard_Type_ID},
    {Command::Get_Max_NodeNumber, u"Get_Max_NodeNumber",
     u"SELECT Node_Type_Max.* FROM Node_Type_Max WHERE Config_ID = `Given_ConfigID` AND "
     u"PartitionID = `Given_PartID` AND NodeType_ID = `Given_NodeTypeID` ORDER BY NodeType_ID",
     kNodeTypeOfPartition},
    {Command::Update_All_Lines, u"Update_All_Lines",
     u"UPDATE Used_Lines SET Partition_Name = `Given_Partition_Name`, "
     u"Partition_ID = `Given_Partition_ID`, "
     u"Starting_Node_Caption = `Given_Starting_Node_Caption`, "
     u"Starting_Node_Type_ID = `Given_Starting_Node_Type_ID`, "
     u"Starting_Node_Number = `Given_Starting_Node_Number`, "
     u"Volume_Name = `Given_Volume_Name`, Volume_ID = `Given_Volume_ID`, "
     u"Mode_Caption = `Given_Mode_Caption`, Mode_Type_ID = `Given_Mode_Type_ID`, "
     u"Mode_Ring_Number = `Given_Mode_Ring_Number`, Description = `Given_Description`, "
     u"NIS_Option = `Given_NIS_Option`, RTQA_Option = `Given_EWT_Option`, "
     u"ACD_Option = `Given_ACD_Option`, LineType = `Given_LineType`, "
     u"Impedance = `Given_Impedance`, SoftStop = `Given_SoftStop`, rsvd1 = `Given_rsvd1`, "
     u"rsvd2 = `Given_rsvd2`, rsvd3 = `Given_rsvd3` WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = `Given_Base_Slot_No` AND Slot_Offset = `Given_SlotOffset` AND "
     u"Line = `Given_Line`",
     kUpdatedLine},
    {Command::Insert_All_Lines, u"Insert_All_Lines",
     u"INSERT INTO Used_Lines (Partition_Name, Partition_ID, Starting_Node_Caption, "
     u"Starting_Node_Type_ID, Starting_Node_Number, Volume_Name, Volume_ID, Mode_Caption, "
     u"Mode_Type_ID, Mode_Ring_Number, Description, NIS_Option, RTQA_Option, ACD_Option, "
     u"LineType, Impedance, SoftStop, rsvd1, rsvd2, rsvd3, Config_ID, Base_Slot_No, "
     u"Slot_Offset, Line) VALUES (`Given_Partition_Name`, `Given_Partition_ID`, "
     u"`Given_Starting_Node_Caption`, `Given_Starting_Node_Type_ID`, "
     u"`Given_Starting_Node_Number`, `Given_Volume_Name`, `Given_Volume_ID`, "
     u"`Given_Mode_Caption`, `Given_Mode_Type_ID`, `Given_Mode_Ring_Number`, "
     u"`Given_Description`, `Given_NIS_Option`, `Given_RTQA_Option`, `Given_ACD_Option`, "
     u"`Given_LineType`, `Given_Impedance`, `Given_SoftStop`, `Given_rsvd1`, `Given_rsvd2`, "
     u"`Given_rsvd3`, `Given_Config_ID`, `Given_Base_Slot_No`, `Given_Slot_Offset`, "
     u"`Given_Line`)",
     kInsertedLine},
    {Command::Insert_Used_Card, u"Insert_Used_Card",
     u"INSERT INTO Used_Cards (Config_ID, Base_Slot_No, Slot_Offset, Slot_Caption, "
     u"Card_Type_Name, Card_Type_No, Card_Variant, Part_Num, Country_Code) VALUES "
     u"(`Given_Config_ID`, `Given_Base_Slot_No`, `Given_Slot_Offset`, `Given_Slot_Caption`, "
     u"`Given_Card_Type_Name`, `Given_Card_Type_No`, `Given_Card_Variant`, `Given_Part_Num`, "
     u"`Given_Country_Code`)",
     kInsertedCard},
    {Command::Delete_Used_Card, u"Delete_Used_Card",
     u"DELETE FROM Used_Cards WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = `Given_Base_Slot_No` AND Slot_Offset = `Given_Slot_Offset`",
     kSlot},
    {Command::Get_Specific_Line, u"Get_Specific_Line",
     u"SELECT * FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = `Given_Base_Slot_No` AND Slot_Offset = `Given_Slot_Offset` AND "
     u"Line = `Given_Line`",
     kLine},
    {Command::GetORVSettings, u"GetORVSettings",
     u"SELECT * FROM orvsettings WHERE ConfigID = Given_ConfigID", kConfigID},
};

constexpr bool InOrder() {
  for (size_t i = 0; i < std::size(kCommands); ++i) {
    if (kCommands[i].command != static_cast<Command>(i)) return false;
  }
  return true;
}
static_assert(InOrder());

}  // namespace

const CommandDefinition& DefinitionOf(Command command) {
  return kCommands[static_cast<size_t>(command)];
}

std::span<const CommandDefinition> AllCommands() {
  return kCommands;
}

}  // namespace rdv
