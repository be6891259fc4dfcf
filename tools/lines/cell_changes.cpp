#include <map>

#include "tools/lines/changes.h"
#include "tools/lines/columns.h"

namespace rdv::lines {
namespace {

Text WithCodes(const RowCells& row, const ShownColumn& shown) {
  return row[shown.column] + u" (" + CodesOf(row, shown) + u")";
}

}  // namespace

void CompareCells(int16_t config, const std::vector<RowCells>& before,
                  const std::vector<RowCells>& after, std::vector<CellChange>& to) {
  struct Sides {
    const RowCells* before = nullptr;
    const RowCells* after = nullptr;
  };
  std::map<int32_t, Sides> by_line;
  for (const RowCells& row : before) by_line[CLng(row[column::kLine])].before = &row;
  for (const RowCells& row : after) by_line[CLng(row[column::kLine])].after = &row;

  static const RowCells kNoRow;
  for (const auto& [line, sides] : by_line) {
    const RowCells& old_row = sides.before ? *sides.before : kNoRow;
    const RowCells& new_row = sides.after ? *sides.after : kNoRow;
    for (const ShownColumn& shown : kShownColumns) {
      if (shown.column == column::kLine) continue;
      const Text& old_text = old_row[shown.column];
      const Text& new_text = new_row[shown.column];
      if (old_text != new_text) {
        to.push_back({config, line, shown.column, old_text, new_text});
      } else if (CodesOf(old_row, shown) != CodesOf(new_row, shown)) {
        to.push_back(
            {config, line, shown.column, WithCodes(old_row, shown), WithCodes(new_row, shown)});
      }
    }
  }
}

}  // namespace rdv::lines
