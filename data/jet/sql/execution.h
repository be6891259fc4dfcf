// Runs statements on tables.
#pragma once

#include <span>

#include "data/connection.h"
#include "data/jet/engine.h"
#include "data/jet/sql/statement.h"

namespace rdv::jet::sql {

// The rows of a SELECT on its table; without ORDER BY in the order of storage, and rows that the
// order leaves equal as well.
RowTable RunSelect(const FileReader& file, const TableDefinition& table, const Select& select,
                   std::span<const Argument> arguments);

// Inside a WriteScope, which is to be given up when they raise. The number of rows written.
//
// An update converts its values when it meets the first row; when it meets none, values that are
// none for their columns go unnoticed.
int RunUpdate(Engine& engine, const Update& update, std::span<const Argument> arguments);
int RunInsert(Engine& engine, const Insert& insert, std::span<const Argument> arguments);
int RunDelete(Engine& engine, const Delete& statement, std::span<const Argument> arguments);

}  // namespace rdv::jet::sql
