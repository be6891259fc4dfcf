#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

#include "data/jet/format/errors.h"
#include "data/jet/rows/memory_budget.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/names.h"
#include "data/jet/sql/predicate.h"
#include "data/jet/sql/row_search.h"
#include "data/jet/sql/value_order.h"

namespace rdv::jet::sql {
namespace {

// Names of columns that have none of their own.
constexpr int64_t kFirstExpressionNumber = 1000;

struct OrderKey {
  const Column* column = nullptr;
  bool descending = false;
};

struct RowLess {
  bool operator()(const std::vector<Value>& left, const std::vector<Value>& right) const {
    for (size_t i = 0; i < left.size(); ++i) {
      const int order = CompareForOrder(left[i], right[i]);
      if (order != 0) return order < 0;
    }
    return false;
  }
};

class Query : public Plan {
 public:
  Query(const TableDefinition& table, const Select& select)
      : names_(&table, select.table),
        table_(table),
        select_(select),
        outputs_(ResolveItems(select)),
        predicate_(select.where, names_) {
    for (const OrderItem& item : select.order) {
      const BoundOperand operand = names_.Resolve(item.name);
      // A parameter is the same for all rows and orders nothing.
      const auto* column = std::get_if<ColumnOperand>(&operand);
      if (column == nullptr || counts_) continue;
      if (select.distinct) RequireShown(item, *column->column);
      order_.push_back({column->column, item.descending});
    }
  }

  CommandResult Run(Engine& engine, std::span<const Argument> arguments) override {
    names_.RequireArguments(arguments);
    predicate_.Bind(arguments);
    RowTable result;
    result.columns = OutputNames();
    if (counts_) {
      result.rows.emplace_back(outputs_.size(), CountMatches(engine.File()));
    } else {
      result.rows = Fetch(engine.File(), arguments);
    }
    return {.rows = std::move(result)};
  }

 private:
  std::vector<BoundOperand> ResolveItems(const Select& select) {
    std::vector<BoundOperand> outputs;
    for (const SelectItem& item : select.items) {
      if (std::holds_alternative<CountAll>(item)) {
        counts_ = true;
        outputs.emplace_back(Literal{});
        continue;
      }
      if (const auto* operand = std::get_if<Operand>(&item)) {
        outputs.push_back(names_.Resolve(*operand));
        continue;
      }
      const Text& qualifier = std::get<AllColumns>(item).table;
      if (!qualifier.empty() && !EqualsIgnoringCase(qualifier, select.table)) {
        RaiseSyntaxError(u"The Microsoft Jet database engine does not recognize '" + qualifier +
                         u".*' as a valid field name or expression.");
      }
      for (const Column& column : table_.columns) outputs.emplace_back(ColumnOperand{&column});
    }
    if (counts_) RequireCountsOnly(select);
    return outputs;
  }

  // Beside a count there is no row that anything else could be shown of.
  static void RequireCountsOnly(const Select& select) {
    for (const SelectItem& item : select.items) {
      if (std::holds_alternative<CountAll>(item)) continue;
      const auto* operand = std::get_if<Operand>(&item);
      const auto* name = operand == nullptr ? nullptr : std::get_if<Name>(operand);
      RaiseSyntaxError(
          u"You tried to execute a query that does not include the specified expression '" +
          (name == nullptr ? Text(u"*") : name->column) + u"' as part of an aggregate function.");
    }
  }

  std::vector<std::vector<Value>> Fetch(const FileReader& file,
                                        std::span<const Argument> arguments) const {
    std::vector<std::vector<Value>> rows;
    std::vector<std::vector<Value>> keys;
    std::set<std::vector<Value>, RowLess> met;
    MemoryBudget budget(file);
    ForEachMatch(file, table_, predicate_, [&](const RowView& row) {
      if (order_.empty() && select_.top && rows.size() >= *select_.top) return;
      std::vector<Value> output = Output(row, arguments);
      if (select_.distinct && !met.insert(output).second) return;
      budget.Take((select_.distinct ? 2 : 1) * HeldBytes(output));
      rows.push_back(std::move(output));
      if (order_.empty()) return;
      keys.push_back(Key(row));
      budget.Take(HeldBytes(keys.back()));
    });
    if (!order_.empty()) Sort(rows, keys);
    return rows;
  }

  Value CountMatches(const FileReader& file) const {
    int32_t count = 0;
    ForEachMatch(file, table_, predicate_, [&](const RowView&) { ++count; });
    return count;
  }

  // DISTINCT gives rows that may come from several of the table, whose order only what is shown of
  // them can tell.
  void RequireShown(const OrderItem& item, const Column& column) const {
    const bool shown = std::ranges::any_of(outputs_, [&](const BoundOperand& output) {
      const auto* operand = std::get_if<ColumnOperand>(&output);
      return operand != nullptr && operand->column == &column;
    });
    if (!shown)
      RaiseSyntaxError(u"ORDER BY clause (" + item.name.column + u") conflicts with DISTINCT.");
  }

  std::vector<Text> OutputNames() const {
    std::vector<Text> names;
    int64_t expression = kFirstExpressionNumber;
    for (const BoundOperand& output : outputs_) {
      const auto* column = std::get_if<ColumnOperand>(&output);
      names.push_back(column != nullptr ? column->column->name : u"Expr" + Decimal(expression++));
    }
    return names;
  }

  std::vector<Value> Output(const RowView& row, std::span<const Argument> arguments) const {
    std::vector<Value> values(outputs_.size());
    for (size_t i = 0; i < values.size(); ++i) {
      const BoundOperand& output = outputs_[i];
      if (const auto* column = std::get_if<ColumnOperand>(&output)) {
        row.Read(*column->column, values[i]);
      } else if (const auto* parameter = std::get_if<ParameterOperand>(&output)) {
        if (const Argument& argument = arguments[parameter->number]) values[i] = *argument;
      } else {
        const auto& literal = std::get<Literal>(output);
        values[i] = ToColumn(ColumnFor(literal.kind), literal);
      }
    }
    return values;
  }

  std::vector<Value> Key(const RowView& row) const {
    std::vector<Value> key(order_.size());
    for (size_t i = 0; i < key.size(); ++i) row.Read(*order_[i].column, key[i]);
    return key;
  }

  void Sort(std::vector<std::vector<Value>>& rows,
            const std::vector<std::vector<Value>>& keys) const {
    std::vector<size_t> places(rows.size());
    std::iota(places.begin(), places.end(), size_t{0});
    std::stable_sort(places.begin(), places.end(),
                     [&](size_t a, size_t b) { return Before(keys[a], keys[b]); });
    std::vector<std::vector<Value>> sorted;
    sorted.reserve(rows.size());
    for (const size_t place : places) {
      const bool enough = select_.top && sorted.size() >= *select_.top;
      // The order does not choose between equal rows.
      if (enough && Before(keys[places[*select_.top - 1]], keys[place])) break;
      sorted.push_back(std::move(rows[place]));
    }
    rows = std::move(sorted);
  }

  bool Before(const std::vector<Value>& left, const std::vector<Value>& right) const {
    for (size_t i = 0; i < order_.size(); ++i) {
      const int order = CompareForOrder(left[i], right[i]);
      if (order != 0) return order_[i].descending ? order > 0 : order < 0;
    }
    return false;
  }

  Names names_;
  const TableDefinition& table_;
  const Select& select_;
  bool counts_ = false;  // the rows, and shows nothing of them
  std::vector<BoundOperand> outputs_;
  Predicate predicate_;
  std::vector<OrderKey> order_;
};

}  // namespace

std::unique_ptr<Plan> MakePlan(const Select& select, const TableDefinition& table) {
  return std::make_unique<Query>(table, select);
}

}  // namespace rdv::jet::sql
