#include "tools/lines/stored_lines.h"

#include <algorithm>

#include "data/commands.h"
#include "runtime/error.h"

namespace rdv::lines {
namespace {

constexpr TextView kUnitLines =
    u"SELECT Config_ID FROM Used_Lines WHERE Base_Slot_No = 1 AND Slot_Offset = 1";

void AddConfigurations(SiteSession& session, TextView statement, std::vector<int16_t>& to) {
  for (const std::vector<Value>& row : session.Rows(statement).rows) {
    if (!IsNull(row[0])) to.push_back(ToInteger(row[0]));
  }
}

std::vector<int16_t> SortedOnce(std::vector<int16_t> numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

}  // namespace

RowTable ReadStoredLines(SiteSession& session, int16_t config) {
  const Argument arguments[] = {Decimal(config)};
  return session.Rows(DefinitionOf(Command::Get_Used_Lines).statement, arguments);
}

RowTable ReadStoredCard(SiteSession& session, int16_t config) {
  const Argument arguments[] = {Decimal(config)};
  return session.Rows(
      u"SELECT * FROM Used_Cards WHERE Config_ID = `Given_ConfigID` AND Base_Slot_No = 1 AND "
      u"Slot_Offset = 1",
      arguments);
}

std::vector<int16_t> ConfigurationsWithLines(SiteSession& session) {
  std::vector<int16_t> numbers;
  AddConfigurations(session, kUnitLines, numbers);
  return SortedOnce(std::move(numbers));
}

std::vector<int16_t> KnownConfigurations(SiteSession& session) {
  std::vector<int16_t> numbers;
  AddConfigurations(session, kUnitLines, numbers);
  AddConfigurations(session, u"SELECT ConfigID FROM orvsettings", numbers);
  AddConfigurations(session, u"SELECT Config_ID FROM Partition_Settings", numbers);
  return SortedOnce(std::move(numbers));
}

size_t MostLines(SiteSession& session) {
  constexpr size_t kLinesOfAUnit = kLastLine - kFirstLine + 1;
  return session.Rows(kUnitLines).rows.size() + KnownConfigurations(session).size() * kLinesOfAUnit;
}

size_t ColumnAt(const RowTable& table, TextView name) {
  for (size_t column = 0; column < table.columns.size(); ++column) {
    if (EqualsIgnoringCase(table.columns[column], name)) return column;
  }
  throw RuntimeError(
      3265,
      u"Item cannot be found in the collection corresponding to the requested name or ordinal.",
      u"ADODB.Recordset");
}

Text Shown(const Value& value) {
  if (IsNull(value)) return {};
  try {
    return ToText(value);
  } catch (const RuntimeError&) {
    return u"(binary)";
  }
}

}  // namespace rdv::lines
