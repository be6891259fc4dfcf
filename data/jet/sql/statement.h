// A statement as it was written: names are not looked up yet, so what is a column and what a
// parameter is open. Plain data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "runtime/text.h"

namespace rdv::jet::sql {

// `table` is empty for an unqualified name.
struct Name {
  Text table;
  Text column;
};

enum class LiteralKind : uint8_t { Null, Boolean, Number, Text, Date };

// Numbers and dates as they were written, texts without their quotes, Booleans as "-1" and "0".
struct Literal {
  LiteralKind kind = LiteralKind::Null;
  Text text;
};

using Operand = std::variant<Name, Literal>;

// Like: the right operand is a pattern (see like_pattern.h).
enum class Comparison : uint8_t {
  Equal,
  NotEqual,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Like
};

enum class ConditionKind : uint8_t { And, Or, Not, Compare, IsNull };

// And, Or: all parts. Not: the one part. Compare: both operands. IsNull: the left operand.
struct Condition {
  ConditionKind kind = ConditionKind::Compare;
  std::vector<Condition> parts;
  Comparison comparison = Comparison::Equal;
  Operand left;
  Operand right;
};

// All columns: of any table for "*", of `table` for "table.*".
struct AllColumns {
  Text table;
};

// How many rows there are.
struct CountAll {};

struct OrderItem {
  Name name;
  bool descending = false;
};

using SelectItem = std::variant<AllColumns, Operand, CountAll>;

struct Select {
  bool distinct = false;      // rows that are equal count once
  std::optional<size_t> top;  // no more rows than these, but all that the order leaves equal
  std::vector<SelectItem> items;
  Text table;
  std::optional<Condition> where;
  std::vector<OrderItem> order;
};

struct SetItem {
  Name target;
  Operand value;
};

struct Update {
  Text table;
  std::vector<SetItem> items;
  std::optional<Condition> where;
};

// Without a list of columns the values are those of all columns in their order.
struct Insert {
  Text table;
  std::vector<Text> columns;
  std::vector<Operand> values;
};

struct Delete {
  Text table;
  std::optional<Condition> where;
};

using Statement = std::variant<Select, Update, Insert, Delete>;

}  // namespace rdv::jet::sql
