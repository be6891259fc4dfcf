#include "control/grid_loading.h"

#include "data/database.h"
#include "rules/error_report.h"
#include "rules/stored_line.h"

namespace rdv {
namespace {

// Once so many rows are counted, lines are filled in up to here.
constexpr int kLastFilledLine = 10;

}  // namespace

bool GridLoading::FormatLVControl() {
  return RunLoader(state_, u"FormatLVControl", BlockStart::OnALineOfItsOwn, [&] {
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
    FillWithNotInstalledLines(progress);
    lines.Close();
    database.Close();
  });
}

void GridLoading::ShowStoredLine(const Recordset& line, Progress& progress) {
  const int16_t number = ToInteger(line.Field(u"Line"));
  progress.stored_lines.insert(number);
  const Value& acd_option = line.Field(u"ACD_Option");
  if (!IsNull(acd_option)) state_.AcdOptions[number] = ToText(acd_option);

  progress.line_type = StoredLineType(line).value_or(progress.line_type);

  // The second number of a music-on-hold line.
  if (number % 2 == 0 && progress.line_type == line_type::kMusicOnHold) {
    progress.LineCounter = number;
    return;
  }
  if (progress.line_type == line_type::kNotInstalled) {
    templates_.LoadDefaultNotInstalledLine(number, Target::NewRow);
  } else {
    const RowCells cells = CellsOfStoredLine(line, progress.line_type, state_, form_.screen);
    // A row whose key is taken is left out; the lines after it are still shown.
    EndSilently([&] { AddRow(form_.LVRDVLineConfig, RowKey(progress.LineCounter), cells); });
  }
  ++progress.LineCounter;
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

void GridLoading::ReplaceCard(DataBase& database) const {
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

// A stored line has its row, or must not be given one, as the second of a music-on-hold pair:
// saving would overwrite it.
void GridLoading::FillWithNotInstalledLines(const Progress& progress) {
  const auto fill = [&](int line) {
    const auto number = static_cast<int16_t>(line);
    if (progress.stored_lines.contains(number)) return;
    templates_.LoadDefaultNotInstalledLine(number, Target::NewRow);
  };
  if (progress.LineCounter >= kLastFilledLine) {
    for (int line = progress.LineCounter; line <= kLastFilledLine; ++line) fill(line);
  } else {
    for (const int16_t line : kMusicOnHoldLines) fill(line);
  }
}

}  // namespace rdv
