// What a database holds: tables and schema for people, dump for programs.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>

#include "data/jet/catalog/catalog.h"
#include "data/jet/dump/dump.h"
#include "data/jet/format/errors.h"
#include "tools/command_line/standard_output.h"
#include "tools/command_line/suggestion.h"
#include "tools/rdvsite/commands.h"
#include "tools/rdvsite/database.h"

namespace rdv {
namespace {

using jet::Catalog;
using jet::CatalogObject;
using jet::Column;
using jet::LogicalIndex;
using jet::LogicalIndexKind;
using jet::Relationship;
using jet::TableDefinition;

struct ListingOptions {
  std::string file;
  std::vector<std::string> tables;
};

std::string Padded(std::string text, size_t width) {
  // Letters beyond ASCII take several bytes and one place.
  const auto letters = static_cast<size_t>(
      std::ranges::count_if(text, [](char byte) { return (byte & 0xC0) != 0x80; }));
  if (letters < width) text.append(width - letters, ' ');
  return text;
}

// A name that is no table's is a wrong word.
void RequireTables(jet::Engine& engine, const std::vector<std::string>& wanted) {
  std::vector<std::string> names;
  for (const Text& name : engine.UserTableNames()) names.push_back(ToUtf8(name));
  for (const std::string& name : wanted) {
    const bool there = std::ranges::any_of(names, [&](const std::string& candidate) {
      return EqualsIgnoringCase(FromUtf8(candidate), FromUtf8(name));
    });
    if (there) continue;
    const std::string nearest = tools::Nearest(name, names);
    throw tools::UsageError("there is no table '" + name + "'" +
                            (nearest.empty() ? "" : ": did you mean '" + nearest + "'?"));
  }
}

// Runs `show` on the catalog of the file, in one state of it.
void ShowCatalog(const std::string& file,
                 const std::function<void(jet::Engine&, const Catalog&)>& show) {
  const Text path = DatabasePath(file);
  const auto engine = OpenDatabase(path);
  try {
    const jet::Engine::ReadScope scope(*engine);
    show(*engine, Catalog(engine->File()));
    if (!scope.StillValid()) jet::RaiseFileInUse(path);
  } catch (const RuntimeError& error) {
    throw std::runtime_error(Explained(error, path));
  }
}

int Tables(const ListingOptions& options, std::ostream& out) {
  ShowCatalog(options.file, [&out](jet::Engine&, const Catalog& catalog) {
    constexpr size_t kNameWidth = 32;
    for (const CatalogObject& object : catalog.UserTables()) {
      const TableDefinition table = catalog.Table(object);
      out << Padded(ToUtf8(table.name), kNameWidth) << ' ' << table.row_count
          << (table.row_count == 1 ? " row, " : " rows, ") << table.columns.size() << " columns\n";
    }
    for (const jet::LinkedTable& table : catalog.LinkedTables()) {
      out << Padded(ToUtf8(table.name), kNameWidth) << " linked to " << Quoted(table.foreign_name)
          << " of " << Quoted(table.database) << '\n';
    }
  });
  return tools::kDone;
}

std::string TypeOf(const Column& column) {
  std::string type = jet::TypeName(column.type);
  if (column.type == jet::ColumnType::Text) type += "(" + std::to_string(column.length / 2) + ")";
  if (column.type == jet::ColumnType::Binary) type += "(" + std::to_string(column.length) + ")";
  if (column.type == jet::ColumnType::Numeric)
    type += "(" + std::to_string(column.precision) + "," + std::to_string(column.scale) + ")";
  if (column.autonumber) type += ", autonumber";
  if (column.required) type += ", required";
  if (!column.default_value.empty()) type += ", default " + ToUtf8(column.default_value);
  return type;
}

std::string PartsOf(const TableDefinition& table, const LogicalIndex& index) {
  std::string parts;
  for (const jet::IndexColumn& part : table.indexes[index.real_index].columns) {
    parts += (parts.empty() ? "" : ", ") + ToUtf8(table.columns[part.column].name);
    if (part.descending) parts += " descending";
  }
  return parts;
}

void PrintTable(const TableDefinition& table, std::ostream& out) {
  constexpr size_t kNameWidth = 30;
  out << ToUtf8(table.name) << " (" << table.row_count
      << (table.row_count == 1 ? " row)\n" : " rows)\n");
  for (const Column& column : table.columns)
    out << "  " << Padded(ToUtf8(column.name), kNameWidth) << ' ' << TypeOf(column) << '\n';
  for (const LogicalIndex& index : table.logical_indexes) {
    if (index.kind == LogicalIndexKind::ForeignKey) continue;
    const char* const kind = index.kind == LogicalIndexKind::Primary  ? "primary key"
                             : table.indexes[index.real_index].unique ? "unique index"
                                                                      : "index";
    out << "  " << kind << ' ' << ToUtf8(index.name) << ": " << PartsOf(table, index) << '\n';
  }
}

void PrintRelationship(const Relationship& relationship, std::ostream& out) {
  out << "  relationship " << ToUtf8(relationship.name) << ": ";
  std::string columns;
  std::string referenced;
  for (const jet::RelationshipColumn& column : relationship.columns) {
    columns += (columns.empty() ? "" : ", ") + ToUtf8(column.column);
    referenced += (referenced.empty() ? "" : ", ") + ToUtf8(column.referenced_column);
  }
  out << columns << " refers to " << ToUtf8(relationship.referenced_table) << " (" << referenced
      << ')';
  if (!relationship.enforced) out << ", not enforced";
  if (relationship.cascade_updates) out << ", changes are passed on";
  if (relationship.cascade_deletes) out << ", deletions are passed on";
  out << '\n';
}

int Schema(const ListingOptions& options, std::ostream& out) {
  ShowCatalog(options.file, [&](jet::Engine& engine, const Catalog& catalog) {
    RequireTables(engine, options.tables);
    std::vector<TableDefinition> tables;
    for (const std::string& name : options.tables) tables.push_back(catalog.Table(FromUtf8(name)));
    if (options.tables.empty()) {
      for (const CatalogObject& object : catalog.UserTables())
        tables.push_back(catalog.Table(object));
    }
    const std::vector<Relationship> relationships = catalog.Relationships();
    for (const TableDefinition& table : tables) {
      if (&table != &tables.front()) out << '\n';
      PrintTable(table, out);
      for (const Relationship& relationship : relationships) {
        if (EqualsIgnoringCase(relationship.table, table.name))
          PrintRelationship(relationship, out);
      }
    }
  });
  return tools::kDone;
}

int Dump(const ListingOptions& options, std::ostream& out, std::ostream& errors) {
  const Text path = DatabasePath(options.file);
  std::vector<Text> tables;
  for (const std::string& name : options.tables) tables.push_back(FromUtf8(name));
  const auto engine = OpenDatabase(path);
  std::vector<Text> damage;
  try {
    const jet::Engine::ReadScope scope(*engine);
    RequireTables(*engine, options.tables);
    jet::DumpDatabase(engine->File(),
                      {.file_name = std::filesystem::path(path).filename().u16string(),
                       .tables = tables,
                       .damage = &damage},
                      [&out](std::string_view text) {
                        out.write(text.data(), static_cast<std::streamsize>(text.size()));
                        tools::StopWithoutReader(out);
                      });
    if (!scope.StillValid()) jet::RaiseFileInUse(path);
  } catch (const RuntimeError& error) {
    throw std::runtime_error(Explained(error, path));
  }
  out.flush();
  for (const Text& what : damage) errors << "rdvsite dump: left out: " << ToUtf8(what) << '\n';
  return damage.empty() ? tools::kDone : tools::kFindings;
}

CLI::App& AddListing(tools::CommandLine& line, const std::string& word, const std::string& purpose,
                     const std::shared_ptr<ListingOptions>& options, tools::CommandLine::Run run) {
  CLI::App& command = line.Add(word, purpose, std::move(run));
  AddFileOperand(command, options->file);
  return command;
}

void AddTableOperand(CLI::App& command, ListingOptions& options) {
  command.add_option("TABLE", options.tables, "Only these tables; all when none is named");
}

}  // namespace

void AddTables(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<ListingOptions>();
  AddListing(line, "tables", "lists the tables with the number of their rows", options,
             [options, &out] { return Tables(*options, out); });
}

void AddSchema(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<ListingOptions>();
  CLI::App& command =
      AddListing(line, "schema", "shows columns, indexes and relationships of the tables", options,
                 [options, &out] { return Schema(*options, out); });
  AddTableOperand(command, *options);
}

void AddDump(tools::CommandLine& line, std::ostream& out, std::ostream& errors) {
  const auto options = std::make_shared<ListingOptions>();
  CLI::App& command =
      AddListing(line, "dump", "prints a whole database, or some tables, as JSON", options,
                 [options, &out, &errors] { return Dump(*options, out, errors); });
  AddTableOperand(command, *options);
  command.footer(
      "What is damaged is left out, named in the member \"damage\" at the end and, a line each, on "
      "standard\nerror; the exit code is then 1, and everything that can be read is there all the "
      "same.");
}

}  // namespace rdv
