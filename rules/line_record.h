// A line as the database stores it.
#pragma once

#include "data/database.h"
#include "rules/grid_rows.h"

namespace rdv {

// By the names of the fields; what is not given is empty or nothing.
struct LineRecord {
  Text Partition_Name;
  Text Partition_ID;
  Text Starting_Node_Caption;
  Text Starting_Node_Type_ID;
  Text Starting_Node_Number;
  Text Volume_Name;
  Text Volume_ID;
  Text Mode_Caption;
  Text Mode_Type_ID;
  Text Mode_Ring_Number;
  Text Description{};
  Text NIS_Option = u"0";
  Text RTQA_Option = u"0";
  Text ACD_Option = u"0";
  Text LineType;
  Text Impedance = u"0";
  Text SoftStop = u"0";
  Text rsvd1 = u"0";
  Text rsvd2 = u"0";
  Text rsvd3 = u"0";
  Text Config_ID;
  Text Base_Slot_No{kBaseSlotNo};
  Text Slot_Offset{kSlotOffset};
  Text Line{};
};

// In the order of the parameters of Update_All_Lines and Insert_All_Lines.
LineArguments ArgumentsOf(const LineRecord& record);

// Those of a grid row: codes from the hidden columns, names from the captions. An option whose
// caption is "Disabled" or "N/A", in any case of letters, is stored as 0, and so are the reserved
// fields.
LineArguments LineArgumentsOf(const RowCells& cells, int16_t ConfigID, TextView ACD_Option);

}  // namespace rdv
