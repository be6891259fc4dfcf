#include "rules/line_record.h"

namespace rdv {
namespace {

Text OptionOf(const Text& shown) {
  const bool none = EqualsIgnoringCase(shown, caption::kDisabled) ||
                    EqualsIgnoringCase(shown, caption::kNotApplicable);
  return none ? Text(u"0") : shown;
}

}  // namespace

LineArguments LineArgumentsOf(const RowCells& cells, int16_t ConfigID, TextView ACD_Option) {
  return {
      cells[column::kPartition],            // Partition_Name
      cells[column::kPartitionCode],        // Partition_ID
      cells[column::kStartingNode],         // Starting_Node_Caption
      cells[column::kStartingNodeType],     // Starting_Node_Type_ID
      cells[column::kStartingNodeNumber],   // Starting_Node_Number
      cells[column::kVolume],               // Volume_Name
      cells[column::kVolumeCode],           // Volume_ID
      cells[column::kMode],                 // Mode_Caption
      cells[column::kModeType],             // Mode_Type_ID
      cells[column::kModeNumber],           // Mode_Ring_Number
      cells[column::kLabel],                // Description
      OptionOf(cells[column::kNISOption]),  // NIS_Option
      OptionOf(cells[column::kEWTOption]),  // RTQA_Option
      Text(ACD_Option),                     // ACD_Option
      cells[column::kLineTypeCode],         // LineType
      cells[column::kImpedanceCode],        // Impedance
      cells[column::kSoftStopCode],         // SoftStop
      u"0",                                 // rsvd1
      u"0",                                 // rsvd2
      u"0",                                 // rsvd3
      Decimal(ConfigID),                    // Config_ID
      Text(kBaseSlotNo),                    // Base_Slot_No
      Text(kSlotOffset),                    // Slot_Offset
      cells[column::kLine],                 // Line
  };
}

}  // namespace rdv
