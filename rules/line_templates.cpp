#include "rules/line_templates.h"

#include "rules/error_report.h"
#include "rules/line_record.h"
#include "rules/volume_captions.h"

namespace rdv {

enum class NodeNumber { LineNumber, MohCounter };

// Of an installed line. Every line starts in partition 1 with mode number 1, soft stop and
// impedance 0 and an empty label.
struct LineTemplate {
  TextView procedure;
  Code line_type;
  Code starting_node_type;
  NodeNumber starting_node_number;
  Code volume;
  Code mode_type;
  TextView nis_option;
  TextView ewt_option;
  TextView impedance;
  TextView soft_stop;
};

namespace {

constexpr int16_t kFirstPartition = 1;
constexpr int16_t kFirstModeNumber = 1;

constexpr LineTemplate kHybridTemplate = {
    .procedure = u"LoadDefaultHybrideLine",
    .line_type = line_type::kHybrid,
    .starting_node_type = Code{0},
    .starting_node_number = NodeNumber::LineNumber,
    .volume = volume::kHigh,
    .mode_type = Code{1},
    .nis_option = caption::kDisabled,
    .ewt_option = caption::kDisabled,
    .impedance = u"Use Country Code",
    .soft_stop = caption::kDisabled,
};

constexpr LineTemplate kLowImpedanceTemplate = {
    .procedure = u"LoadDefaultLowImpedanceLine",
    .line_type = line_type::kImpedance,
    .starting_node_type = Code{0},
    .starting_node_number = NodeNumber::LineNumber,
    .volume = volume::kHigh,
    .mode_type = Code{13},
    .nis_option = caption::kDisabled,
    .ewt_option = caption::kNotApplicable,
    .impedance = caption::kNotApplicable,
    .soft_stop = caption::kDisabled,
};

constexpr LineTemplate kMohTemplate = {
    .procedure = u"LoadDefaultMOHLine",
    .line_type = line_type::kMusicOnHold,
    .starting_node_type = node_type::kMusic,
    .starting_node_number = NodeNumber::MohCounter,
    .volume = volume::kDefaultMusicOnHold,
    .mode_type = mode_type::kContinuous,
    .nis_option = caption::kNotApplicable,
    .ewt_option = caption::kNotApplicable,
    .impedance = caption::kNotApplicable,
    .soft_stop = caption::kNotApplicable,
};

void Place(LineGrid& grid, int16_t line, Target target, const RowCells& cells) {
  if (target == Target::NewRow) {
    AddRow(grid, RowKey(line), cells);
  } else {
    OverwriteRow(grid, line, cells);
  }
}

}  // namespace

RowCells NotInstalledCells(TextView line) {
  RowCells cells;
  cells[column::kLineTypeCode] = Decimal(line_type::kNotInstalled);
  cells[column::kPartitionCode] = Decimal(kFirstPartition);
  cells[column::kStartingNodeType] = Decimal(node_type::kNone);
  cells[column::kStartingNodeNumber] = u"-1";
  cells[column::kVolumeCode] = u"0";
  cells[column::kModeType] = u"1";
  cells[column::kModeNumber] = Decimal(kFirstModeNumber);
  cells[column::kImpedanceCode] = u"0";
  cells[column::kSoftStopCode] = Decimal(soft_stop::kDisabled);
  cells[column::kLine] = line;
  cells[column::kLineType] = caption::kNotInstalled;
  for (int column = column::kPartition; column <= column::kSoftStop; ++column) {
    cells[column] = caption::kNotApplicable;
  }
  return cells;
}

bool LineTemplates::LoadDefaultNotInstalledLine(int16_t line, Target target) {
  return RunReporting(form_.screen, u"LoadDefaultNotInstalledLine", [&] {
    Place(form_.LVRDVLineConfig, line, target, NotInstalledCells(Decimal(line)));
  });
}

bool LineTemplates::LoadDefaultHybrideLine(int16_t line, Target target, Store store) {
  return LoadDefaultLine(kHybridTemplate, line, target, store);
}

bool LineTemplates::LoadDefaultLowImpedanceLine(int16_t line, Target target, Store store) {
  return LoadDefaultLine(kLowImpedanceTemplate, line, target, store);
}

bool LineTemplates::LoadDefaultMOHLine(int16_t line, Target target, Store store) {
  return LoadDefaultLine(kMohTemplate, line, target, store);
}

bool LineTemplates::LoadDefaultLine(const LineTemplate& source, int16_t line, Target target,
                                    Store store) {
  return RunReporting(form_.screen, source.procedure, [&] {
    const RowCells cells = CellsFrom(source, line);
    Place(form_.LVRDVLineConfig, line, target, cells);
    if (store == Store::Yes) {
      DataBase database;
      database.Insert_All_Lines(LineArgumentsOf(cells, state_.BusinessRules.ConfigID, u"0"));
      database.Close();
    }
  });
}

int16_t LineTemplates::StartingNodeNumber(const LineTemplate& source, int16_t line) {
  if (source.starting_node_number == NodeNumber::LineNumber) return line;
  int16_t& counter = state_.MohNodeCounter;
  counter = counter < 0 || counter > 1 ? int16_t{1} : static_cast<int16_t>(counter + 1);
  return counter;
}

RowCells LineTemplates::CellsFrom(const LineTemplate& source, int16_t line) {
  const Text partition = Decimal(kFirstPartition);
  const Text node_type = Decimal(source.starting_node_type);
  const Text node_number = Decimal(StartingNodeNumber(source, line));
  const Text mode_type = Decimal(source.mode_type);
  const Text mode_number = Decimal(kFirstModeNumber);

  RowCells cells;
  cells[column::kLineTypeCode] = Decimal(source.line_type);
  cells[column::kPartitionCode] = partition;
  cells[column::kStartingNodeType] = node_type;
  cells[column::kStartingNodeNumber] = node_number;
  cells[column::kVolumeCode] = Decimal(source.volume);
  cells[column::kModeType] = mode_type;
  cells[column::kModeNumber] = mode_number;
  cells[column::kImpedanceCode] = u"0";
  cells[column::kSoftStopCode] = Decimal(soft_stop::kDisabled);
  cells[column::kLine] = Decimal(line);
  cells[column::kLineType] = state_.CardTypes.Item(Decimal(source.line_type));
  cells[column::kPartition] = state_.PartitionList.Item(partition);
  cells[column::kStartingNode] = state_.NodeNames.Item(node_type) + u" " + node_number;
  cells[column::kVolume] = StoredVolumeCaption(source.volume, source.line_type, form_.screen);
  cells[column::kMode] = state_.ModeNames.Item(mode_type) + u"=" + mode_number;
  cells[column::kNISOption] = source.nis_option;
  cells[column::kEWTOption] = source.ewt_option;
  cells[column::kImpedance] = source.impedance;
  cells[column::kSoftStop] = source.soft_stop;
  return cells;
}

}  // namespace rdv
