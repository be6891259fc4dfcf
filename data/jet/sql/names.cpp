#include "data/jet/sql/names.h"

#include <algorithm>
#include <utility>

#include "data/jet/format/errors.h"

namespace rdv::jet::sql {

const Column* Names::FindColumn(const Name& name) const {
  if (table_ == nullptr) return nullptr;
  if (!name.table.empty() && !EqualsIgnoringCase(name.table, known_as_)) return nullptr;
  return table_->FindColumn(name.column);
}

BoundOperand Names::Resolve(const Name& name) {
  if (const Column* column = FindColumn(name)) return ColumnOperand{column};
  Text parameter = name.table.empty() ? name.column : name.table + u"." + name.column;
  const auto known = std::find_if(parameters_.begin(), parameters_.end(), [&](const Text& other) {
    return EqualsIgnoringCase(other, parameter);
  });
  const auto number = static_cast<size_t>(known - parameters_.begin());
  if (known == parameters_.end()) parameters_.push_back(std::move(parameter));
  return ParameterOperand{number};
}

BoundOperand Names::Resolve(const Operand& operand) {
  if (const Name* name = std::get_if<Name>(&operand)) return Resolve(*name);
  return std::get<Literal>(operand);
}

void Names::RequireArguments(std::span<const Argument> arguments) const {
  if (arguments.size() < parameters_.size()) RaiseMissingParameter();
}

}  // namespace rdv::jet::sql
