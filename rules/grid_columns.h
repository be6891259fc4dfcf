// The twenty columns of the line grid. The first nine have no width and hold the row's codes, so
// that editing and saving need not look captions up again; the other eleven are what the user
// sees. Columns are counted from 1.
#pragma once

#include <array>
#include <numeric>

#include "widgets/layout.h"

namespace rdv {

namespace column {
enum : int {
  kLineTypeCode = 1,
  kPartitionCode,
  kStartingNodeType,
  kStartingNodeNumber,
  kVolumeCode,
  kModeType,
  kModeNumber,
  kImpedanceCode,
  kSoftStopCode,
  kLine,
  kLineType,
  kPartition,
  kStartingNode,
  kVolume,
  kMode,
  kNISOption,
  kEWTOption,
  kImpedance,
  kSoftStop,
  kLabel,
};
}  // namespace column

inline constexpr int kColumnCount = column::kLabel;

struct GridColumn {
  int column;
  TextView caption;
  Twips width;
};

inline constexpr std::array<GridColumn, kColumnCount> kGridColumns = {{
    {column::kLineTypeCode, u"Line Type", 0},
    {column::kPartitionCode, u"Partition", 0},
    {column::kStartingNodeType, u"Starting Node", 0},
    {column::kStartingNodeNumber, u"Starting Node", 0},
    {column::kVolumeCode, u"Volume", 0},
    {column::kModeType, u"Mode", 0},
    {column::kModeNumber, u"Mode", 0},
    {column::kImpedanceCode, u"Impedance", 0},
    {column::kSoftStopCode, u"Soft Stop", 0},
    {column::kLine, u"Line", 500},
    {column::kLineType, u"Line Type", 1300},
    {column::kPartition, u"Partition", 1200},
    {column::kStartingNode, u"Starting Node", 1500},
    {column::kVolume, u"Volume", 800},
    {column::kMode, u"Mode", 1500},
    {column::kNISOption, u"NIS Option", 1100},
    {column::kEWTOption, u"EWT Option", 1100},
    {column::kImpedance, u"Impedance", 1200},
    {column::kSoftStop, u"Soft Stop", 1000},
    {column::kLabel, u"Label", 1800},
}};

constexpr bool StandInTheirOrder() {
  for (int i = 0; i < kColumnCount; ++i) {
    if (kGridColumns[static_cast<size_t>(i)].column != i + 1) return false;
  }
  return true;
}
static_assert(StandInTheirOrder());

// All columns, and the most rows that a unit is given.
inline constexpr GridContent kGridContent = {
    std::accumulate(kGridColumns.begin(), kGridColumns.end(), Twips{0},
                    [](Twips sum, const GridColumn& column) { return sum + column.width; }),
    11};

}  // namespace rdv
