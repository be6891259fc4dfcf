#include "tools/lines/report_summary.h"

#include <algorithm>
#include <map>
#include <vector>

#include "rules/line_codes.h"
#include "tools/lines/columns.h"
#include "tools/lines/html_page.h"

namespace rdv::lines {
namespace {

using Counts = std::map<Text, size_t>;

struct Bar {
  Text name;
  size_t count;
};

// The most frequent first; equal ones by name.
std::vector<Bar> Sorted(const Counts& counts) {
  std::vector<Bar> bars;
  for (const auto& [name, count] : counts) bars.push_back({name, count});
  std::stable_sort(bars.begin(), bars.end(),
                   [](const Bar& a, const Bar& b) { return a.count > b.count; });
  return bars;
}

// 12345 as "12,345".
std::string Grouped(size_t number) {
  std::string digits = std::to_string(number);
  for (size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

void AppendBars(const char* title, const Counts& counts, std::string& to) {
  constexpr size_t kLongest = 1000;
  const std::vector<Bar> bars = Sorted(counts);
  to += std::string("<figure><figcaption>") + title + "</figcaption><table class=bars>\n";
  const size_t most = bars.empty() ? 1 : bars.front().count;
  for (const Bar& bar : bars) {
    to += "<tr><th scope=row>";
    AppendHtml(bar.name, to);
    // As a picture, not as a background, so that every printer prints it.
    to +=
        "<td><svg viewBox=\"0 0 1000 10\" preserveAspectRatio=none aria-hidden=true><rect width=" +
        std::to_string(std::max<size_t>(bar.count * kLongest / most, 4)) +
        " height=10 /></svg><td>" + Grouped(bar.count) + "\n";
  }
  to += "</table></figure>\n";
}

void AppendFigure(size_t number, const char* one, const char* many, std::string& to) {
  to += "<li><b>" + Grouped(number) + "</b> " + (number == 1 ? one : many) + "\n";
}

// A mode's name without its number.
Text ModeName(const Text& shown) {
  const size_t equals = shown.rfind(u'=');
  const bool numbered =
      equals != Text::npos && equals + 1 < shown.size() &&
      std::all_of(shown.begin() + static_cast<ptrdiff_t>(equals) + 1, shown.end(), IsDigit);
  return numbered ? shown.substr(0, equals) : shown;
}

}  // namespace

void AppendSummary(const SiteContents& contents, std::string& to) {
  Counts types;
  Counts volumes;
  Counts modes;
  size_t lines = 0;
  size_t not_shown = 0;
  for (const Unit& unit : contents.units) {
    not_shown += unit.not_shown.size();
    for (const std::vector<RowCells>* rows : {&unit.rows, &unit.not_shown}) {
      for (const RowCells& row : *rows) {
        ++lines;
        ++types[row[column::kLineType]];
        if (row[column::kLineTypeCode] == Decimal(line_type::kNotInstalled)) continue;
        ++volumes[row[column::kVolume]];
        ++modes[ModeName(row[column::kMode])];
      }
    }
  }
  to += "<ul class=figures>\n";
  AppendFigure(contents.units.size(), "unit", "units", to);
  AppendFigure(lines, "line", "lines", to);
  AppendFigure(contents.findings.size(), "finding", "findings", to);
  to +=
      "</ul>\n<p>Lines are counted as they stand below, the two halves of a music-on-hold pair as "
      "one";
  if (not_shown > 0) to += "; of these the control does not show " + Grouped(not_shown);
  to += ".</p>\n<div class=charts>\n";
  AppendBars("Lines by type", types, to);
  AppendBars("Volumes", volumes, to);
  AppendBars("Modes", modes, to);
  to += "</div>\n";
}

}  // namespace rdv::lines
