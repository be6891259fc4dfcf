#include "tools/lines/json_output.h"

#include "runtime/conversion.h"
#include "runtime/error.h"
#include "tools/lines/columns.h"

namespace rdv::lines {
namespace {

Json NullForNone(int number) {
  return number == 0 ? Json(nullptr) : Json(number);
}

}  // namespace

Json NumberOrText(const Text& text) {
  try {
    const int32_t number = CLng(text);
    if (Decimal(number) == text) return number;
  } catch (const RuntimeError&) {
    // A text then.
  }
  return ToUtf8(text);
}

Json JsonOf(const Unit& unit) {
  Json json;
  json["configuration"] = unit.config;
  json["failure"] = unit.failure.empty() ? Json(nullptr) : Json(ToUtf8(unit.failure));
  json["lines"] = Json::array();
  for (const RowCells& row : unit.rows) {
    Json line;
    for (const ShownColumn& shown : kShownColumns) {
      const Text& cell = row[shown.column];
      line[shown.name] = shown.column == column::kLine ? NumberOrText(cell) : Json(ToUtf8(cell));
      for (const CodeColumn& code : shown.codes) {
        if (code.column != 0) line[code.name] = NumberOrText(row[code.column]);
      }
    }
    json["lines"].push_back(std::move(line));
  }
  return json;
}

Json JsonOf(const Finding& finding) {
  Json json;
  json["configuration"] = finding.config;
  json["line"] = NullForNone(finding.line);
  json["column"] = finding.column == 0 ? Json(nullptr) : Json(ToUtf8(CaptionOf(finding.column)));
  json["kind"] = finding.kind;
  json["value"] = ToUtf8(finding.value);
  json["why"] = ToUtf8(finding.why);
  return json;
}

Json JsonOfSettings(const Text& failure) {
  Json json;
  for (const char* place : {"configuration", "line", "column"}) json[place] = nullptr;
  json["kind"] = "settings";
  json["value"] = "";
  json["why"] = ToUtf8(failure);
  return json;
}

std::string Printed(const Json& document) {
  return document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace rdv::lines
