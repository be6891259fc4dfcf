#include "tools/verify/database_text.h"

#include <algorithm>
#include <vector>

#include "data/needed_tables.h"
#include "runtime/error.h"

namespace rdv::verify {
namespace {

std::string TextOfRow(const std::vector<Value>& row) {
  std::string text;
  for (const Value& value : row) text += IsNull(value) ? "null|" : ToUtf8(ToText(value)) + '|';
  return text;
}

std::string TextOfTable(Connection& connection, TextView table) {
  const auto rows =
      connection.Execute(u"SELECT * FROM " + Text(table), {}).rows.value_or(RowTable{});
  std::string text;
  for (const Text& column : rows.columns) text += ToUtf8(column) + '|';
  text += '\n';
  std::vector<std::string> lines;
  for (const std::vector<Value>& row : rows.rows) lines.push_back(TextOfRow(row));
  std::sort(lines.begin(), lines.end());
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

}  // namespace

std::string TextOfDatabase(Connection& connection) {
  std::string text;
  for (const NeededTable& table : NeededTables()) {
    text += ToUtf8(table.name) + '\n';
    try {
      text += TextOfTable(connection, table.name);
    } catch (const RuntimeError& error) {
      text += "error " + std::to_string(error.Number()) + '\n';
    }
  }
  return text;
}

std::string DifferenceOf(const Reading& engine, const Reading& provider) {
  if (engine.read != provider.read) {
    const Reading& refused = engine.read ? provider : engine;
    return std::string("only the ") + (engine.read ? "engine" : "provider") +
           " reads it; the other says\n" + refused.text;
  }
  if (!engine.read || engine.text == provider.text) return "";
  return "the engine reads\n" + engine.text + "the provider\n" + provider.text;
}

}  // namespace rdv::verify
