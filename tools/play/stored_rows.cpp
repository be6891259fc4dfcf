#include "tools/play/stored_rows.h"

#include "data/connection_route.h"
#include "data/folders_and_files.h"
#include "runtime/error.h"

namespace rdv::play {
namespace {

constexpr TextView kLineStatement =
    u"SELECT Config_ID, Base_Slot_No, Slot_Offset, Line, Partition_Name, Partition_ID, "
    u"Starting_Node_Caption, Starting_Node_Type_ID, Starting_Node_Number, Volume_Name, Volume_ID, "
    u"Mode_Caption, Mode_Type_ID, Mode_Ring_Number, Description, NIS_Option, RTQA_Option, "
    u"ACD_Option, LineType, Impedance, SoftStop, rsvd1, rsvd2, rsvd3 FROM Used_Lines "
    u"WHERE Config_ID = `Given_ConfigID` ORDER BY Base_Slot_No, Slot_Offset, Line";

constexpr TextView kCardStatement =
    u"SELECT Config_ID, Base_Slot_No, Slot_Offset, Slot_Caption, Card_Type_Name, Card_Type_No, "
    u"Card_Variant, Part_Num, Country_Code FROM Used_Cards "
    u"WHERE Config_ID = `Given_ConfigID` ORDER BY Base_Slot_No, Slot_Offset";

RowTable RowsOf(TextView statement, int16_t config) {
  try {
    const auto connection =
        OpenConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + GetDatabaseFolder() +
                       Text(ORVANTPlusFilesAndFolders::kDatabaseFile));
    const Argument given = Decimal(config);
    constexpr Parameter kParameter{u"Given_ConfigID", ParameterKind::WholeNumber};
    return connection->Execute(statement, {&given, 1}, {&kParameter, 1}).rows.value_or(RowTable{});
  } catch (const RuntimeError&) {
    return {};
  }
}

}  // namespace

RowTable StoredLines(int16_t config) {
  return RowsOf(kLineStatement, config);
}

RowTable StoredCards(int16_t config) {
  return RowsOf(kCardStatement, config);
}

}  // namespace rdv::play
