// report: one page with every unit as it looks and what a check finds in it.
#include <map>
#include <set>

#include "tools/command_line/exit_codes.h"
#include "tools/lines/columns.h"
#include "tools/lines/commands.h"
#include "tools/lines/html_page.h"
#include "tools/lines/output_file.h"
#include "tools/lines/report_summary.h"
#include "tools/lines/site_contents.h"

namespace rdv::lines {
namespace {

using UnitFindings = std::vector<const Finding*>;

std::string Anchor(int16_t config) {
  return "c" + std::to_string(config);
}

// The place of a unit's finding among them, from 1, as it stands at the cell and in the notes.
std::string Mark(size_t number) {
  return "<sup>" + std::to_string(number) + "</sup>";
}

// The line at whose row a finding is marked: of a second half of a music-on-hold pair, which has no
// row of its own, the first one.
int32_t HomeOf(const Finding& finding, const std::set<int32_t>& lines) {
  const int32_t line = finding.line;
  return line > 1 && !lines.contains(line) && lines.contains(line - 1) ? line - 1 : line;
}

std::string RowClass(const RowCells& row) {
  const Text& type = row[column::kLineTypeCode];
  if (type == Decimal(line_type::kNotInstalled)) return " class=none";
  if (type == Decimal(line_type::kMusicOnHold)) return " class=moh";
  return "";
}

// Which findings stand at a cell; those of a line as a whole stand at its number.
std::string MarksAt(const UnitFindings& findings, const std::set<int32_t>& lines, int32_t line,
                    int column) {
  std::string marks;
  for (size_t i = 0; i < findings.size(); ++i) {
    const Finding& finding = *findings[i];
    const int at = finding.column == 0 ? int{column::kLine} : finding.column;
    if (finding.line == 0 && finding.column == 0) continue;
    if (HomeOf(finding, lines) == line && at == column) marks += Mark(i + 1);
  }
  return marks;
}

void AppendRow(const RowCells& row, const UnitFindings& findings, const std::set<int32_t>& lines,
               std::string& to) {
  to += "<tr" + RowClass(row) + ">";
  const int32_t line = CLng(row[column::kLine]);
  for (const ShownColumn& shown : kShownColumns) {
    const std::string marks = findings.empty() ? "" : MarksAt(findings, lines, line, shown.column);
    to += marks.empty() ? "<td>" : "<td class=found>";
    AppendHtml(row[shown.column], to);
    to += marks;
  }
  to += '\n';
}

void AppendNotes(const UnitFindings& findings, std::string& to) {
  if (findings.empty()) return;
  to += "<ol class=notes>\n";
  for (const Finding* finding : findings) {
    to += "<li>";
    if (finding->line != 0) to += "Line " + std::to_string(finding->line);
    if (finding->column != 0) {
      to += ", ";
      AppendHtml(CaptionOf(finding->column), to);
      to += " <q>";
      AppendHtml(finding->value, to);
      to += "</q>";
    }
    to += finding->line != 0 ? ": " : "";
    AppendHtml(finding->why, to);
    to += '\n';
  }
  to += "</ol>\n";
}

void AppendUnit(const Unit& unit, const UnitFindings& findings, std::string& to) {
  to += "<section id=" + Anchor(unit.config) + ">\n<h3>Configuration " +
        std::to_string(unit.config) + "</h3>\n";
  if (!unit.HasLines()) {
    to += "<p class=empty>No lines are stored.</p>\n</section>\n";
    return;
  }
  std::set<int32_t> lines;
  for (const std::vector<RowCells>* rows : {&unit.rows, &unit.not_shown}) {
    for (const RowCells& row : *rows) lines.insert(CLng(row[column::kLine]));
  }
  if (!lines.empty()) {
    to += "<table class=unit><thead><tr>";
    for (const ShownColumn& shown : kShownColumns) {
      to += "<th scope=col>";
      AppendHtml(CaptionOf(shown.column), to);
    }
    to += "</thead><tbody>\n";
    for (const RowCells& row : unit.rows) AppendRow(row, findings, lines, to);
    if (!unit.not_shown.empty())
      to += "<tr class=left-out><td colspan=11>Stored, and not shown by the control:\n";
    for (const RowCells& row : unit.not_shown) AppendRow(row, findings, lines, to);
    to += "</tbody></table>\n";
  }
  AppendNotes(findings, to);
  to += "</section>\n";
}

// Where to look first: the units with findings.
void AppendIndex(const std::map<int16_t, UnitFindings>& findings, const Text& settings_failure,
                 std::string& to) {
  if (!settings_failure.empty()) {
    to += "<p>The site: ";
    AppendHtml(settings_failure, to);
    to += "</p>\n";
  }
  if (findings.empty()) {
    if (settings_failure.empty())
      to += "<p>Nothing was found that could not have been chosen.</p>\n";
    return;
  }
  to +=
      "<p>Each is marked at its cell below, those of the second half of a music-on-hold pair in "
      "the "
      "row of the first; what concerns a unit as a whole stands below its lines.</p>\n"
      "<ul class=index>\n";
  for (const auto& [config, of_unit] : findings) {
    to += "<li><a href=#" + Anchor(config) + ">Configuration " + std::to_string(config) +
          "</a> <small>" + std::to_string(of_unit.size()) +
          (of_unit.size() == 1 ? " finding" : " findings") + "</small>\n";
  }
  to += "</ul>\n";
}

}  // namespace

int Report(const Selection& selection, const std::optional<Text>& file, const Text& title,
           const Surroundings& around) {
  const SiteContents contents = ReadSite(selection, WithFindings::Yes, around);
  std::map<int16_t, UnitFindings> by_config;
  for (const Finding& finding : contents.findings) by_config[finding.config].push_back(&finding);

  std::string body;
  body.reserve(contents.units.size() * 4000 + 10000);
  AppendSummary(contents, body);
  body += "<h2>Findings</h2>\n";
  AppendIndex(by_config, contents.settings_failure, body);
  body += "<h2>Units</h2>\n";
  const UnitFindings none;
  for (const Unit& unit : contents.units) {
    const auto found = by_config.find(unit.config);
    AppendUnit(unit, found == by_config.end() ? none : found->second, body);
  }
  std::string heading;
  AppendHtml(title, heading);
  const std::string page = HtmlPage(heading, body);
  if (file) {
    WriteFile(*file, page);
  } else {
    around.out << page;
  }
  return contents.Flawless() ? tools::kDone : tools::kFindings;
}

}  // namespace rdv::lines
