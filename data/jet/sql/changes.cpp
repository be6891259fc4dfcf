#include <algorithm>
#include <cassert>
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

CommandResult Written(size_t rows) {
  return {.rows = std::nullopt, .rows_written = static_cast<int>(rows)};
}

size_t PositionOf(const TableDefinition& table, const Column& column) {
  return static_cast<size_t>(&column - table.columns.data());
}

// `constant` is a parameter or a literal.
Value AssignedConstant(const Column& column, const BoundOperand& constant,
                       std::span<const Argument> arguments) {
  const auto* parameter = std::get_if<ParameterOperand>(&constant);
  assert(parameter == nullptr || parameter->number < arguments.size());
  if (parameter != nullptr) return ToColumn(column, arguments[parameter->number]);
  return ToColumn(column, std::get<Literal>(constant));
}

[[noreturn]] void RaiseSetTwice(const Column& column) {
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
    for (auto target = targets_.begin(); target != targets_.end() && !set_twice_; ++target) {
      if (std::find(targets_.begin(), target, *target) != target) set_twice_ = *target;
    }
  }

  // To be called when the arguments are known to suffice for all names.
  void RequireColumns() const {
    if (no_column_)
      RaiseSyntaxError(u"Cannot update '" + *no_column_ + u"'; field not updateable.");
    if (set_twice_) RaiseSetTwice(*set_twice_);
  }

  // Before the first row of a run, which has arguments of its own.
  void Begin() { assignments_.clear(); }

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
        assignments_[i].value = AssignedConstant(target, values_[i], arguments);
      }
    }
    return assignments_;
  }

 private:
  const TableDefinition& table_;
  std::vector<const Column*> targets_;  // null for a name that is no column
  std::vector<BoundOperand> values_;
  std::optional<Text> no_column_;
  const Column* set_twice_ = nullptr;
  std::vector<Assignment> assignments_;
};

std::vector<const Column*> TargetsOf(const Insert& insert, const TableDefinition& table) {
  std::vector<const Column*> targets;
  for (const Text& name : insert.columns) {
    const Column* column = table.FindColumn(name);
    if (column == nullptr) RaiseUnknownInsertField(name);
    if (std::ranges::find(targets, column) != targets.end()) RaiseSetTwice(*column);
    targets.push_back(column);
  }
  if (insert.columns.empty()) {
    for (const Column& column : table.columns) targets.push_back(&column);
  }
  return targets;
}

class UpdatePlan : public Plan {
 public:
  UpdatePlan(const Update& update, const TableDefinition& table)
      : table_(table),
        names_(&table, update.table),
        values_(update, table, names_),
        predicate_(update.where, names_) {}

  CommandResult Run(Engine& engine, std::span<const Argument> arguments) override {
    names_.RequireArguments(arguments);
    values_.RequireColumns();
    predicate_.Bind(arguments);
    values_.Begin();
    // All rows are known before the first one changes, so that none is met again.
    const std::vector<RowId> rows = FindMatches(engine.File(), table_, predicate_);
    for (const RowId row : rows)
      engine.Update(table_, row, values_.For(engine.File(), row, arguments));
    if (rows.size() == 1 && engine.ChangesForTheFirstTime(rows.front()))
      engine.Expect(Siblings(engine.File(), table_, predicate_));
    return Written(rows.size());
  }

 private:
  const TableDefinition& table_;
  Names names_;
  NewValues values_;
  Predicate predicate_;
};

class InsertPlan : public Plan {
 public:
  InsertPlan(const Insert& insert, const TableDefinition& table)
      : table_(table), targets_(TargetsOf(insert, table)), names_(nullptr, insert.table) {
    if (targets_.size() != insert.values.size())
      RaiseSyntaxError(u"Number of query values and destination fields are not the same.");
    for (const Operand& value : insert.values) values_.push_back(names_.Resolve(value));
  }

  CommandResult Run(Engine& engine, std::span<const Argument> arguments) override {
    names_.RequireArguments(arguments);
    std::vector<Assignment> assignments;
    assignments.reserve(targets_.size());
    for (size_t i = 0; i < targets_.size(); ++i) {
      assignments.push_back({PositionOf(table_, *targets_[i]),
                             AssignedConstant(*targets_[i], values_[i], arguments)});
    }
    engine.Insert(table_, assignments);
    return Written(1);
  }

 private:
  const TableDefinition& table_;
  std::vector<const Column*> targets_;
  Names names_;
  std::vector<BoundOperand> values_;
};

class DeletePlan : public Plan {
 public:
  DeletePlan(const Delete& statement, const TableDefinition& table)
      : table_(table), names_(&table, statement.table), predicate_(statement.where, names_) {}

  CommandResult Run(Engine& engine, std::span<const Argument> arguments) override {
    names_.RequireArguments(arguments);
    predicate_.Bind(arguments);
    const std::vector<RowId> rows = FindMatches(engine.File(), table_, predicate_);
    for (const RowId row : rows) {
      // A relationship may have taken it along with a row before it.
      if (FindRow(engine.File(), table_.Page(), row)) engine.Delete(table_, row);
    }
    return Written(rows.size());
  }

 private:
  const TableDefinition& table_;
  Names names_;
  Predicate predicate_;
};

}  // namespace

std::unique_ptr<Plan> MakePlan(const Update& update, const TableDefinition& table) {
  return std::make_unique<UpdatePlan>(update, table);
}

std::unique_ptr<Plan> MakePlan(const Insert& insert, const TableDefinition& table) {
  return std::make_unique<InsertPlan>(insert, table);
}

std::unique_ptr<Plan> MakePlan(const Delete& statement, const TableDefinition& table) {
  return std::make_unique<DeletePlan>(statement, table);
}

}  // namespace rdv::jet::sql
