#include "data/jet/sql/predicate.h"

#include <algorithm>
#include <utility>

#include "data/jet/sql/value_order.h"

namespace rdv::jet::sql {
namespace {

const Column* ColumnOf(const BoundOperand& operand) {
  const auto* column = std::get_if<ColumnOperand>(&operand);
  return column == nullptr ? nullptr : column->column;
}

// With the operands exchanged.
Comparison Mirrored(Comparison comparison) {
  switch (comparison) {
    case Comparison::Less:
      return Comparison::Greater;
    case Comparison::LessOrEqual:
      return Comparison::GreaterOrEqual;
    case Comparison::Greater:
      return Comparison::Less;
    case Comparison::GreaterOrEqual:
      return Comparison::LessOrEqual;
    default:
      return comparison;
  }
}

bool Holds(Comparison comparison, int order) {
  switch (comparison) {
    case Comparison::Equal:
      return order == 0;
    case Comparison::NotEqual:
      return order != 0;
    case Comparison::Less:
      return order < 0;
    case Comparison::LessOrEqual:
      return order <= 0;
    case Comparison::Greater:
      return order > 0;
    case Comparison::GreaterOrEqual:
      return order >= 0;
    case Comparison::Like:
      break;
  }
  return false;
}

// The type in which two constants are compared: the literal's own.
Column ColumnLike(const BoundOperand& constant) {
  const auto* literal = std::get_if<Literal>(&constant);
  return ColumnFor(literal == nullptr ? LiteralKind::Text : literal->kind);
}

SearchValue ConstantFor(const Column& column, const BoundOperand& constant,
                        std::span<const Argument> arguments) {
  if (const auto* parameter = std::get_if<ParameterOperand>(&constant))
    return ToSearchValue(column, arguments[parameter->number]);
  return ToSearchValue(column, std::get<Literal>(constant));
}

// A parameter or a literal as the text that it is; Null where it is Null.
Value TextOf(const BoundOperand& constant, std::span<const Argument> arguments) {
  if (const auto* parameter = std::get_if<ParameterOperand>(&constant)) {
    const Argument& argument = arguments[parameter->number];
    return argument ? Value(*argument) : Value(Null{});
  }
  const auto& literal = std::get<Literal>(constant);
  return literal.kind == LiteralKind::Null ? Value(Null{}) : Value(literal.text);
}

// Of the column's type, as ConstantFor gives it: then the column is one of whole numbers, too.
std::optional<int32_t> WholeNumber(const SearchValue& search) {
  if (!search.Exists()) return std::nullopt;
  if (const auto* number = std::get_if<int16_t>(&search.value)) return *number;
  if (const auto* number = std::get_if<int32_t>(&search.value)) return *number;
  return std::nullopt;
}

}  // namespace

const Column* Predicate::Node::LeftColumn() const {
  return ColumnOf(left);
}
const Column* Predicate::Node::RightColumn() const {
  return ColumnOf(right);
}

Predicate::Predicate(const std::optional<Condition>& where, Names& names) {
  if (where) root_ = Resolve(*where, names);
}

Predicate::Node Predicate::Resolve(const Condition& condition, Names& names) {
  Node node;
  node.kind = condition.kind;
  for (const Condition& part : condition.parts) node.parts.push_back(Resolve(part, names));
  const bool compares = node.kind == ConditionKind::Compare;
  if (compares || node.kind == ConditionKind::IsNull) node.left = names.Resolve(condition.left);
  if (!compares) return node;
  node.right = names.Resolve(condition.right);
  node.comparison = condition.comparison;
  const bool exchangeable = node.comparison != Comparison::Like;
  if (exchangeable && node.LeftColumn() == nullptr && node.RightColumn() != nullptr) {
    std::swap(node.left, node.right);
    node.comparison = Mirrored(node.comparison);
  }
  return node;
}

void Predicate::Bind(std::span<const Argument> arguments) {
  if (!root_) return;
  equalities_.clear();
  can_match_ = true;
  BindNode(*root_, arguments);
  NoteRequired(*root_);
}

void Predicate::BindNode(Node& node, std::span<const Argument> arguments) {
  for (Node& part : node.parts) BindNode(part, arguments);
  node.constant.reset();
  const bool like = node.comparison == Comparison::Like;
  if (node.kind == ConditionKind::Compare && like) BindLike(node, arguments);
  if (node.kind == ConditionKind::Compare && !like) BindComparison(node, arguments);
  if (node.kind != ConditionKind::IsNull) return;
  if (const auto* parameter = std::get_if<ParameterOperand>(&node.left))
    node.constant = arguments[parameter->number] ? Truth::False : Truth::True;
  if (const auto* literal = std::get_if<Literal>(&node.left))
    node.constant = literal->kind == LiteralKind::Null ? Truth::True : Truth::False;
}

void Predicate::BindComparison(Node& node, std::span<const Argument> arguments) {
  if (node.RightColumn() != nullptr) return;
  if (const Column* column = node.LeftColumn()) {
    node.search = ConstantFor(*column, node.right, arguments);
    node.number = WholeNumber(node.search);
    return;
  }
  // Two constants; a parameter takes the type of a literal beside it.
  if (std::holds_alternative<ParameterOperand>(node.left)) {
    std::swap(node.left, node.right);
    node.comparison = Mirrored(node.comparison);
  }
  const auto is_null = [](const BoundOperand& operand) {
    const auto* literal = std::get_if<Literal>(&operand);
    return literal != nullptr && literal->kind == LiteralKind::Null;
  };
  if (is_null(node.left) || is_null(node.right)) {
    node.constant = Truth::Unknown;
    return;
  }
  const Column column = ColumnLike(node.left);
  node.search = ConstantFor(column, node.right, arguments);
  node.constant = Outcome(node, ConstantFor(column, node.left, arguments).value);
}

void Predicate::BindLike(Node& node, std::span<const Argument> arguments) {
  if (node.RightColumn() != nullptr) {
    if (node.LeftColumn() == nullptr) node.text = TextOf(node.left, arguments);
    return;
  }
  const Value pattern = TextOf(node.right, arguments);
  if (IsNull(pattern)) {
    node.constant = Truth::Unknown;
    return;
  }
  node.pattern.emplace(std::get<Text>(pattern));
  if (node.LeftColumn() == nullptr)
    node.constant = OutcomeOfLike(TextOf(node.left, arguments), *node.pattern);
}

// What must hold for the whole condition to hold.
void Predicate::NoteRequired(const Node& node) {
  if (node.kind == ConditionKind::And) {
    for (const Node& part : node.parts) NoteRequired(part);
    return;
  }
  if (node.constant && *node.constant != Truth::True) can_match_ = false;
  const Column* column = node.LeftColumn();
  if (node.kind != ConditionKind::Compare || node.comparison == Comparison::Like ||
      column == nullptr || node.RightColumn() != nullptr)
    return;
  const bool equal = node.comparison == Comparison::Equal;
  if (node.search.Exists()) {
    if (equal) equalities_.push_back({column, &node.search.value});
  } else if (equal || node.search.IsNull()) {
    can_match_ = false;
  }
}

bool Predicate::Matches(const RowView& row) const {
  return !root_ || Evaluate(*root_, row) == Truth::True;
}

Predicate::Truth Predicate::Evaluate(const Node& node, const RowView& row) {
  if (node.constant) return *node.constant;
  switch (node.kind) {
    case ConditionKind::And:
    case ConditionKind::Or:
      return EvaluateChain(node, row);
    case ConditionKind::Not: {
      const Truth truth = Evaluate(node.parts.front(), row);
      if (truth == Truth::Unknown) return truth;
      return truth == Truth::True ? Truth::False : Truth::True;
    }
    case ConditionKind::IsNull:
      return row.IsNull(*node.LeftColumn()) ? Truth::True : Truth::False;
    case ConditionKind::Compare:
      return EvaluateComparison(node, row);
  }
  return Truth::Unknown;
}

// The least true part decides for And, the most true one for Or.
Predicate::Truth Predicate::EvaluateChain(const Node& node, const RowView& row) {
  const bool all = node.kind == ConditionKind::And;
  Truth result = all ? Truth::True : Truth::False;
  for (const Node& part : node.parts) {
    const Truth truth = Evaluate(part, row);
    result = all ? std::min(result, truth) : std::max(result, truth);
    if (result == (all ? Truth::False : Truth::True)) break;
  }
  return result;
}

Predicate::Truth Predicate::EvaluateComparison(const Node& node, const RowView& row) {
  if (node.comparison == Comparison::Like) return EvaluateLike(node, row);
  // Most searches: a number compared with a key's column.
  if (node.number) {
    const std::optional<int32_t> number = row.WholeNumber(*node.LeftColumn());
    if (!number) return Truth::Unknown;
    const int order = int{*number > *node.number} - int{*number < *node.number};
    return Holds(node.comparison, order) ? Truth::True : Truth::False;
  }
  const Value left = row.Get(*node.LeftColumn());
  const Column* other = node.RightColumn();
  if (other == nullptr) return Outcome(node, left);
  const Value right = row.Get(*other);
  if (IsNull(left) || IsNull(right)) return Truth::Unknown;
  return Holds(node.comparison, CompareValues(left, right)) ? Truth::True : Truth::False;
}

Predicate::Truth Predicate::Outcome(const Node& node, const Value& left) {
  const SearchValue& search = node.search;
  if (IsNull(left) || search.IsNull()) return Truth::Unknown;
  int order = search.beyond != 0 ? -search.beyond : CompareValues(left, search.value);
  if (order == 0) order = -search.beside;
  return Holds(node.comparison, order) ? Truth::True : Truth::False;
}

Predicate::Truth Predicate::EvaluateLike(const Node& node, const RowView& row) {
  const Column* column = node.LeftColumn();
  const Value left = column == nullptr ? node.text : row.Get(*column);
  if (node.pattern) return OutcomeOfLike(left, *node.pattern);
  const Value pattern = row.Get(*node.RightColumn());
  if (IsNull(pattern)) return Truth::Unknown;
  return OutcomeOfLike(left, LikePattern(ToText(pattern)));
}

Predicate::Truth Predicate::OutcomeOfLike(const Value& left, const LikePattern& pattern) {
  if (IsNull(left)) return Truth::Unknown;
  return pattern.Matches(ToText(left)) ? Truth::True : Truth::False;
}

}  // namespace rdv::jet::sql
