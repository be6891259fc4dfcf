#include "data/jet/sql/execution.h"

#include <variant>

namespace rdv::jet::sql {

std::unique_ptr<Plan> MakePlan(const Statement& statement, const TableDefinition& table) {
  return std::visit([&table](const auto& kind) { return MakePlan(kind, table); }, statement);
}

}  // namespace rdv::jet::sql
