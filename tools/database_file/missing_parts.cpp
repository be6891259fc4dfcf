#include "tools/database_file/missing_parts.h"

#include "data/needed_tables.h"

namespace rdv {
namespace {

void AddMissingColumns(const NeededTable& needed, const jet::TableDefinition& table,
                       std::vector<std::string>& to) {
  for (const TextView column : needed.columns) {
    if (table.FindColumn(column) != nullptr) continue;
    to.push_back("column " + ToUtf8(column) + " of table " + ToUtf8(table.name) + " is missing");
  }
}

}  // namespace

std::vector<std::string> MissingParts(jet::Engine& engine, Links links) {
  std::vector<std::string> missing;
  size_t missing_tables = 0;
  for (const NeededTable& needed : NeededTables()) {
    if (const jet::TableDefinition* table = engine.FindTable(needed.name)) {
      AddMissingColumns(needed, *table, missing);
    } else if (const auto link = engine.Link(needed.name)) {
      if (links == Links::Allowed) continue;
      missing.push_back("table " + ToUtf8(link->name) + " lies in another file, '" +
                        ToUtf8(link->database) + "'");
    } else {
      missing.push_back("table " + ToUtf8(needed.name) + " is missing");
      ++missing_tables;
    }
  }
  if (missing_tables == NeededTables().size())
    return {"this is no database of a site: it has none of the tables of one"};
  return missing;
}

}  // namespace rdv
