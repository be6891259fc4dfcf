#include "tests/jet_sql/sample_dump.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "data/jet/sql/date_text.h"
#include "runtime/conversion.h"
#include "tests/support/sites/sample_sites.h"
#include "tests/support/sites/site_builder.h"

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

std::map<std::string, SampleTable> TablesOfText(const std::string& name) {
  const sites::Site site = sites::ReadSite(name);
  std::map<std::string, SampleTable> tables;
  for (const sites::TableContent& table : sites::ContentOf(site)) {
    std::vector<std::string> columns;
    for (const ColumnSpec& column : table.spec->columns) columns.push_back(ToUtf8(column.name));
    std::vector<SampleTable::Row> rows;
    for (const auto& row : table.rows) {
      if (row) rows.emplace_back(row->begin(), row->end());
    }
    tables.emplace(ToUtf8(table.spec->name), SampleTable(std::move(columns), std::move(rows)));
  }
  return tables;
}

std::map<std::string, SampleTable> TablesOfDump(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const Json dump = ParseJson(text);
  std::map<std::string, SampleTable> tables;
  for (const Json& table : std::get<Json::Array>(Member(dump, "tables").value)) {
    std::vector<std::string> columns;
    for (const Json& column : std::get<Json::Array>(Member(table, "columns").value))
      columns.push_back(String(Member(column, "name")));
    std::vector<SampleTable::Row> rows;
    for (const Json& row : std::get<Json::Array>(Member(table, "rows").value)) {
      const auto& cells = std::get<Json::Array>(row.value);
      rows.emplace_back(cells.begin(), cells.end());
    }
    tables.emplace(String(Member(table, "name")), SampleTable(std::move(columns), std::move(rows)));
  }
  return tables;
}

}  // namespace

const SampleTable::Cell& SampleTable::At(const Row& row, const std::string& column) const {
  const auto place = std::find(columns_.begin(), columns_.end(), column);
  if (place == columns_.end()) throw std::runtime_error("no column " + column);
  return row.at(static_cast<size_t>(place - columns_.begin()));
}

double SampleTable::Number(const Row& row, const std::string& column) const {
  constexpr double kNull = -999;
  const Cell& cell = At(row, column);
  if (const Value* value = std::get_if<Value>(&cell))
    return IsNull(*value) ? kNull : CDbl(ToText(*value));
  const double* number = std::get_if<double>(&std::get<Json>(cell).value);
  return number == nullptr ? kNull : *number;
}

SampleDump::SampleDump(const std::string& site)
    : tables_(site.starts_with("sites/") ? TablesOfText(site.substr(site.find('/') + 1))
                                         : TablesOfDump(sites::SamplePath(site + "/NewDB.json"))) {}

SampleTable SampleDump::Table(const std::string& name) const {
  return tables_.at(name);
}

std::string Difference(const SampleTable::Cell& cell, const Value& actual) {
  if (const Value* value = std::get_if<Value>(&cell)) {
    const auto shown = [](const Value& each) {
      return IsNull(each) || std::holds_alternative<Binary>(each) ? "-" : ToUtf8(ToText(each));
    };
    return *value == actual ? "" : "expected " + shown(*value) + ", found " + shown(actual);
  }
  const Json& expected = std::get<Json>(cell);
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
