#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "data/jet/format/errors.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/sql/conversions.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/names.h"
#include "data/jet/sql/predicate.h"
#include "data/jet/sql/row_search.h"

namespace rdv::jet::sql {
namespace {

size_t PositionOf(const TableDefinition& table, const Column& column) {
  return static_cast<size_t>(&column - table.columns.data());
}

// `constant` is a parameter or a literal.
Value ConstantFor(const Column& column, const BoundOperand& constant,
                  std::span<const Argument> arguments) {
  if (const auto* parameter = std::get_if<ParameterOperand>(&constant))
    return ToColumn(column, arguments[parameter->number]);
  return ToColumn(column, std::get<Literal>(constant));
}

void RequireNewTarget(const std::vector<const Column*>& targets, const Column& column) {
  if (std::find(targets.begin(), targets.end(), &column) != targets.end())
    RaiseSyntaxError(u"Duplicate output destination '" + column.name + u"'.");
}

// The SET list of an update.
class NewValues {
 public:
  NewValues(const Update& update, const TableDefinition& table, Names& names) : table_(table) {
    for (const SetItem& item : update.items) {
      const BoundOperand target = names.Resolve(item.target);
      const auto* column = std::get_if<ColumnOperand>(&target);
      targets_.push_back(column == nullptr ? nullptr : column->column);
      if (column == nullptr && !no_column_) no_column_ = item.target.column;
      values_.push_back(names.Resolve(item.value));
    }
  }

  // To be called when the arguments are known to suffice for all names.
  void RequireColumns() const {
    if (no_column_)
      RaiseSyntaxError(u"Cannot update '" + *no_column_ + u"'; field not updateable.");
    for (size_t i = 0; i < targets_.size(); ++i)
      RequireNewTarget({targets_.begin(), targets_.begin() + static_cast<ptrdiff_t>(i)},
                       *targets_[i]);
  }

  // For the row as it is; constants are converted once.
  const std::vector<Assignment>& For(const FileReader& file, RowId id,
                                     std::span<const Argument> arguments) {
    const bool first = assignments_.empty();
    std::optional<RowView> row;
    for (size_t i = 0; i < targets_.size(); ++i) {
      const Column& target = *targets_[i];
      const auto* source = std::get_if<ColumnOperand>(&values_[i]);
      if (first) assignments_.push_back({PositionOf(table_, target), Null{}});
      if (source != nullptr) {
        if (!row) FetchRow(file, table_, id, row.emplace(file, table_));
        assignments_[i].value = ToColumn(target, row->Get(*source->column));
      } else if (first) {
        assignments_[i].value = ConstantFor(target, values_[i], arguments);
      }
    }
    return assignments_;
  }

 private:
  const TableDefinition& table_;
  std::vector<const Column*> targets_;  // null for a name that is no column
  std::vector<BoundOperand> values_;
  std::optional<Text> no_column_;
  std::vector<Assignment> assignments_;
};

std::vector<const Column*> TargetsOf(const Insert& insert, const TableDefinition& table) {
  std::vector<const Column*> targets;
  for (const Text& name : insert.columns) {
    const Column* column = table.FindColumn(name);
    if (column == nullptr) RaiseUnknownInsertField(name);
    RequireNewTarget(targets, *column);
    targets.push_back(column);
  }
  if (insert.columns.empty()) {
    for (const Column& column : table.columns) targets.push_back(&column);
  }
  return targets;
}

}  // namespace

int RunUpdate(Engine& engine, const Update& update, std::span<const Argument> arguments) {
  const TableDefinition& table = engine.Table(update.table);
  Names names(&table);
  NewValues values(update, table, names);
  Predicate predicate(update.where, names);
  names.RequireArguments(arguments);
  values.RequireColumns();
  predicate.Bind(arguments);
  // All rows are known before the first one changes, so that none is met again.
  const std::vector<RowId> rows = FindMatches(engine.File(), table, predicate);
  for (const RowId row : rows) engine.Update(table, row, values.For(engine.File(), row, arguments));
  return static_cast<int>(rows.size());
}

int RunInsert(Engine& engine, const Insert& insert, std::span<const Argument> arguments) {
  const TableDefinition& table = engine.Table(insert.table);
  const std::vector<const Column*> targets = TargetsOf(insert, table);
  if (targets.size() != insert.values.size())
    RaiseSyntaxError(u"Number of query values and destination fields are not the same.");
  Names names(nullptr);
  std::vector<BoundOperand> values;
  for (const Operand& value : insert.values) values.push_back(names.Resolve(value));
  names.RequireArguments(arguments);
  std::vector<Assignment> assignments;
  for (size_t i = 0; i < targets.size(); ++i) {
    assignments.push_back(
        {PositionOf(table, *targets[i]), ConstantFor(*targets[i], values[i], arguments)});
  }
  engine.Insert(table, assignments);
  return 1;
}

int RunDelete(Engine& engine, const Delete& statement, std::span<const Argument> arguments) {
  const TableDefinition& table = engine.Table(statement.table);
  Names names(&table);
  Predicate predicate(statement.where, names);
  names.RequireArguments(arguments);
  predicate.Bind(arguments);
  const std::vector<RowId> rows = FindMatches(engine.File(), table, predicate);
  for (const RowId row : rows) {
    // A relationship may have taken it along with a row before it.
    if (FindRow(engine.File(), table.Page(), row)) engine.Delete(table, row);
  }
  return static_cast<int>(rows.size());
}

}  // namespace rdv::jet::sql
