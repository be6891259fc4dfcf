#include "tools/lines/html_page.h"

namespace rdv::lines {
namespace {

constexpr const char* kStyle = R"(
:root { --ink: #1b1f24; --soft: #5b6570; --rule: #d5dae0; --head: #eef1f4; --bar: #2f6f9f;
  --warn: #fff1cf; --warn-ink: #8a4b00; }
* { box-sizing: border-box; }
body { margin: 2rem auto; max-width: 84rem; padding: 0 1.5rem; color: var(--ink);
  font: 14px/1.45 "Segoe UI", "Liberation Sans", Arial, sans-serif; }
h1 { font-size: 1.7rem; margin: 0 0 1rem; }
h2 { font-size: 1.2rem; margin: 2rem 0 .6rem; padding-top: .8rem; border-top: 2px solid var(--ink); }
h3 { font-size: 1rem; margin: 0 0 .4rem; }
ul.figures { list-style: none; display: flex; gap: 2.5rem; padding: 0; margin: 0 0 1.2rem; color: var(--soft); }
ul.figures b { font-size: 1.7rem; color: var(--ink); margin-right: .2rem; }
.charts { display: grid; grid-template-columns: repeat(auto-fit, minmax(18rem, 1fr)); gap: 1.2rem 2.5rem;
  align-items: start; }
figure { margin: 0; break-inside: avoid; }
figcaption { font-weight: 600; margin-bottom: .3rem; }
table { border-collapse: collapse; }
.bars { width: 100%; table-layout: fixed; }
.bars th { width: 40%; font-weight: normal; text-align: left; padding: .1rem .6rem .1rem 0;
  overflow-wrap: anywhere; }
.bars td { padding: .1rem 0; }
.bars td:last-child { width: 4.5rem; text-align: right; font-variant-numeric: tabular-nums; }
.bars svg { display: block; width: 100%; height: .75rem; }
.bars rect { fill: var(--bar); }
ul.index { display: grid; grid-template-columns: repeat(auto-fill, minmax(14rem, 1fr)); gap: .1rem 1rem;
  padding: 0; list-style: none; margin: 0; font-variant-numeric: tabular-nums; }
ul.index small { color: var(--soft); }
a { color: #1a5a8a; }
section { margin: 0 0 1.6rem; break-inside: avoid; }
p { margin: 0 0 .5rem; }
.unit { width: 100%; font-size: .86rem; table-layout: fixed; }
.unit th:nth-child(1) { width: 3.8%; }
.unit th:nth-child(2) { width: 9.6%; }
.unit th:nth-child(3) { width: 10%; }
.unit th:nth-child(4) { width: 10.6%; }
.unit th:nth-child(5) { width: 8.6%; }
.unit th:nth-child(6) { width: 10.4%; }
.unit th:nth-child(7) { width: 7.6%; }
.unit th:nth-child(8) { width: 8%; }
.unit th:nth-child(9) { width: 11%; }
.unit th:nth-child(10) { width: 7.4%; }
.unit th { background: var(--head); text-align: left; font-weight: 600; }
.unit th, .unit td { border: 1px solid var(--rule); padding: .18rem .4rem; vertical-align: top; }
.unit td { overflow-wrap: break-word; }
.unit td:first-child { text-align: right; font-variant-numeric: tabular-nums; }
.unit .none td { color: #6b7480; }
.unit .left-out td { background: var(--head); color: var(--soft); text-align: left; }
.unit .moh td:first-child { border-left: 3px solid var(--bar); }
.unit td.found { background: var(--warn); color: var(--ink); outline: 1.5px solid #e0a100;
  outline-offset: -1.5px; }
sup { color: var(--warn-ink); font-weight: 700; margin-left: .2rem; line-height: 0; }
.notes { margin: .4rem 0 0; padding-left: 1.8rem; font-size: .86rem; }
.notes li::marker { color: var(--warn-ink); font-weight: 700; }
.notes q { color: var(--warn-ink); overflow-wrap: anywhere; }
.empty { color: var(--soft); margin: 0; }
@media screen {
  section { overflow-x: auto; }
  .unit { min-width: 60rem; }
}
@page { size: A4 landscape; margin: 12mm; }
@media print {
  body { margin: 0; padding: 0; max-width: none; font-size: 9pt; }
  a { color: inherit; text-decoration: none; }
  thead { display: table-header-group; }
  h2, h3 { break-after: avoid; }
  h2 { margin-top: 1rem; }
  section { margin-bottom: 1rem; }
  .unit { font-size: 7.5pt; line-height: 1.25; }
  .unit th, .unit td { padding: .1rem .3rem; }
  .notes { font-size: 7.5pt; line-height: 1.25; }
  .unit th, .unit td.found { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)";

void AppendUnit(char32_t character, std::string& to) {
  switch (character) {
    case U'&':
      to += "&amp;";
      return;
    case U'<':
      to += "&lt;";
      return;
    case U'>':
      to += "&gt;";
      return;
    case U'"':
      to += "&quot;";
      return;
    default:
      to += static_cast<char>(character);
  }
}

}  // namespace

void AppendHtml(TextView text, std::string& to) {
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (unit >= 0x20 && unit < 0x7F) {
      AppendUnit(unit, to);
      continue;
    }
    const bool paired = unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size() &&
                        text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    const bool control = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    const bool alone = unit >= 0xD800 && unit < 0xE000 && !paired;
    if (control) {
      to += ' ';
    } else {
      to += alone ? "\xEF\xBF\xBD" : ToUtf8(text.substr(i, paired ? 2 : 1));
    }
    if (paired) ++i;
  }
}

std::string HtmlPage(const std::string& title, const std::string& body) {
  return "<!DOCTYPE html>\n<html lang=en>\n<head>\n<meta charset=utf-8>\n"
         "<meta name=viewport content=\"width=device-width\">\n<title>" +
         title + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n<h1>" + title +
         "</h1>\n" + body + "</body>\n</html>\n";
}

}  // namespace rdv::lines
