#include "tests/jet_sql/sample_dump.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "data/jet/sql/date_text.h"
#include "runtime/conversion.h"

namespace rdv::jet::sql {
namespace {

const Json& Member(const Json& object, const std::string& name) {
  for (const auto& [key, value] : std::get<Json::Object>(object.value)) {
    if (key == name) return value;
  }
  throw std::runtime_error("no member " + name);
}

const std::string& String(const Json& json) {
  return std::get<std::string>(json.value);
}

bool Says(const Json& expected, const Value& actual) {
  if (std::holds_alternative<std::nullptr_t>(expected.value)) return IsNull(actual);
  if (IsNull(actual)) return false;
  if (const bool* flag = std::get_if<bool>(&expected.value))
    return std::holds_alternative<bool>(actual) && std::get<bool>(actual) == *flag;
  if (const double* number = std::get_if<double>(&expected.value)) {
    if (std::holds_alternative<Text>(actual) || std::holds_alternative<bool>(actual)) return false;
    return CDbl(ToText(actual)) == *number;
  }
  const std::string& text = String(expected);
  if (const auto* date = std::get_if<DateTime>(&actual))
    return ParseDateText(FromUtf8(text)) == date->days;
  if (const auto* amount = std::get_if<Currency>(&actual))
    return ToDigits(*amount) == FromUtf8(text);
  return std::holds_alternative<Text>(actual) && std::get<Text>(actual) == FromUtf8(text);
}

}  // namespace

SampleTable::SampleTable(const Json& tables, const std::string& name) {
  for (const Json& table : std::get<Json::Array>(tables.value)) {
    if (String(Member(table, "name")) != name) continue;
    for (const Json& column : std::get<Json::Array>(Member(table, "columns").value))
      columns_.push_back(String(Member(column, "name")));
    for (const Json& row : std::get<Json::Array>(Member(table, "rows").value))
      rows_.push_back(std::get<Json::Array>(row.value));
    return;
  }
  throw std::runtime_error("no table " + name);
}

const Json& SampleTable::Cell(const Row& row, const std::string& column) const {
  const auto place = std::find(columns_.begin(), columns_.end(), column);
  if (place == columns_.end()) throw std::runtime_error("no column " + column);
  return row.at(static_cast<size_t>(place - columns_.begin()));
}

double SampleTable::Number(const Row& row, const std::string& column) const {
  const double* number = std::get_if<double>(&Cell(row, column).value);
  return number == nullptr ? -999 : *number;
}

SampleDump::SampleDump(const std::string& site) {
  const auto path = std::filesystem::path(RDV_SHARED_DIR) / "sites" / site / "NewDB.json";
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  tables_ = Member(ParseJson(text), "tables");
}

std::string Difference(const Json& expected, const Value& actual) {
  if (Says(expected, actual)) return "";
  const std::string shown =
      IsNull(actual) || std::holds_alternative<Binary>(actual) ? "-" : ToUtf8(ToText(actual));
  const std::string* text = std::get_if<std::string>(&expected.value);
  const double* number = std::get_if<double>(&expected.value);
  return "expected " +
         (text != nullptr     ? *text
          : number != nullptr ? std::to_string(*number)
                              : std::string("null or a Boolean")) +
         ", found " + shown;
}

}  // namespace rdv::jet::sql
