// Which arguments a statement takes, for programs that show it to the one who wrote it.
#pragma once

#include <vector>

#include "data/jet/format/schema.h"
#include "data/jet/sql/statement.h"

namespace rdv::jet::sql {

// The table that the statement reads or writes.
const Text& TableOf(const Statement& statement);

// The names that stand for arguments, in the order in which arguments are bound to them: all that
// are no columns of `table`, so also a column's name that is misspelt.
std::vector<Text> ParametersOf(const Statement& statement, const TableDefinition& table);

}  // namespace rdv::jet::sql
