// The columns of a stored line, in the order of the parameters of Insert_All_Lines and
// Update_All_Lines.
#pragma once

#include <array>

#include "runtime/text.h"

namespace rdv {

inline constexpr std::array<TextView, 24> kLineColumns = {u"Partition_Name",
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
                                                          u"rsvd3",
                                                          u"Config_ID",
                                                          u"Base_Slot_No",
                                                          u"Slot_Offset",
                                                          u"Line"};

}  // namespace rdv
