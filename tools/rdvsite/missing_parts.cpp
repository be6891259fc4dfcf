#include "tools/rdvsite/missing_parts.h"

#include <algorithm>

#include "data/needed_tables.h"

namespace rdv {

std::vector<std::string> MissingParts(jet::Engine& engine) {
  const std::vector<Text> names = engine.UserTableNames();
  std::vector<std::string> missing;
  size_t missing_tables = 0;
  for (const NeededTable& needed : NeededTables()) {
    const bool there = std::ranges::any_of(
        names, [&](const Text& name) { return EqualsIgnoringCase(name, needed.name); });
    if (!there) {
      missing.push_back("table " + ToUtf8(needed.name) + " is missing");
      ++missing_tables;
      continue;
    }
    const jet::TableDefinition& table = engine.Table(needed.name);
    for (const TextView column : needed.columns) {
      if (table.FindColumn(column) == nullptr)
        missing.push_back("column " + ToUtf8(column) + " of table " + ToUtf8(table.name) +
                          " is missing");
    }
  }
  if (missing_tables == NeededTables().size())
    return {"this is no database of a site: it has none of the tables of one"};
  return missing;
}

}  // namespace rdv
