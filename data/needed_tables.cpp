#include "data/needed_tables.h"

#include <algorithm>
#include <iterator>

namespace rdv {
namespace {

constexpr TextView kMaximum[] = {u"Config_ID", u"PartitionID", u"NodeType_ID", u"Max_Number"};
constexpr TextView kSettings[] = {u"ConfigID", u"PartitionEnabled"};
constexpr TextView kPartition[] = {u"Config_ID", u"PartitionID", u"Name"};
constexpr TextView kNames[] = {u"ID", u"English_Name"};
constexpr TextView kAllowedMode[] = {u"Card_Type_ID", u"Mode_Type_ID"};
constexpr TextView kAllowedVolume[] = {u"Card_Type_ID", u"Volume_Type_ID"};
constexpr TextView kUsedCard[] = {u"Config_ID",    u"Base_Slot_No",   u"Slot_Offset",
                                  u"Slot_Caption", u"Card_Type_Name", u"Card_Type_No",
                                  u"Card_Variant", u"Part_Num",       u"Country_Code"};
constexpr TextView kUsedLine[] = {u"Config_ID",
                                  u"Base_Slot_No",
                                  u"Slot_Offset",
                                  u"Line",
                                  u"Partition_Name",
                                  u"Partition_ID",
                                  u"Starting_Node_Caption",
                                  u"Starting_Node_Type_ID",
                                  u"Starting_Node_Number",
                                  u"Volume_Name",
                                  u"Volume_ID",
                                  u"Mode_Caption",
                                  u"Mode_Type_ID",
                                  u"Mode_Ring_Number",
                                  u"Description",
                                  u"NIS_Option",
                                  u"RTQA_Option",
                                  u"ACD_Option",
                                  u"LineType",
                                  u"Impedance",
                                  u"SoftStop",
                                  u"rsvd1",
                                  u"rsvd2",
                                  u"rsvd3"};

constexpr NeededTable kTables[] = {
    {u"Node_Type_Max", kMaximum},
    {u"orvsettings", kSettings},
    {u"Partition_Settings", kPartition},
    {u"SR_Card_Type_Names", kNames},
    {u"SR_Card_Type_can_use_Mode", kAllowedMode},
    {u"SR_Card_Type_can_use_Volume", kAllowedVolume},
    {u"SR_Mode_Type_Names", kNames},
    {u"SR_Node_Type_Names", kNames},
    {u"Used_Cards", kUsedCard},
    {u"Used_Lines", kUsedLine},
};

}  // namespace

std::span<const NeededTable> NeededTables() {
  return kTables;
}

std::span<const TextView> ColumnsOf(TextView table) {
  const auto found = std::find_if(
      std::begin(kTables), std::end(kTables),
      [table](const NeededTable& needed) { return EqualsIgnoringCase(needed.name, table); });
  return found == std::end(kTables) ? std::span<const TextView>() : found->columns;
}

}  // namespace rdv
