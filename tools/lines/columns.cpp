#include "tools/lines/columns.h"

namespace rdv::lines {

TextView CaptionOf(int column) {
  return kGridColumns[static_cast<size_t>(column - 1)].caption;
}

std::optional<int> ShownColumnNamed(TextView caption) {
  for (const ShownColumn& shown : kShownColumns) {
    if (EqualsIgnoringCase(CaptionOf(shown.column), caption)) return shown.column;
  }
  return std::nullopt;
}

std::string PlaceOf(int16_t config, int line, int column) {
  std::string place = "configuration " + std::to_string(config);
  if (line != 0) place += ", line " + std::to_string(line);
  if (column != 0) place += ", " + ToUtf8(CaptionOf(column));
  return place;
}

Text CodesOf(const RowCells& row, const ShownColumn& shown) {
  Text codes;
  for (const CodeColumn& code : shown.codes) {
    if (code.column == 0) break;
    if (!codes.empty()) codes += u"/";
    codes += row[code.column];
  }
  return codes;
}

}  // namespace rdv::lines
