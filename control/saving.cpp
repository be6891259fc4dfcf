#include "control/saving.h"

#include <utility>

#include "rules/editors.h"
#include "rules/error_report.h"
#include "rules/line_record.h"
#include "rules/line_templates.h"

namespace rdv {
namespace {

Text JoinedWithCommas(const LineArguments& values) {
  Text joined = values.front();
  for (size_t i = 1; i < values.size(); ++i) joined.append(u",").append(values[i]);
  return joined;
}

}  // namespace

Saving::Saving(const Form& form, ControlState& state, std::function<void()> raise_RemoveME)
    : form_(form), state_(state), raise_RemoveME_(std::move(raise_RemoveME)) {}

void Saving::cmdApply_Click() {
  LineArguments current;
  try {
    if (form_.cmdApply.Enabled()) WriteLines(current);
    form_.cmdApply.SetEnabled(false);
    form_.screen.SetPointer(MousePointer::Default);
  } catch (const RuntimeError& error) {
    form_.screen.SetPointer(MousePointer::Default);
    ShowPlainMessage(form_.screen, ErrorBlock(error, u"cmdApply_Click") + Text(kLineBreak) +
                                       JoinedWithCommas(current));
  }
}

void Saving::WriteLines(LineArguments& current) {
  form_.screen.SetPointer(MousePointer::Hourglass);
  ShowEditors(form_, false);
  DataBase database;
  const int rows = form_.LVRDVLineConfig.RowCount();
  for (int row = 1; row <= rows; ++row) WriteLine(database, row, current);
  database.Close();
}

void Saving::WriteLine(DataBase& database, int row, LineArguments& current) {
  const LineGrid& grid = form_.LVRDVLineConfig;
  const Text line = grid.Cell(row, column::kLine);
  const bool installed = LineTypeOf(grid, row) != line_type::kNotInstalled;
  const RowCells cells = installed ? CellsOf(grid, row) : NotInstalledCells(line);
  current = LineArgumentsOf(cells, state_.BusinessRules.ConfigID, AcdOptionOf(line));
  if (Contains(kMusicOnHoldLines, CInt(line)) && !IsStored(database, line)) {
    InsertMohPair(database, CInt(line));
  }
  database.Update_All_Lines(current);
}

bool Saving::IsStored(DataBase& database, TextView line) const {
  database.Get_Specific_Line(Decimal(state_.BusinessRules.ConfigID), kBaseSlotNo, kSlotOffset,
                             line);
  const bool stored = !database.rsGet_Specific_Line.EndOfFile();
  database.rsGet_Specific_Line.Close();
  return stored;
}

// The line itself and the number after it, which no row shows. The update that follows rewrites the
// first of them only.
void Saving::InsertMohPair(DataBase& database, int16_t first_line) const {
  const Text node_type = Decimal(node_type::kMusic);
  const Text mode_type = Decimal(mode_type::kContinuous);
  const Text volume = Decimal(volume::kDefaultMusicOnHold);
  LineRecord record = {
      .Partition_Name = state_.PartitionList.Item(u"1"),
      .Partition_ID = u"1",
      .Starting_Node_Caption = state_.NodeNames.Item(node_type),
      .Starting_Node_Type_ID = node_type,
      .Starting_Node_Number = first_line == kMusicOnHoldLines.front() ? u"1" : u"2",
      .Volume_Name = volume,
      .Volume_ID = volume,
      .Mode_Caption = state_.ModeNames.Item(mode_type),
      .Mode_Type_ID = mode_type,
      .Mode_Ring_Number = u"1",
      .LineType = Decimal(line_type::kMusicOnHold),
      .Config_ID = Decimal(state_.BusinessRules.ConfigID),
  };
  for (const int line : {first_line + 0, first_line + 1}) {
    record.Line = Decimal(line);
    database.Insert_All_Lines(ArgumentsOf(record));
  }
}

Text Saving::AcdOptionOf(TextView line) const {
  const auto remembered = state_.AcdOptions.find(CLng(line));
  return remembered == state_.AcdOptions.end() ? Text(u"0") : remembered->second;
}

void Saving::cmdOK_Click() {
  cmdApply_Click();
  if (!form_.cmdApply.Enabled()) raise_RemoveME_();
}

void Saving::cmdCancel_Click() {
  if (!form_.cmdApply.Enabled()) {
    raise_RemoveME_();
    return;
  }
  switch (form_.screen.ShowMessage(u"Do you want to save changes?",
                                   message_style::kYesNoCancelQuestion, u"Save")) {
    case MessageAnswer::Yes:
      cmdOK_Click();
      raise_RemoveME_();
      break;
    case MessageAnswer::No:
      raise_RemoveME_();
      break;
    case MessageAnswer::Ok:
    case MessageAnswer::Cancel:
      break;
  }
}

}  // namespace rdv
