#include "tools/lines/text_table.h"

#include <algorithm>

namespace rdv::lines {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Marks that are drawn over the character before them.
constexpr Range kWithoutWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},
                                   {0x0610, 0x061A}, {0x064B, 0x065F}, {0x200B, 0x200F},
                                   {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                           {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                           {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <size_t Count>
bool IsIn(const Range (&ranges)[Count], char32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
    return range.first <= character && character <= range.last;
  });
}

bool BreaksLine(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

// Turns the direction of what follows, or isolates it.
bool TurnsDirection(char16_t unit) {
  return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069);
}

}  // namespace

std::string OnOneLine(TextView text) {
  Text line(text);
  std::replace_if(
      line.begin(), line.end(),
      [](char16_t unit) { return BreaksLine(unit) || TurnsDirection(unit); }, u' ');
  return ToUtf8(line);
}

size_t DisplayWidth(TextView text) {
  size_t width = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    const bool paired = character >= 0xD800 && character < 0xDC00 && i + 1 < text.size() &&
                        text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (paired) character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00u);
    if (IsIn(kWithoutWidth, character)) continue;
    width += IsIn(kWide, character) ? 2u : 1u;
  }
  return width;
}

std::string AlignedTable(const std::vector<std::vector<Text>>& rows) {
  std::vector<size_t> widths;
  for (const std::vector<Text>& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  std::string table;
  for (const std::vector<Text>& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += OnOneLine(row[i]);
      if (i + 1 < row.size()) line.append(widths[i] - DisplayWidth(row[i]) + 2, ' ');
    }
    line.resize(line.find_last_not_of(' ') + 1);
    table += line + '\n';
  }
  return table;
}

Text InQuotes(TextView text) {
  return u"\"" + Text(text) + u"\"";
}

std::string Quotation(TextView text) {
  return "\"" + OnOneLine(text) + "\"";
}

}  // namespace rdv::lines
