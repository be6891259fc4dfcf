#include "widgets/message_text.h"

#include <algorithm>
#include <array>

namespace rdv {
namespace {

constexpr char16_t kReplacement = u'\uFFFD';
constexpr char16_t kEllipsis = u'\u2026';

struct Range {
  char16_t first;
  char16_t last;
};

// Marks of direction and joiners that letters of some scripts need stay: they reorder nothing of
// others.
constexpr std::array<Range, 6> kNotShown = {{
    {0x0000, 0x001F},  // controls
    {0x007F, 0x009F},
    {0x2028, 0x202E},  // separators, embeddings and overrides of the direction
    {0x2066, 0x206F},  // isolates of the direction, and what went before them
    {0xD800, 0xDFFF},  // surrogates, where they do not come in pairs
    {0xFFF9, 0xFFFB},  // annotations
}};

bool IsShown(char16_t unit) {
  if (unit == u'\r' || unit == u'\n' || unit == u'\t') return true;
  return std::none_of(kNotShown.begin(), kNotShown.end(), [unit](const Range& range) {
    return unit >= range.first && unit <= range.last;
  });
}

// A character beyond the first 65,536, in two units.
bool IsPair(TextView text) {
  return text.size() > 1 && text[0] >= 0xD800 && text[0] <= 0xDBFF && text[1] >= 0xDC00 &&
         text[1] <= 0xDFFF;
}

}  // namespace

Text MessageText(TextView text) {
  Text shown;
  size_t lines = 1;
  while (!text.empty()) {
    if (text.front() == u'\n') ++lines;
    const size_t units = IsPair(text) ? 2 : 1;
    if (lines > kMostMessageLines || shown.size() + units > kLongestMessage) {
      shown.push_back(kEllipsis);
      break;
    }
    if (units == 2) {
      shown.append(text.substr(0, units));
    } else {
      shown.push_back(IsShown(text.front()) ? text.front() : kReplacement);
    }
    text.remove_prefix(units);
  }
  return shown;
}

}  // namespace rdv
