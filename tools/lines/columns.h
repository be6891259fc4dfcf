// The columns that people see, and the codes behind each of them.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>

#include "rules/grid_columns.h"
#include "rules/grid_rows.h"

namespace rdv::lines {

struct CodeColumn {
  int column = 0;
  const char* name = "";  // in JSON
};

struct ShownColumn {
  int column = 0;
  const char* name = "";              // in JSON
  std::array<CodeColumn, 2> codes{};  // those that are there come first; `column` 0 for none
};

// In the order of the grid.
inline constexpr std::array<ShownColumn, 11> kShownColumns = {{
    {column::kLine, "line", {}},
    {column::kLineType, "lineType", {{{column::kLineTypeCode, "lineTypeCode"}}}},
    {column::kPartition, "partition", {{{column::kPartitionCode, "partitionCode"}}}},
    {column::kStartingNode,
     "startingNode",
     {{{column::kStartingNodeType, "startingNodeType"},
       {column::kStartingNodeNumber, "startingNodeNumber"}}}},
    {column::kVolume, "volume", {{{column::kVolumeCode, "volumeCode"}}}},
    {column::kMode,
     "mode",
     {{{column::kModeType, "modeType"}, {column::kModeNumber, "modeNumber"}}}},
    {column::kNISOption, "nisOption", {}},
    {column::kEWTOption, "ewtOption", {}},
    {column::kImpedance, "impedance", {{{column::kImpedanceCode, "impedanceCode"}}}},
    {column::kSoftStop, "softStop", {{{column::kSoftStopCode, "softStopCode"}}}},
    {column::kLabel, "label", {}},
}};

// What stands above a column.
TextView CaptionOf(int column);

// The shown column of that caption, without regard to case; nothing for any other name.
std::optional<int> ShownColumnNamed(TextView caption);

// "configuration 4, line 5, Impedance", as far as there is a line and a column.
std::string PlaceOf(int16_t config, int line, int column);

// The codes of a cell, as in "1/3"; "" for a column without any.
Text CodesOf(const RowCells& row, const ShownColumn& shown);

}  // namespace rdv::lines
