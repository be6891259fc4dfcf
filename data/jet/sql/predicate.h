// A WHERE condition, ready to be asked about rows.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "data/connection.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/sql/conversions.h"
#include "data/jet/sql/like_pattern.h"
#include "data/jet/sql/names.h"
#include "data/jet/sql/statement.h"

namespace rdv::jet::sql {

// A column that has one given value in every row of the result.
struct Equality {
  const Column* column = nullptr;
  const Value* value = nullptr;  // of the column's type, never Null
};

// Made in two steps, because arguments are only known to suffice when all names of the statement
// are: first its names are resolved, then its constants are bound.
class Predicate {
 public:
  // No condition: every row matches.
  Predicate(const std::optional<Condition>& where, Names& names);
  Predicate(const Predicate&) = delete;
  Predicate& operator=(const Predicate&) = delete;
  ~Predicate() = default;

  // Again and again, for other arguments. Raises "Data type mismatch ..." for a constant that does
  // not compare with its column.
  void Bind(std::span<const Argument> arguments);

  // Whether the condition is true. It is not where a comparison with Null leaves it open.
  bool Matches(const RowView& row) const;

  // False when no row can match, whatever rows there are.
  bool CanMatch() const { return can_match_; }
  std::span<const Equality> Equalities() const { return equalities_; }

 private:
  enum class Truth { False, Unknown, True };

  struct Node {
    ConditionKind kind = ConditionKind::Compare;
    std::vector<Node> parts;
    Comparison comparison = Comparison::Equal;
    BoundOperand left;  // the column, when one operand only is a column
    BoundOperand right;
    SearchValue search;                  // what the left column is compared with, or ...
    std::optional<Truth> constant;       // ... the result, when it does not depend on the row
    std::optional<int32_t> number;       // `search`, where the left column holds whole numbers
    std::optional<LikePattern> pattern;  // of Like, when it does not depend on the row ...
    Value text;  // ... or, where only the pattern does, what is held against it
    const Column* LeftColumn() const;
    const Column* RightColumn() const;
  };

  static Node Resolve(const Condition& condition, Names& names);
  static void BindNode(Node& node, std::span<const Argument> arguments);
  static void BindComparison(Node& node, std::span<const Argument> arguments);
  static Truth Evaluate(const Node& node, const RowView& row);
  static Truth EvaluateChain(const Node& node, const RowView& row);
  static Truth EvaluateComparison(const Node& node, const RowView& row);
  static Truth Outcome(const Node& node, const Value& left);
  static void BindLike(Node& node, std::span<const Argument> arguments);
  static Truth EvaluateLike(const Node& node, const RowView& row);
  static Truth OutcomeOfLike(const Value& left, const LikePattern& pattern);
  void NoteRequired(const Node& node);

  std::optional<Node> root_;
  std::vector<Equality> equalities_;
  bool can_match_ = true;
};

}  // namespace rdv::jet::sql
