#include "rules/line_record.h"

namespace rdv {
namespace {

Text OptionOf(const Text& shown) {
  const bool none = EqualsIgnoringCase(shown, caption::kDisabled) ||
                    EqualsIgnoringCase(shown, caption::kNotApplicable);
  return none ? Text(u"0") : shown;
}

}  // namespace

LineArguments ArgumentsOf(const LineRecord& record) {
  return {record.Partition_Name,
          record.Partition_ID,
          record.Starting_Node_Caption,
          record.Starting_Node_Type_ID,
          record.Starting_Node_Number,
          record.Volume_Name,
          record.Volume_ID,
          record.Mode_Caption,
          record.Mode_Type_ID,
          record.Mode_Ring_Number,
          record.Description,
          record.NIS_Option,
          record.RTQA_Option,
          record.ACD_Option,
          record.LineType,
          record.Impedance,
          record.SoftStop,
          record.rsvd1,
          record.rsvd2,
          record.rsvd3,
          record.Config_ID,
          record.Base_Slot_No,
          record.Slot_Offset,
          record.Line};
}

LineArguments LineArgumentsOf(const RowCells& cells, int16_t ConfigID, TextView ACD_Option) {
  return ArgumentsOf({
      .Partition_Name = cells[column::kPartition],
      .Partition_ID = cells[column::kPartitionCode],
      .Starting_Node_Caption = cells[column::kStartingNode],
      .Starting_Node_Type_ID = cells[column::kStartingNodeType],
      .Starting_Node_Number = cells[column::kStartingNodeNumber],
      .Volume_Name = cells[column::kVolume],
      .Volume_ID = cells[column::kVolumeCode],
      .Mode_Caption = cells[column::kMode],
      .Mode_Type_ID = cells[column::kModeType],
      .Mode_Ring_Number = cells[column::kModeNumber],
      .Description = cells[column::kLabel],
      .NIS_Option = OptionOf(cells[column::kNISOption]),
      .RTQA_Option = OptionOf(cells[column::kEWTOption]),
      .ACD_Option = Text(ACD_Option),
      .LineType = cells[column::kLineTypeCode],
      .Impedance = cells[column::kImpedanceCode],
      .SoftStop = cells[column::kSoftStopCode],
      .Config_ID = Decimal(ConfigID),
      .Line = cells[column::kLine],
  });
}

}  // namespace rdv
