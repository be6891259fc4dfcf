#include "data/jet/schema.h"

namespace rdv::jet {

const Column* TableDefinition::FindColumn(TextView column_name) const {
  for (const Column& column : columns) {
    if (EqualsIgnoringCase(column.name, column_name)) return &column;
  }
  return nullptr;
}

}  // namespace rdv::jet
