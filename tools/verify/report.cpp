#include "tools/verify/report.h"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string_view>

#include "tools/verify/steps.h"

namespace rdv::verify {
namespace {

constexpr std::string_view kStyle =
    "body{font:15px/1.4 sans-serif;margin:2em;max-width:75em}"
    "table{border-collapse:collapse;margin:1em 0}"
    "th,td{border:1px solid #bbb;padding:.3em .6em;text-align:left;vertical-align:top}"
    ".failed{background:#fdd}.passed{background:#dfd}.skipped{background:#eee}"
    "pre{white-space:pre-wrap;margin:.3em 0}img{max-width:100%;border:1px solid #bbb}";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char each : text) {
    switch (each) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += each;
    }
  }
  return escaped;
}

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = 0;
    for (size_t j = i; j < i + 3; ++j) {
      group = (group << 8) | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (size_t digit = 0; digit < 4; ++digit) {
      const bool beyond = i + digit > bytes.size();
      text += beyond ? '=' : kDigits[(group >> (18 - 6 * digit)) & 63];
    }
  }
  return text;
}

std::string TitleOf(const Step& step) {
  return step.bits == 0 ? step.name : step.name + ", " + std::to_string(step.bits) + " bits";
}

std::string_view Proves(const Step& step) {
  for (const StepDescription& each : kSteps) {
    if (each.name == step.name) return each.proves;
  }
  return "tests";
}

void WriteSteps(const Report& report, std::ostream& out) {
  out << "<h2>Steps</h2><table><tr><th>step<th>proves<th>result<th>passed<th>failed<th>skipped\n";
  for (const Step& step : report.steps) {
    out << "<tr class=" << NameOf(step.Result()) << "><td>" << Escaped(TitleOf(step)) << "<td>"
        << Escaped(Proves(step)) << "<td>" << NameOf(step.Result());
    for (const Outcome outcome : {Outcome::Passed, Outcome::Failed, Outcome::Skipped})
      out << "<td>" << step.Count(outcome);
    out << '\n';
  }
  out << "</table>\n";
}

void WriteFindings(const Report& report, Outcome outcome, std::ostream& out) {
  out << "<h2>What " << (outcome == Outcome::Failed ? "failed" : "was skipped, and why")
      << "</h2>\n";
  bool any = false;
  for (const Step& step : report.steps) {
    for (const Finding& finding : step.findings) {
      if (finding.outcome != outcome) continue;
      any = true;
      out << "<div class=" << NameOf(outcome) << "><b>" << Escaped(TitleOf(step))
          << "</b>: " << Escaped(finding.name) << "<pre>" << Escaped(finding.text)
          << "</pre></div>\n";
    }
  }
  if (!any) out << "<p>Nothing.\n";
}

void WritePictures(const Report& report, std::ostream& out) {
  out << "<h2>Pictures</h2>\n";
  bool any = false;
  for (const Step& step : report.steps) {
    for (const Picture& picture : step.pictures) {
      any = true;
      out << "<p>" << Escaped(TitleOf(step)) << ": " << Escaped(picture.caption)
          << "<br><img alt=\"" << Escaped(picture.caption) << "\" src=\"data:image/png;base64,"
          << Base64(picture.png) << "\">\n";
    }
  }
  if (!any) out << "<p>None were taken.\n";
}

void WriteNotVerified(const Report& report, std::ostream& out) {
  out << "<h2>What only Windows can tell</h2>\n"
         "<table><tr><th>what<th>why it was not known<th>told by<th>this machine says\n";
  for (const NotVerified& row : report.not_verified) {
    out << "<tr><td>" << Escaped(row.what) << "<td>" << Escaped(row.why) << "<td>"
        << Escaped(row.told_by) << "<td>";
    for (const std::string& line : ToldAbout(row, report.steps)) out << Escaped(line) << "<br>";
    out << '\n';
  }
  out << "</table>\n";
}

}  // namespace

bool AnyFailed(const Report& report) {
  return std::any_of(report.steps.begin(), report.steps.end(),
                     [](const Step& step) { return step.Result() == Outcome::Failed; });
}

std::string Verdict(const Report& report) {
  int passed = 0;
  int failed = 0;
  int skipped = 0;
  for (const Step& step : report.steps) {
    passed += step.Count(Outcome::Passed);
    failed += step.Count(Outcome::Failed);
    skipped += step.Count(Outcome::Skipped);
  }
  return std::string(failed > 0 ? "FAILED" : "passed") +
         (report.limits.empty() ? "" : ", a part only") + ": " + std::to_string(passed) +
         " passed, " + std::to_string(failed) + " failed, " + std::to_string(skipped) + " skipped";
}

std::vector<std::string> ToldAbout(const NotVerified& row, const std::vector<Step>& steps) {
  std::vector<std::string> lines;
  for (const std::string& name : row.steps) {
    bool taken = false;
    for (const Step& step : steps) {
      if (step.name != name) continue;
      taken = true;
      std::string line = TitleOf(step) + ": " + std::string(NameOf(step.Result()));
      if (step.Result() == Outcome::Skipped && !step.findings.empty())
        line += " (" + step.findings.front().text + ")";
      lines.push_back(std::move(line));
    }
    if (!taken) lines.push_back(name + ": not part of this run");
  }
  if (row.steps.empty()) lines.emplace_back("nothing; a person has to look");
  return lines;
}

void WriteHtml(const Report& report, std::ostream& out) {
  out << "<!DOCTYPE html>\n<html lang=en><meta charset=utf-8><title>TLV RDV Line Configuration: "
      << Escaped(Verdict(report)) << "</title>\n<style>" << kStyle << "</style>\n"
      << "<h1>TLV RDV Line Configuration on this machine</h1>\n<p class="
      << (AnyFailed(report) ? "failed" : "passed") << "><b>" << Escaped(Verdict(report))
      << "</b>\n<p>Began " << Escaped(report.began) << ".\n";
  for (const std::string& limit : report.limits)
    out << "<p class=failed><b>Not the whole:</b> " << Escaped(limit) << "\n";
  out << "<h2>The machine</h2><table>\n";
  for (const auto& [name, value] : report.machine)
    out << "<tr><th>" << Escaped(name) << "<td>" << Escaped(value) << '\n';
  out << "</table>\n";
  WriteSteps(report, out);
  WriteFindings(report, Outcome::Failed, out);
  WriteFindings(report, Outcome::Skipped, out);
  WritePictures(report, out);
  WriteNotVerified(report, out);
  out << "</html>\n";
}

}  // namespace rdv::verify
