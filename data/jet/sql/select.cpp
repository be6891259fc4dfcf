#include <algorithm>
#include <numeric>
#include <utility>

#include "data/jet/format/errors.h"
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

class Query {
 public:
  Query(const FileReader& file, const TableDefinition& table, const Select& select)
      : file_(file),
        names_(&table),
        table_(table),
        outputs_(ResolveItems(select)),
        predicate_(select.where, names_) {
    for (const OrderItem& item : select.order) {
      const BoundOperand operand = names_.Resolve(item.name);
      // A parameter is the same for all rows and orders nothing.
      if (const auto* column = std::get_if<ColumnOperand>(&operand))
        order_.push_back({column->column, item.descending});
    }
  }

  RowTable Run(std::span<const Argument> arguments) {
    names_.RequireArguments(arguments);
    predicate_.Bind(arguments);
    RowTable result;
    result.columns = OutputNames();
    std::vector<std::vector<Value>> keys;
    ForEachMatch(file_, table_, predicate_, [&](const RowView& row) {
      result.rows.push_back(Output(row, arguments));
      if (!order_.empty()) keys.push_back(Key(row));
    });
    if (!order_.empty()) Sort(result.rows, keys);
    return result;
  }

 private:
  std::vector<BoundOperand> ResolveItems(const Select& select) {
    std::vector<BoundOperand> outputs;
    for (const auto& item : select.items) {
      if (const auto* operand = std::get_if<Operand>(&item)) {
        outputs.push_back(names_.Resolve(*operand));
        continue;
      }
      const Text& qualifier = std::get<AllColumns>(item).table;
      if (!qualifier.empty() && !EqualsIgnoringCase(qualifier, table_.name)) {
        RaiseSyntaxError(u"The Microsoft Jet database engine does not recognize '" + qualifier +
                         u".*' as a valid field name or expression.");
      }
      for (const Column& column : table_.columns) outputs.push_back(ColumnOperand{&column});
    }
    return outputs;
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
    std::vector<Value> values;
    values.reserve(outputs_.size());
    for (const BoundOperand& output : outputs_) {
      if (const auto* column = std::get_if<ColumnOperand>(&output)) {
        values.push_back(row.Get(*column->column));
      } else if (const auto* parameter = std::get_if<ParameterOperand>(&output)) {
        const Argument& argument = arguments[parameter->number];
        values.push_back(argument ? Value(*argument) : Value(Null{}));
      } else {
        const Literal& literal = std::get<Literal>(output);
        values.push_back(ToColumn(ColumnFor(literal.kind), literal));
      }
    }
    return values;
  }

  std::vector<Value> Key(const RowView& row) const {
    std::vector<Value> key;
    for (const OrderKey& part : order_) key.push_back(row.Get(*part.column));
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
    for (const size_t place : places) sorted.push_back(std::move(rows[place]));
    rows = std::move(sorted);
  }

  bool Before(const std::vector<Value>& left, const std::vector<Value>& right) const {
    for (size_t i = 0; i < order_.size(); ++i) {
      const int order = CompareForOrder(left[i], right[i]);
      if (order != 0) return order_[i].descending ? order > 0 : order < 0;
    }
    return false;
  }

  const FileReader& file_;
  Names names_;
  const TableDefinition& table_;
  std::vector<BoundOperand> outputs_;
  Predicate predicate_;
  std::vector<OrderKey> order_;
};

}  // namespace

RowTable RunSelect(const FileReader& file, const TableDefinition& table, const Select& select,
                   std::span<const Argument> arguments) {
  return Query(file, table, select).Run(arguments);
}

}  // namespace rdv::jet::sql
