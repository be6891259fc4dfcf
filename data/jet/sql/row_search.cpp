#include "data/jet/sql/row_search.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/memory_budget.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"

namespace rdv::jet::sql {
namespace {

// More than a unit has lines.
constexpr size_t kMostSiblings = 32;

// How much of a key that is known is used.
enum class OfKey { All, AllButTheLast };

struct AccessPath {
  const RealIndex* index = nullptr;
  size_t bound_columns = 0;
  Key key_prefix;
};

const Value* GivenValue(const Predicate& predicate, const Column& column) {
  for (const Equality& equality : predicate.Equalities()) {
    if (equality.column == &column) return equality.value;
  }
  return nullptr;
}

// Whether a text may be equal to this one that has another key: keys are made of the beginnings of
// texts, and of two that are equal one may be twice as long as the other (a sharp s is as good as
// "ss"), so that they end at different places.
bool KeyMayBeCut(const Column& column, const Value& value) {
  const Text* const text = std::get_if<Text>(&value);
  const size_t whole = column.IsLongValue() ? kMaxTextUnits / 2 : kMaxTextUnits;
  return text != nullptr && text->size() > whole;
}

// The longest beginning of the index's columns that the condition gives values for and whose key is
// known.
AccessPath PathThrough(const FileReader& file, const TableDefinition& table, const RealIndex& index,
                       const Predicate& predicate, OfKey of_key) {
  std::vector<Value> values;
  for (const IndexColumn& part : index.columns) {
    const Value* value = GivenValue(predicate, table.columns[part.column]);
    if (value == nullptr || KeyMayBeCut(table.columns[part.column], *value)) break;
    values.push_back(*value);
  }
  if (of_key == OfKey::AllButTheLast && values.size() == index.columns.size()) values.pop_back();
  for (; !values.empty(); values.pop_back()) {
    if (auto key = TryBuildKey(file, table, index, values))
      return {&index, values.size(), std::move(*key)};
  }
  return {};
}

AccessPath ChoosePath(const FileReader& file, const TableDefinition& table,
                      const Predicate& predicate, OfKey of_key = OfKey::All) {
  AccessPath best;
  if (predicate.Equalities().empty()) return best;
  for (const RealIndex& index : table.indexes) {
    AccessPath path = PathThrough(file, table, index, predicate, of_key);
    const bool better = path.bound_columns > best.bound_columns;
    const bool as_good = path.index != nullptr && path.bound_columns == best.bound_columns;
    if (better || (as_good && index.unique && !best.index->unique)) best = std::move(path);
  }
  return best;
}

void VisitThroughIndex(const FileReader& file, const TableDefinition& table, const AccessPath& path,
                       const std::function<void(const RowView&)>& visit) {
  IndexCursor cursor(file, table, *path.index);
  std::vector<std::pair<RowId, uint32_t>> entries;  // with the page of the entry
  for (cursor.Seek(path.key_prefix); cursor.Valid() && cursor.KeyStartsWith(path.key_prefix);
       cursor.Next()) {
    entries.emplace_back(cursor.Row(), cursor.PageNumber());
  }
  std::sort(entries.begin(), entries.end());
  RowView row(file, table);
  for (const auto& [id, index_page] : entries) {
    if (!FetchRow(file, table, id, row))
      file.DamagedPage(index_page, u"holds an index entry of a row that is not there");
    visit(row);
  }
}

}  // namespace

void ForEachMatch(const FileReader& file, const TableDefinition& table, const Predicate& predicate,
                  const std::function<void(const RowView&)>& visit) {
  if (!predicate.CanMatch()) return;
  const auto filter = [&](const RowView& row) {
    if (predicate.Matches(row)) visit(row);
  };
  const AccessPath path = ChoosePath(file, table, predicate);
  if (path.index != nullptr) {
    VisitThroughIndex(file, table, path, filter);
    return;
  }
  TableScan scan(file, table);
  for (const Equality& equality : predicate.Equalities())
    scan.SkipOtherThan(*equality.column, *equality.value);
  while (scan.Next()) filter(scan.Row());
}

std::vector<RowId> FindMatches(const FileReader& file, const TableDefinition& table,
                               const Predicate& predicate) {
  std::vector<RowId> rows;
  MemoryBudget budget(file);
  ForEachMatch(file, table, predicate, [&](const RowView& row) {
    budget.Take(sizeof(RowId));
    rows.push_back(row.Id());
  });
  return rows;
}

std::vector<RowId> Siblings(const FileReader& file, const TableDefinition& table,
                            const Predicate& predicate) {
  std::vector<RowId> rows;
  const AccessPath path = ChoosePath(file, table, predicate, OfKey::AllButTheLast);
  if (path.index == nullptr) return rows;
  try {
    IndexCursor cursor(file, table, *path.index);
    for (cursor.Seek(path.key_prefix);
         cursor.Valid() && rows.size() < kMostSiblings && cursor.KeyStartsWith(path.key_prefix);
         cursor.Next()) {
      rows.push_back(cursor.Row());
    }
  } catch (const RuntimeError&) {
    // What is damaged there concerns whoever looks for it.
  }
  return rows;
}

}  // namespace rdv::jet::sql
