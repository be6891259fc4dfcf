#include "control/grid_loading.h"

#include "data/database.h"
#include "data/settings_file.h"
#include "rules/error_report.h"

namespace rdv {
namespace {

// Once so many rows are counted, lines are filled in up to here.
constexpr int kLastFilledLine = 10;

Text OptionCaption(const Recordset& line, TextView field, int16_t line_type) {
  if (line_type == line_type::kMusicOnHold) return Text(caption::kNotApplicable);
  const int16_t option = ToInteger(line.Field(field));
  return option != 0 ? Decimal(option) : Text(caption::kDisabled);
}

bool HasImpedance(int16_t line_type) {
  return !Contains(std::array{line_type::kMusicOnHold, line_type::kImpedance}, line_type);
}

bool ShowsLine(const LineGrid& grid, int line) {
  for (int row = 1; row <= grid.RowCount(); ++row) {
    if (grid.Cell(row, column::kLine) == Decimal(line)) return true;
  }
  return false;
}

}  // namespace

bool GridLoading::FormatLVControl() {
  return RunLoader(state_, u"FormatLVControl", [&] {
    LineGrid& grid = form_.LVRDVLineConfig;
    grid.SetReportView();
    grid.RemoveColumns();
    for (const GridColumn& column : kGridColumns) grid.AddColumn(column.caption, column.width);
  });
}

bool GridLoading::LoadData() {
  return RunLoader(state_, u"LoadData", [&] {
    DataBase database;
    database.Get_Used_Lines(Decimal(state_.BusinessRules.ConfigID));
    Progress progress;
    Recordset& lines = database.rsGet_Used_Lines;
    const bool nothing_is_stored = lines.EndOfFile();
    for (; !lines.EndOfFile(); lines.MoveNext()) ShowStoredLine(lines, progress);
    if (nothing_is_stored) CreateDefaultUnit(database, progress);
    FillWithNotInstalledLines(progress.LineCounter);
    lines.Close();
    database.Close();
  });
}

void GridLoading::ShowStoredLine(const Recordset& line, Progress& progress) {
  const int16_t number = ToInteger(line.Field(u"Line"));
  const Value& acd_option = line.Field(u"ACD_Option");
  if (!IsNull(acd_option)) state_.AcdOptions[number] = ToText(acd_option);

  const Value& stored_type = line.Field(u"LineType");
  for (const int16_t code : LineTypeCodes) {
    if (!IsNull(stored_type) && ToLong(stored_type) == code) progress.line_type = code;
  }

  // The second number of a music-on-hold line.
  if (number % 2 == 0 && progress.line_type == line_type::kMusicOnHold) {
    progress.LineCounter = number;
    return;
  }
  if (progress.line_type == line_type::kNotInstalled) {
    templates_.LoadDefaultNotInstalledLine(number, Target::NewRow);
  } else {
    const RowCells cells = CellsOfStoredLine(line, progress.line_type);
    // A row whose key is taken is left out; the lines after it are still shown.
    EndSilently([&] { AddRow(form_.LVRDVLineConfig, RowKey(progress.LineCounter), cells); });
  }
  ++progress.LineCounter;
}

RowCells GridLoading::CellsOfStoredLine(const Recordset& line, int16_t line_type) const {
  const auto number = [&](TextView field) { return ToInteger(line.Field(field)); };
  const Text partition = Decimal(number(u"Partition_ID"));
  const int16_t node_type = number(u"Starting_Node_Type_ID");
  const int16_t node_number = number(u"Starting_Node_Number");
  const int16_t volume = number(u"Volume_ID");
  const int16_t mode_type = number(u"Mode_Type_ID");
  const int16_t mode_number = number(u"Mode_Ring_Number");
  const int16_t impedance = number(u"Impedance");
  const bool stops_softly = number(u"SoftStop") == soft_stop::kEnabled;
  const Value& label = line.Field(u"Description");

  RowCells cells;
  cells[column::kLineTypeCode] = Decimal(line_type);
  cells[column::kPartitionCode] = partition;
  cells[column::kStartingNodeType] = Decimal(node_type);
  cells[column::kStartingNodeNumber] = Decimal(node_number);
  cells[column::kVolumeCode] = Decimal(volume);
  cells[column::kModeType] = Decimal(mode_type);
  cells[column::kModeNumber] = Decimal(mode_number);
  cells[column::kImpedanceCode] = Decimal(impedance);
  cells[column::kSoftStopCode] = Decimal(stops_softly ? soft_stop::kEnabled : soft_stop::kDisabled);
  cells[column::kLine] = Decimal(number(u"Line"));
  cells[column::kLineType] = state_.CardTypes.Item(Decimal(line_type));
  cells[column::kPartition] = state_.PartitionList.Item(partition);
  cells[column::kStartingNode] = StartingNodeCaption(node_type, node_number);
  cells[column::kVolume] = VolumeCaption(volume, line_type);
  cells[column::kMode] = ModeCaption(mode_type, mode_number);
  cells[column::kNISOption] = OptionCaption(line, u"NIS_Option", line_type);
  cells[column::kEWTOption] = OptionCaption(line, u"RTQA_Option", line_type);
  cells[column::kImpedance] =
      HasImpedance(line_type) ? ImpedanceCodeToCaption(impedance) : caption::kNotApplicable;
  cells[column::kSoftStop] = !HasImpedance(line_type) ? caption::kNotApplicable
                             : stops_softly           ? caption::kEnabled
                                                      : caption::kDisabled;
  cells[column::kLabel] = IsNull(label) ? Text() : ToText(label);
  return cells;
}

Text GridLoading::StartingNodeCaption(int16_t node_type, int16_t number) const {
  const Text& name = state_.NodeNames.Item(Decimal(node_type));
  return node_type == node_type::kNone ? name : name + u" " + Decimal(number);
}

Text GridLoading::VolumeCaption(int16_t volume, int16_t line_type) const {
  if (volume == volume::kHigh) return Text(caption::kHigh);
  if (line_type == line_type::kMusicOnHold) {
    return GetMOHVolumeCaptionfromINI(Decimal(volume), PlainReporter(form_.screen));
  }
  const bool names_low = line_type == line_type::kImpedance || line_type == line_type::kHybrid;
  if (volume == volume::kLow && names_low) return Text(caption::kLow);
  return Decimal(volume);
}

Text GridLoading::ModeCaption(int16_t mode_type, int16_t number) const {
  const Text& name = state_.ModeNames.Item(Decimal(mode_type));
  const bool shows_number = number > 0 && Contains(kStoredModeTypesWithNumber, mode_type);
  return shows_number ? name + u"=" + Decimal(number) : name;
}

void GridLoading::CreateDefaultUnit(DataBase& database, Progress& progress) {
  for (int16_t line = 1; line <= 8; ++line) {
    templates_.LoadDefaultHybrideLine(line, Target::NewRow, Store::Yes);
    ++progress.LineCounter;
  }
  for (const int16_t line : kMusicOnHoldLines) {
    templates_.LoadDefaultMOHLine(line, Target::NewRow, Store::Yes);
    ++progress.LineCounter;
  }
  ReplaceCard(database);
}

void GridLoading::ReplaceCard(DataBase& database) {
  const Text config = Decimal(state_.BusinessRules.ConfigID);
  const Text card_type = Decimal(line_type::kHybrid);
  database.Delete_Used_Card(config, kBaseSlotNo, kSlotOffset);
  database.Insert_Used_Card({
      config,                            // Config_ID
      Text(kBaseSlotNo),                 // Base_Slot_No
      Text(kSlotOffset),                 // Slot_Offset
      u"Slot 1",                         // Slot_Caption
      state_.CardTypes.Item(card_type),  // Card_Type_Name
      card_type,                         // Card_Type_No
      u"0",                              // Card_Variant
      u"",                               // Part_Num
      u"0",                              // Country_Code
  });
}

void GridLoading::FillWithNotInstalledLines(int LineCounter) {
  const auto fill = [&](int line) {
    if (ShowsLine(form_.LVRDVLineConfig, line)) return;
    templates_.LoadDefaultNotInstalledLine(static_cast<int16_t>(line), Target::NewRow);
  };
  if (LineCounter >= kLastFilledLine) {
    for (int line = LineCounter; line <= kLastFilledLine; ++line) fill(line);
  } else {
    for (const int16_t line : kMusicOnHoldLines) fill(line);
  }
}

}  // namespace rdv
