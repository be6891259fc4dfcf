// Runs statements on tables.
#pragma once

#include <memory>
#include <span>

#include "data/connection.h"
#include "data/jet/engine.h"
#include "data/jet/sql/statement.h"

namespace rdv::jet::sql {

// A statement and the table that it is about: what its names stand for is worked out once, and it
// runs again and again with other arguments.
//
// A SELECT gives its rows without ORDER BY in the order of storage, and rows that the order leaves
// equal as well. An update converts its values when it meets the first row; when it meets none,
// values that are none for their columns go unnoticed.
class Plan {
 public:
  Plan() = default;
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;
  virtual ~Plan() = default;

  // In a scope of the engine that the table is of: a WriteScope where the statement writes, which
  // is to be given up when this raises.
  virtual CommandResult Run(Engine& engine, std::span<const Argument> arguments) = 0;
};

// Raises for names that stand where they cannot. Both must outlive the plan.
std::unique_ptr<Plan> MakePlan(const Statement& statement, const TableDefinition& table);
std::unique_ptr<Plan> MakePlan(const Select& select, const TableDefinition& table);
std::unique_ptr<Plan> MakePlan(const Update& update, const TableDefinition& table);
std::unique_ptr<Plan> MakePlan(const Insert& insert, const TableDefinition& table);
std::unique_ptr<Plan> MakePlan(const Delete& statement, const TableDefinition& table);

}  // namespace rdv::jet::sql
