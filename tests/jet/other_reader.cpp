#include "tests/jet/other_reader.h"

#ifndef _WIN32

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <vector>

#include "data/jet/dump/json_writer.h"
#include "data/jet/rows/table_scan.h"
#include "tests/jet/dump/json.h"

namespace rdv::jet {
namespace {

// A field in a form that both can be brought into; nothing for Null.
using Field = std::optional<std::string>;
using Fields = std::vector<Field>;

// No text has these in it: those of the real files hold every single character.
constexpr char kFieldEnd[] = "<|field|>";
constexpr char kRowEnd[] = "<|row|>";

// As the options of both tools ask for it.
constexpr char kDates[] = " -D '%Y-%m-%dT%H:%M:%S' -T '%Y-%m-%dT%H:%M:%S'";

bool IsNumber(ColumnType type) {
  switch (type) {
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::Currency:
    case ColumnType::Numeric:
      return true;
    default:
      return false;
  }
}

std::string PlainText(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.17g", number);
  return text;
}

// Single and Double are printed with fewer digits than they have.
std::string NumberText(ColumnType type, double number) {
  char text[64];
  std::snprintf(text, sizeof text, type == ColumnType::Single ? "%.8g" : "%.15g", number);
  return text;
}

std::string Unquoted(std::string text) {
  return text.size() >= 2 && text.front() == '"' ? text.substr(1, text.size() - 2) : text;
}

std::string DumpForm(const Value& value) {
  std::string text;
  const std::function<void(std::string_view)> append = [&text](std::string_view piece) {
    text += piece;
  };
  JsonWriter json(append);
  json.Field(value);
  json.Flush();
  return Unquoted(text);
}

Field FieldOf(const Column& column, const Value& value) {
  if (IsNull(value)) return std::nullopt;
  if (const Text* text = std::get_if<Text>(&value)) return ToUtf8(*text);
  const std::string dumped = DumpForm(value);
  return IsNumber(column.type) ? NumberText(column.type, std::strtod(dumped.c_str(), nullptr))
                               : dumped;
}

Field FieldOf(const Column& column, const std::string& printed) {
  if (IsNumber(column.type)) return NumberText(column.type, std::strtod(printed.c_str(), nullptr));
  if (column.type == ColumnType::Boolean) return printed == "1" ? "true" : "false";
  return printed;
}

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  char buffer[65536];
  while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
  if (pclose(pipe) != 0) return "failed: " + command;
  return output;
}

std::string Shown(const Fields& row, size_t column) {
  constexpr size_t kLongestShown = 200;
  return row.at(column) ? "'" + row[column]->substr(0, kLongestShown) + "'" : "Null";
}

// Rows come in different orders.
std::string FirstDifference(const TableDefinition& table, std::vector<Fields> expected,
                            std::vector<Fields> found) {
  if (expected.size() != found.size())
    return std::to_string(found.size()) + " rows instead of " + std::to_string(expected.size());
  std::sort(expected.begin(), expected.end());
  std::sort(found.begin(), found.end());
  const auto [left, right] = std::mismatch(expected.begin(), expected.end(), found.begin());
  if (left == expected.end()) return {};
  if (left->size() != right->size()) return std::to_string(right->size()) + " fields in a row";
  const auto field = std::mismatch(left->begin(), left->end(), right->begin()).first;
  const auto column = static_cast<size_t>(field - left->begin());
  return ToUtf8(table.columns.at(column).name) + " is " + Shown(*right, column) + " instead of " +
         Shown(*left, column);
}

std::string Base64(const Binary& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

using ExpectedField = Field (*)(const Column& column, const Value& value);

// What the engine reads of a table.
std::vector<Fields> RowsOf(Engine& engine, const TableDefinition& table, ExpectedField field) {
  std::vector<Fields> rows;
  for (TableScan scan(engine.File(), table); scan.Next();) {
    Fields& row = rows.emplace_back();
    for (const Column& column : table.columns) row.push_back(field(column, scan.Row().Get(column)));
  }
  return rows;
}

using RowReader = std::vector<Fields> (*)(const std::filesystem::path& path,
                                          const TableDefinition& table);

std::string Difference(const std::filesystem::path& path, Engine& engine, RowReader read,
                       ExpectedField field) {
  const Engine::ReadScope scope(engine);
  for (const Text& name : engine.UserTableNames()) {
    const TableDefinition& table = engine.Table(name);
    const std::string difference =
        FirstDifference(table, RowsOf(engine, table, field), read(path, table));
    if (!difference.empty()) return "table " + ToUtf8(name) + ": " + difference;
  }
  return {};
}

std::string Arguments(const std::filesystem::path& path, const TableDefinition& table) {
  return " '" + path.string() + "' '" + ToUtf8(table.name) + "'";
}

// What both print as bytes: binary fields, and the text of a GUID, which they write without its
// last hyphen. Of a Binary (not of an OLE) they print nothing from the first zero byte on, as they
// take it for a text that ends there; what follows is not compared.
std::optional<Binary> PrintedBytes(const Column& column, const Value& value) {
  if (const Binary* bytes = std::get_if<Binary>(&value)) {
    const bool ends_at_zero = column.type == ColumnType::Binary;
    return Binary(bytes->begin(), ends_at_zero ? std::ranges::find(*bytes, 0) : bytes->end());
  }
  if (!std::holds_alternative<Guid>(value)) return std::nullopt;
  std::string text = DumpForm(value);
  text.erase(text.rfind('-'), 1);
  return Binary(text.begin(), text.end());
}

// Both leave out empty texts and bytes as they do Nulls, so the two are not told apart here.
Field IfNotEmpty(Field field) {
  return field && field->empty() ? std::nullopt : field;
}

Field JsonField(const Column& column, const Value& value) {
  const std::optional<Binary> bytes = PrintedBytes(column, value);
  return IfNotEmpty(bytes ? Base64(*bytes) : FieldOf(column, value));
}

Field JsonField(const Column& column, const Json& json) {
  if (const double* number = std::get_if<double>(&json.value))
    return FieldOf(column, PlainText(*number));
  if (const Json::Object* bytes = std::get_if<Json::Object>(&json.value))
    return IfNotEmpty(std::get<std::string>(bytes->at(0).second.value));
  return FieldOf(column, std::get<std::string>(json.value));
}

std::vector<Fields> ReadJson(const std::filesystem::path& path, const TableDefinition& table) {
  std::istringstream lines(OutputOf("mdb-json" + std::string(kDates) + Arguments(path, table)));
  std::vector<Fields> rows;
  for (std::string line; std::getline(lines, line);) {
    const Json json = ParseJson(line);
    Fields& row = rows.emplace_back();
    for (const Column& column : table.columns) {
      Field& field = row.emplace_back();
      for (const auto& [name, member] : std::get<Json::Object>(json.value)) {
        if (name == ToUtf8(column.name)) field = JsonField(column, member);
      }
    }
  }
  return rows;
}

Field ExportField(const Column& column, const Value& value) {
  const std::optional<Binary> bytes = PrintedBytes(column, value);
  if (!bytes) return IfNotEmpty(FieldOf(column, value));
  std::string text;
  for (const uint8_t byte : *bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", byte);
    text += digits;
  }
  return IfNotEmpty(text);
}

// The parts that end so.
std::vector<std::string> SplitAt(const std::string& text, const std::string& end) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t at = text.find(end); at != std::string::npos; at = text.find(end, start)) {
    parts.push_back(text.substr(start, at - start));
    start = at + end.size();
  }
  if (start != text.size()) parts.push_back(text.substr(start));
  return parts;
}

std::vector<Fields> ReadExport(const std::filesystem::path& path, const TableDefinition& table) {
  const std::string options =
      std::string(" -H -Q -b hex -d '") + kFieldEnd + "' -R '" + kRowEnd + "'" + kDates;
  const std::string output = OutputOf("mdb-export" + options + Arguments(path, table));
  std::vector<Fields> rows;
  for (const std::string& line : SplitAt(output, kRowEnd)) {
    Fields& row = rows.emplace_back();
    for (const std::string& field : SplitAt(line + kFieldEnd, kFieldEnd)) {
      const Column& column = table.columns.at(row.size());
      row.push_back(field.empty() ? Field() : FieldOf(column, field));
    }
  }
  return rows;
}

}  // namespace

bool HasOtherReader() {
  return std::system("command -v mdb-json > /dev/null && command -v mdb-export > /dev/null") == 0;
}

std::string DifferenceFromMdbJson(const std::filesystem::path& path, Engine& engine) {
  return Difference(path, engine, ReadJson, JsonField);
}

std::string DifferenceFromMdbExport(const std::filesystem::path& path, Engine& engine) {
  return Difference(path, engine, ReadExport, ExportField);
}

}  // namespace rdv::jet

#endif
