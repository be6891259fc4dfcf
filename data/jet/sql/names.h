// What the names of a statement stand for: a column of its table, or a parameter.
#pragma once

#include <cstddef>
#include <span>
#include <variant>
#include <vector>

#include "data/connection.h"
#include "data/jet/format/schema.h"
#include "data/jet/sql/statement.h"

namespace rdv::jet::sql {

struct ColumnOperand {
  const Column* column = nullptr;
};
struct ParameterOperand {
  size_t number = 0;  // of the argument that is bound to it
};
using BoundOperand = std::variant<ColumnOperand, ParameterOperand, Literal>;

// A name that is no column is a parameter; parameters are numbered in the order in which they are
// met first, and one that is met again is the same. So a statement's names are to be resolved in
// the order in which they stand there.
class Names {
 public:
  // Null where no name is a column. `table` must outlive what is resolved; the statement knows it
  // as `known_as`, which is its own name but for a table that is linked under another one.
  Names(const TableDefinition* table, TextView known_as) : table_(table), known_as_(known_as) {}

  BoundOperand Resolve(const Name& name);
  BoundOperand Resolve(const Operand& operand);

  // Raises "No value given ..." when there are fewer arguments than parameters.
  void RequireArguments(std::span<const Argument> arguments) const;

  // The parameters that were met, in the order in which arguments are bound to them.
  const std::vector<Text>& Parameters() const { return parameters_; }

 private:
  const Column* FindColumn(const Name& name) const;

  const TableDefinition* table_;
  Text known_as_;
  std::vector<Text> parameters_;
};

}  // namespace rdv::jet::sql
