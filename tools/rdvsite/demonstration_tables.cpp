#include "tools/rdvsite/demonstration_tables.h"

#include <initializer_list>
#include <utility>

namespace rdv {
namespace {

using jet::ColumnSpec;
using jet::ColumnType;
using jet::IndexSpec;
using jet::TableSpec;

ColumnSpec Integer(TextView name) {
  ColumnSpec column;
  column.name = name;
  column.type = ColumnType::Integer;
  return column;
}

ColumnSpec OfText(TextView name, uint16_t characters) {
  ColumnSpec column;
  column.name = name;
  column.type = ColumnType::Text;
  column.length = characters;
  return column;
}

ColumnSpec Of(ColumnType type, TextView name) {
  ColumnSpec column;
  column.name = name;
  column.type = type;
  return column;
}

// The first `key_columns` of the columns are the primary key; none when it is 0.
TableSpec Table(TextView name, size_t key_columns, std::vector<ColumnSpec> columns) {
  TableSpec table;
  table.name = name;
  if (key_columns > 0) {
    IndexSpec& key = table.indexes.emplace_back();
    key.name = u"PrimaryKey";
    key.primary = true;
    for (size_t i = 0; i < key_columns; ++i) key.columns.push_back({columns[i].name});
  }
  table.columns = std::move(columns);
  return table;
}

TableSpec NameTable(TextView name) {
  return Table(name, 1, {Integer(u"ID"), OfText(u"English_Name", 50)});
}

TableSpec UsedLines() {
  return Table(u"Used_Lines", 4,
               {Integer(u"Config_ID"),
                Integer(u"Base_Slot_No"),
                Integer(u"Slot_Offset"),
                Integer(u"Line"),
                OfText(u"Partition_Name", 50),
                Integer(u"Partition_ID"),
                OfText(u"Starting_Node_Caption", 100),
                Integer(u"Starting_Node_Type_ID"),
                Integer(u"Starting_Node_Number"),
                OfText(u"Volume_Name", 50),
                Integer(u"Volume_ID"),
                OfText(u"Mode_Caption", 50),
                Integer(u"Mode_Type_ID"),
                Integer(u"Mode_Ring_Number"),
                OfText(u"Description", 255),
                Integer(u"NIS_Option"),
                Integer(u"RTQA_Option"),
                Integer(u"ACD_Option"),
                Integer(u"LineType"),
                Integer(u"Impedance"),
                Integer(u"SoftStop"),
                Integer(u"rsvd1"),
                Integer(u"rsvd2"),
                Integer(u"rsvd3")});
}

TableSpec UsedCards() {
  return Table(
      u"Used_Cards", 3,
      {Integer(u"Config_ID"), Integer(u"Base_Slot_No"), Integer(u"Slot_Offset"),
       OfText(u"Slot_Caption", 50), OfText(u"Card_Type_Name", 50), Integer(u"Card_Type_No"),
       Integer(u"Card_Variant"), OfText(u"Part_Num", 50), Integer(u"Country_Code")});
}

TableSpec Settings() {
  return Table(u"orvsettings", 0,
               {Integer(u"ConfigID"), Of(ColumnType::Boolean, u"PartitionEnabled"),
                OfText(u"Config_Caption", 100), Of(ColumnType::Long, u"Revision"),
                Of(ColumnType::DateTime, u"Saved_On"), Of(ColumnType::Double, u"Idle_Factor"),
                Of(ColumnType::Currency, u"Upkeep_Cost"), Of(ColumnType::Memo, u"Remarks")});
}

constexpr CodeName kCardTypes[] = {{1, u"Empty Slot"},  {2, u"Control Card"},   {3, u"Memory Card"},
                                   {4, u"LAN Card"},    {5, u"Impedance Line"}, {6, u"Hybrid Line"},
                                   {7, u"Hybrid Card"}, {8, u"MOH Line"}};

constexpr CodeName kNodeTypes[] = {
    {0, u"Announcement"}, {1, u"Menu"},         {2, u"Queue"},        {3, u"Phone Book"},
    {4, u"Voice Box"},    {5, u"Operator"},     {6, u"Timetable"},    {7, u"Questionnaire"},
    {8, u"Forwarding"},   {9, u"Notice Board"}, {10, u"Search"},      {11, u"Music"},
    {12, u"Door Relay"},  {13, u"Line Test"},   {14, u"Appointment"}, {15, u"Alarm Call"},
    {999, u"None"}};

constexpr CodeName kModeTypes[] = {
    {1, u"Ring"},          {2, u"Delay"},         {3, u"At Once"},       {4, u"Reversal"},
    {5, u"Quiet Line"},    {6, u"Hook Flash"},    {7, u"Earth Start"},   {8, u"Intrusion"},
    {9, u"In Step"},       {10, u"By Hand"},      {11, u"Remote"},       {12, u"Night Service"},
    {13, u"Loop"},         {14, u"Trunk"},        {15, u"All Lines"},    {16, u"Through Dial"},
    {17, u"Endless"},      {18, u"When Called"},  {19, u"Reserve"},      {20, u"Party Line"},
    {21, u"Busy Relief"},  {22, u"Repetition"},   {23, u"Step by Step"}, {24, u"Clock"},
    {25, u"Ring Counter"}, {26, u"Tone Set"},     {27, u"Line Group"},   {28, u"Channel"},
    {29, u"Mute"},         {30, u"Continuation"}, {31, u"Precedence"},   {32, u"Series"},
    {33, u"Search Group"}};

// Lines of type 6 are looked up as card type 7.
constexpr CodePair kAllowedModes[] = {{5, 3},  {5, 7},  {5, 13}, {5, 14}, {5, 26}, {6, 1},  {6, 2},
                                      {7, 1},  {7, 2},  {7, 3},  {7, 13}, {7, 24}, {7, 25}, {7, 26},
                                      {7, 27}, {7, 32}, {7, 33}, {8, 17}, {8, 18}, {8, 29}};
constexpr CodePair kAllowedVolumes[] = {{5, 0},   {5, 3}, {5, 128}, {6, 0}, {6, 128}, {7, 0},
                                        {7, 128}, {8, 1}, {8, 2},   {8, 3}, {8, 4},   {8, 5},
                                        {8, 6},   {8, 7}, {8, 8},   {8, 9}};

}  // namespace

std::vector<TableSpec> ConfigurationTables() {
  return {
      Table(u"Node_Type_Max", 3,
            {Integer(u"Config_ID"), Integer(u"PartitionID"), Integer(u"NodeType_ID"),
             Integer(u"Max_Number")}),
      Table(u"Partition_Settings", 2,
            {Integer(u"Config_ID"), Integer(u"PartitionID"), OfText(u"Name", 50)}),
      NameTable(u"SR_Card_Type_Names"),
      Table(u"SR_Card_Type_can_use_Mode", 2, {Integer(u"Card_Type_ID"), Integer(u"Mode_Type_ID")}),
      Table(u"SR_Card_Type_can_use_Volume", 2,
            {Integer(u"Card_Type_ID"), Integer(u"Volume_Type_ID")}),
      NameTable(u"SR_Mode_Type_Names"),
      NameTable(u"SR_Node_Type_Names"),
      UsedCards(),
      UsedLines(),
      Settings()};
}

std::span<const CodeName> CardTypeNames() {
  return kCardTypes;
}
std::span<const CodeName> NodeTypeNames() {
  return kNodeTypes;
}
std::span<const CodeName> ModeTypeNames() {
  return kModeTypes;
}
std::span<const CodePair> AllowedModes() {
  return kAllowedModes;
}
std::span<const CodePair> AllowedVolumes() {
  return kAllowedVolumes;
}

TextView NameOf(std::span<const CodeName> names, int16_t code) {
  for (const CodeName& entry : names) {
    if (entry.code == code) return entry.name;
  }
  return {};
}

}  // namespace rdv
