#include "data/jet/sql/parameters.h"

#include "data/jet/sql/names.h"

namespace rdv::jet::sql {
namespace {

void Meet(const Condition& condition, Names& names) {
  for (const Condition& part : condition.parts) Meet(part, names);
  if (condition.kind == ConditionKind::Compare || condition.kind == ConditionKind::IsNull)
    names.Resolve(condition.left);
  if (condition.kind == ConditionKind::Compare) names.Resolve(condition.right);
}

// Each meets the names in the order in which they stand, as the execution does.
void Meet(const Select& select, Names& names) {
  for (const auto& item : select.items) {
    if (const auto* operand = std::get_if<Operand>(&item)) names.Resolve(*operand);
  }
  if (select.where) Meet(*select.where, names);
  for (const OrderItem& item : select.order) names.Resolve(item.name);
}

void Meet(const Update& update, Names& names) {
  for (const SetItem& item : update.items) {
    names.Resolve(item.target);
    names.Resolve(item.value);
  }
  if (update.where) Meet(*update.where, names);
}

void Meet(const Insert& insert, Names& names) {
  for (const Operand& value : insert.values) names.Resolve(value);
}

void Meet(const Delete& statement, Names& names) {
  if (statement.where) Meet(*statement.where, names);
}

}  // namespace

const Text& TableOf(const Statement& statement) {
  return std::visit([](const auto& kind) -> const Text& { return kind.table; }, statement);
}

std::vector<Text> ParametersOf(const Statement& statement, const TableDefinition& table) {
  // The values of an INSERT see no column.
  Names names(std::holds_alternative<Insert>(statement) ? nullptr : &table, TableOf(statement));
  std::visit([&names](const auto& kind) { Meet(kind, names); }, statement);
  return names.Parameters();
}

}  // namespace rdv::jet::sql
