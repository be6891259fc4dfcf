#include "tools/play/stored_rows.h"

#include <algorithm>
#include <span>

#include "data/connection_route.h"
#include "data/database.h"
#include "data/needed_tables.h"
#include "runtime/error.h"

namespace rdv::play {
namespace {

// The first columns of each table, by which rows are told apart: the configuration, then the order.
constexpr size_t kConfigColumn = 0;
constexpr size_t kLineKeys = 4;
constexpr size_t kCardKeys = 3;

// Everything in the table, whatever columns it has.
RowTable WholeTable(TextView table) {
  const auto connection = OpenConnection(DatabaseConnectionString());
  return connection->Execute(u"SELECT * FROM " + Text(table), {}).rows.value_or(RowTable{});
}

// The named columns in that order. One that the table lacks is Null in every row.
RowTable Columns(const RowTable& table, std::span<const TextView> names) {
  RowTable chosen;
  chosen.rows.resize(table.rows.size());
  for (const TextView name : names) {
    const auto found =
        std::find_if(table.columns.begin(), table.columns.end(),
                     [&](const Text& column) { return EqualsIgnoringCase(column, name); });
    const auto index = static_cast<size_t>(found - table.columns.begin());
    chosen.columns.emplace_back(name);
    for (size_t row = 0; row < table.rows.size(); ++row) {
      chosen.rows[row].push_back(found == table.columns.end() ? Value(Null())
                                                              : table.rows[row][index]);
    }
  }
  return chosen;
}

// Nothing for a field that holds no whole number.
std::optional<int32_t> NumberIn(const Value& field) {
  if (IsNull(field)) return std::nullopt;
  try {
    return ToLong(field);
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

RowTable RowsOf(int16_t config, TextView table, size_t keys) {
  try {
    RowTable chosen = Columns(WholeTable(table), ColumnsOf(table));
    std::erase_if(chosen.rows, [&](const std::vector<Value>& row) {
      return NumberIn(row[kConfigColumn]) != config;
    });
    std::stable_sort(
        chosen.rows.begin(), chosen.rows.end(),
        [&](const std::vector<Value>& left, const std::vector<Value>& right) {
          return std::lexicographical_compare(
              left.begin(), left.begin() + static_cast<ptrdiff_t>(keys), right.begin(),
              right.begin() + static_cast<ptrdiff_t>(keys),
              [](const Value& one, const Value& other) { return NumberIn(one) < NumberIn(other); });
        });
    return chosen;
  } catch (const RuntimeError&) {
    return {};
  }
}

}  // namespace

RowTable StoredLines(int16_t config) {
  return RowsOf(config, u"Used_Lines", kLineKeys);
}

RowTable StoredCards(int16_t config) {
  return RowsOf(config, u"Used_Cards", kCardKeys);
}

}  // namespace rdv::play
