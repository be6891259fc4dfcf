#include "tools/lines/unit.h"

#include <algorithm>
#include <set>

#include "data/settings_file.h"
#include "rules/error_report.h"
#include "rules/line_codes.h"
#include "rules/volume_captions.h"
#include "runtime/conversion.h"
#include "tools/lines/stored_lines.h"

namespace rdv::lines {

Text InOneLine(TextView report) {
  Text line;
  bool between = false;
  for (const char16_t unit : report) {
    if (unit == u'\r' || unit == u'\n') {
      between = !line.empty();
      continue;
    }
    if (between) line += u"; ";
    between = false;
    line += unit;
  }
  return line;
}

namespace {

// The last line of a report: those before it say where it comes from.
Text ReasonOf(const Text& report) {
  const size_t end = report.find_last_not_of(u"\r\n ");
  const Text text = report.substr(0, end == Text::npos ? 0 : end + 1);
  return text.substr(text.find_last_of(u"\r\n") + 1);
}

// The fields that a row shows of a line, as they are stored.
struct StoredCell {
  int column;
  TextView field;
};
constexpr StoredCell kStoredCells[] = {
    {column::kLine, u"Line"},
    {column::kLineType, u"LineType"},
    {column::kLineTypeCode, u"LineType"},
    {column::kPartition, u"Partition_Name"},
    {column::kStartingNode, u"Starting_Node_Caption"},
    {column::kVolume, u"Volume_Name"},
    {column::kMode, u"Mode_Caption"},
    {column::kNISOption, u"NIS_Option"},
    {column::kEWTOption, u"RTQA_Option"},
    {column::kImpedance, u"Impedance"},
    {column::kSoftStop, u"SoftStop"},
    {column::kLabel, u"Description"},
};

// Whether the row shows the line, or the pair for music on hold whose second half it is.
bool IsShownBy(const RowCells& row, int16_t line, const Text& type) {
  const int32_t shown = CLng(row[column::kLine]);
  if (shown == line) return true;
  const Text music = Decimal(line_type::kMusicOnHold);
  return line % 2 == 0 && shown == line - 1 && type == music && row[column::kLineTypeCode] == music;
}

}  // namespace

Text InOneLine(const std::vector<memory::ShownMessage>& reports) {
  Text text;
  std::set<Text> told;
  for (const memory::ShownMessage& report : reports) {
    if (!told.insert(ReasonOf(report.text)).second) continue;
    if (!text.empty()) text += u"; ";
    text += InOneLine(report.text);
  }
  return text;
}

UnitReader::UnitReader(SiteSession& session)
    : session_(session),
      widgets_(form_.Widgets()),
      loaders_(widgets_, state_),
      templates_(widgets_, state_),
      grid_loading_(widgets_, state_, templates_) {
  state_.ChinaImpedanceImplemented =
      GetHasImplementedImpedanceForChinaFromINI(PlainReporter(form_.screen));
  for (const memory::ShownMessage& message : form_.screen.TakeMessages()) {
    settings_failure_ = ReasonOf(message.text);
  }
  bool loaded = grid_loading_.FormatLVControl();
  for (const auto load :
       {&ListLoaders::Load_List_of_All_Card_Types, &ListLoaders::Load_List_of_All_Node_Names,
        &ListLoaders::Load_List_of_All_mode_Names, &ListLoaders::LoadLineTypeToCombo,
        &ListLoaders::LoadNISOptionToCombo, &ListLoaders::LoadImpedanceToCombo,
        &ListLoaders::LoadSoftStopToCombo, &ListLoaders::LoadModeNumberToCombo}) {
    loaded = (loaders_.*load)() && loaded;
  }
  if (!loaded) session.RaiseUnusable(ToUtf8(InOneLine(state_.LoadErrorText)));
}

Unit UnitReader::Read(int16_t config) {
  Unit unit;
  unit.config = config;
  unit.stored = ReadStoredLines(session_, config);
  state_.BusinessRules.ConfigID = config;
  state_.AcdOptions.clear();
  form_.LVRDVLineConfig.RemoveRows();
  const bool listed = loaders_.LoadPartitionNameToCombo();
  if (listed && unit.HasLines()) grid_loading_.LoadData();
  for (int row = 1; row <= form_.LVRDVLineConfig.RowCount(); ++row) {
    unit.rows.push_back(CellsOf(form_.LVRDVLineConfig, row));
  }
  unit.failure = TakeFailure();
  unit.not_shown = NotShown(unit);
  return unit;
}

std::vector<RowCells> UnitReader::NotShown(const Unit& unit) const {
  std::vector<RowCells> lines;
  if (!unit.HasLines()) return lines;
  const size_t number = ColumnAt(unit.stored, u"Line");
  const size_t line_type = ColumnAt(unit.stored, u"LineType");
  for (const std::vector<Value>& stored : unit.stored.rows) {
    const int16_t line = ToInteger(stored[number]);
    const Text type = Shown(stored[line_type]);
    const auto shows = [&](const RowCells& row) { return IsShownBy(row, line, type); };
    if (std::ranges::any_of(unit.rows, shows)) continue;
    RowCells cells;
    for (const StoredCell& cell : kStoredCells) {
      cells[cell.column] = Shown(stored[ColumnAt(unit.stored, cell.field)]);
    }
    if (state_.CardTypes.Contains(type)) cells[column::kLineType] = state_.CardTypes.Item(type);
    lines.push_back(std::move(cells));
  }
  return lines;
}

Text UnitReader::StoredVolume(Code volume, Code line_type) {
  return StoredVolumeCaption(volume, line_type, form_.screen);
}

bool UnitReader::LoadListsOf(Code line_type) {
  bool loaded = true;
  for (const auto load : {&ListLoaders::LoadStartingNodeToCombo, &ListLoaders::LoadVolumeToCombo,
                          &ListLoaders::LoadModeToCombo}) {
    loaded = (loaders_.*load)(line_type) && loaded;
  }
  if (!loaded) TakeFailure();
  return loaded;
}

Text UnitReader::TakeFailure() {
  Text failure = InOneLine(state_.LoadErrorText);
  state_.LoadErrorText.clear();
  std::vector<memory::ShownMessage> messages = form_.screen.TakeMessages();
  // What is wrong with the settings is wrong with every unit, and told of the site.
  std::erase_if(messages, [this](const memory::ShownMessage& message) {
    return !settings_failure_.empty() && ReasonOf(message.text) == settings_failure_;
  });
  const Text told = InOneLine(messages);
  if (!failure.empty() && !told.empty()) failure += u"; ";
  return failure + told;
}

}  // namespace rdv::lines
