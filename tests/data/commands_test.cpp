// The fourteen statements, letter by letter: other programs of the suite have the same ones stored.
#include "data/commands.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace rdv {
namespace {

struct StoredCommand {
  Command command;
  TextView name;
  TextView statement;
  std::vector<TextView> parameters;
};

const std::vector<StoredCommand> kStored = {
    {Command::Get_All_Partitions,
     u"Get_All_Partitions",
     u"SELECT Partition_Settings.* FROM Partition_Settings WHERE Config_ID = "
     u"`Given_ConfigID` ORDER BY PartitionID",
     {u"Given_ConfigID"}},
    {Command::Get_All_Card_Name,
     u"Get_All_Card_Name",
     u"SELECT SR_Card_Type_Names.* FROM SR_Card_Type_Names ORDER BY ID",
     {}},
    {Command::Get_Used_Lines,
     u"Get_Used_Lines",
     u"SELECT Used_Lines.* FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = 1 AND Slot_Offset = 1 ORDER BY Line ",
     {u"Given_ConfigID"}},
    {Command::Get_All_Node_Names,
     u"Get_All_Node_Names",
     u"SELECT * FROM SR_Node_Type_Names ORDER BY id",
     {}},
    {Command::Get_All_Mode_Names,
     u"Get_All_Mode_Names",
     u"SELECT SR_Mode_Type_Names.* FROM SR_Mode_Type_Names ORDER BY ID",
     {}},
    {Command::Get_Line_Type_Allowed_Modes,
     u"Get_Line_Type_Allowed_Modes",
     u"SELECT SR_Card_Type_can_use_Mode.* FROM SR_Card_Type_can_use_Mode WHERE "
     u"Card_Type_ID = `Given_CardTypeID` ",
     {u"Given_CardTypeID"}},
    {Command::Get_Line_Type_Allowed_Volume,
     u"Get_Line_Type_Allowed_Volume",
     u"SELECT SR_Card_Type_can_use_Volume.* FROM SR_Card_Type_can_use_Volume WHERE "
     u"Card_Type_ID = `Given_Card_Type_ID` ORDER BY Volume_Type_ID",
     {u"Given_Card_Type_ID"}},
    {Command::Get_Max_NodeNumber,
     u"Get_Max_NodeNumber",
     u"SELECT Node_Type_Max.* FROM Node_Type_Max WHERE Config_ID = `Given_ConfigID` AND "
     u"PartitionID = `Given_PartID` AND NodeType_ID = `Given_NodeTypeID` ORDER BY "
     u"NodeType_ID",
     {u"Given_ConfigID", u"Given_PartID", u"Given_NodeTypeID"}},
    {Command::Update_All_Lines,
     u"Update_All_Lines",
     u"UPDATE Used_Lines SET Partition_Name = `Given_Partition_Name`, Partition_ID = "
     u"`Given_Partition_ID`, Starting_Node_Caption = `Given_Starting_Node_Caption`, "
     u"Starting_Node_Type_ID = `Given_Starting_Node_Type_ID`, Starting_Node_Number = "
     u"`Given_Starting_Node_Number`, Volume_Name = `Given_Volume_Name`, Volume_ID = "
     u"`Given_Volume_ID`, Mode_Caption = `Given_Mode_Caption`, Mode_Type_ID = "
     u"`Given_Mode_Type_ID`, Mode_Ring_Number = `Given_Mode_Ring_Number`, Description = "
     u"`Given_Description`, NIS_Option = `Given_NIS_Option`, RTQA_Option = "
     u"`Given_EWT_Option`, ACD_Option = `Given_ACD_Option`, LineType = `Given_LineType`, "
     u"Impedance = `Given_Impedance`, SoftStop = `Given_SoftStop`, rsvd1 = `Given_rsvd1`, "
     u"rsvd2 = `Given_rsvd2`, rsvd3 = `Given_rsvd3` WHERE Config_ID = `Given_ConfigID` AND "
     u"Base_Slot_No = `Given_Base_Slot_No` AND Slot_Offset = `Given_SlotOffset` AND Line = "
     u"`Given_Line`",
     {u"Given_Partition_Name",
      u"Given_Partition_ID",
      u"Given_Starting_Node_Caption",
      u"Given_Starting_Node_Type_ID",
      u"Given_Starting_Node_Number",
      u"Given_Volume_Name",
      u"Given_Volume_ID",
      u"Given_Mode_Caption",
      u"Given_Mode_Type_ID",
      u"Given_Mode_Ring_Number",
      u"Given_Description",
      u"Given_NIS_Option",
      u"Given_EWT_Option",
      u"Given_ACD_Option",
      u"Given_LineType",
      u"Given_Impedance",
      u"Given_SoftStop",
      u"Given_rsvd1",
      u"Given_rsvd2",
      u"Given_rsvd3",
      u"Given_ConfigID",
      u"Given_Base_Slot_No",
      u"Given_SlotOffset",
      u"Given_Line"}},
    {Command::Insert_All_Lines,
     u"Insert_All_Lines",
     u"INSERT INTO Used_Lines (Partition_Name, Partition_ID, Starting_Node_Caption, "
     u"Starting_Node_Type_ID, Starting_Node_Number, Volume_Name, Volume_ID, Mode_Caption, "
     u"Mode_Type_ID, Mode_Ring_Number, Description, NIS_Option, RTQA_Option, ACD_Option, "
     u"LineType, Impedance, SoftStop, rsvd1, rsvd2, rsvd3, Config_ID, Base_Slot_No, "
     u"Slot_Offset, Line) VALUES (`Given_Partition_Name`, `Given_Partition_ID`, "
     u"`Given_Starting_Node_Caption`, `Given_Starting_Node_Type_ID`, "
     u"`Given_Starting_Node_Number`, `Given_Volume_Name`, `Given_Volume_ID`, "
     u"`Given_Mode_Caption`, `Given_Mode_Type_ID`, `Given_Mode_Ring_Number`, "
     u"`Given_Description`, `Given_NIS_Option`, `Given_RTQA_Option`, `Given_ACD_Option`, "
     u"`Given_LineType`, `Given_Impedance`, `Given_SoftStop`, `Given_rsvd1`, "
     u"`Given_rsvd2`, `Given_rsvd3`, `Given_Config_ID`, `Given_Base_Slot_No`, "
     u"`Given_Slot_Offset`, `Given_Line`)",
     {u"Given_Partition_Name",
      u"Given_Partition_ID",
      u"Given_Starting_Node_Caption",
      u"Given_Starting_Node_Type_ID",
      u"Given_Starting_Node_Number",
      u"Given_Volume_Name",
      u"Given_Volume_ID",
      u"Given_Mode_Caption",
      u"Given_Mode_Type_ID",
      u"Given_Mode_Ring_Number",
      u"Given_Description",
      u"Given_NIS_Option",
      u"Given_RTQA_Option",
      u"Given_ACD_Option",
      u"Given_LineType",
      u"Given_Impedance",
      u"Given_SoftStop",
      u"Given_rsvd1",
      u"Given_rsvd2",
      u"Given_rsvd3",
      u"Given_Config_ID",
      u"Given_Base_Slot_No",
      u"Given_Slot_Offset",
      u"Given_Line"}},
    {Command::Insert_Used_Card,
     u"Insert_Used_Card",
     u"INSERT INTO Used_Cards (Config_ID, Base_Slot_No, Slot_Offset, Slot_Caption, "
     u"Card_Type_Name, Card_Type_No, Card_Variant, Part_Num, Country_Code) VALUES "
     u"(`Given_Config_ID`, `Given_Base_Slot_No`, `Given_Slot_Offset`, "
     u"`Given_Slot_Caption`, `Given_Card_Type_Name`, `Given_Card_Type_No`, "
     u"`Given_Card_Variant`, `Given_Part_Num`, `Given_Country_Code`)",
     {u"Given_Config_ID", u"Given_Base_Slot_No", u"Given_Slot_Offset", u"Given_Slot_Caption",
      u"Given_Card_Type_Name", u"Given_Card_Type_No", u"Given_Card_Variant", u"Given_Part_Num",
      u"Given_Country_Code"}},
    {Command::Delete_Used_Card,
     u"Delete_Used_Card",
     u"DELETE FROM Used_Cards WHERE Config_ID = `Given_ConfigID` AND Base_Slot_No = "
     u"`Given_Base_Slot_No` AND Slot_Offset = `Given_Slot_Offset`",
     {u"Given_ConfigID", u"Given_Base_Slot_No", u"Given_Slot_Offset"}},
    {Command::Get_Specific_Line,
     u"Get_Specific_Line",
     u"SELECT * FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND Base_Slot_No = "
     u"`Given_Base_Slot_No` AND Slot_Offset = `Given_Slot_Offset` AND Line = `Given_Line`",
     {u"Given_ConfigID", u"Given_Base_Slot_No", u"Given_Slot_Offset", u"Given_Line"}},
    {Command::GetORVSettings,
     u"GetORVSettings",
     u"SELECT * FROM orvsettings WHERE ConfigID = Given_ConfigID",
     {u"Given_ConfigID"}},
};

// All other parameters meet columns of whole numbers.
constexpr TextView kTexts[] = {u"Given_Partition_Name", u"Given_Starting_Node_Caption",
                               u"Given_Volume_Name",    u"Given_Mode_Caption",
                               u"Given_Description",    u"Given_Slot_Caption",
                               u"Given_Card_Type_Name", u"Given_Part_Num"};

class StoredStatement : public ::testing::TestWithParam<StoredCommand> {};

TEST_P(StoredStatement, IsThisOne) {
  const CommandDefinition& defined = DefinitionOf(GetParam().command);
  EXPECT_EQ(ToUtf8(defined.name), ToUtf8(GetParam().name));
  EXPECT_EQ(ToUtf8(defined.statement), ToUtf8(GetParam().statement));
  ASSERT_EQ(defined.parameters.size(), GetParam().parameters.size());
  for (size_t i = 0; i < defined.parameters.size(); ++i) {
    const Parameter& parameter = defined.parameters[i];
    EXPECT_EQ(ToUtf8(parameter.name), ToUtf8(GetParam().parameters[i]));
    const bool is_text =
        std::find(std::begin(kTexts), std::end(kTexts), parameter.name) != std::end(kTexts);
    EXPECT_EQ(parameter.kind, is_text ? ParameterKind::AnyText : ParameterKind::WholeNumber);
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, StoredStatement, ::testing::ValuesIn(kStored),
                         [](const auto& stored) { return ToUtf8(stored.param.name); });

TEST(StoredStatements, AreThese) {
  ASSERT_EQ(AllCommands().size(), kStored.size());
  for (size_t i = 0; i < kStored.size(); ++i) {
    EXPECT_EQ(AllCommands()[i].command, kStored[i].command);
  }
}

}  // namespace
}  // namespace rdv
