// Which columns do not take what a statement gives them.
#pragma once

#include <span>
#include <string>

#include "data/connection.h"
#include "data/jet/format/schema.h"
#include "data/jet/sql/statement.h"
#include "runtime/error.h"

namespace rdv {

// "column 'Line' (INT) does not take 'three'": the values that a column is given or compared
// with and for which it raises `error`, which the engine raised for the whole statement. Empty
// where no value is to blame, or one that stands in a row.
std::string RefusedValues(const jet::sql::Statement& statement, const jet::TableDefinition& table,
                          std::span<const Argument> arguments, const RuntimeError& error);

}  // namespace rdv
