#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "data/jet/dump/json_writer.h"
#include "data/jet/format/errors.h"
#include "data/jet/sql/jet_connection.h"
#include "data/jet/sql/parameters.h"
#include "data/jet/sql/statement_parser.h"
#include "data/jet/sql/syntax_error.h"
#include "tools/command_line/standard_output.h"
#include "tools/command_line/suggestion.h"
#include "tools/rdvsite/commands.h"
#include "tools/rdvsite/database.h"
#include "tools/rdvsite/refused_values.h"

namespace rdv {
namespace {

constexpr const char* kGrammar =
    "Statements:\n"
    "  SELECT [DISTINCT] [TOP number] item, ... FROM table [WHERE condition]\n"
    "         [ORDER BY name [ASC | DESC], ...]\n"
    "  UPDATE table SET name = operand, ... [WHERE condition]\n"
    "  INSERT INTO table [(name, ...)] VALUES (operand, ...)\n"
    "  DELETE FROM table [WHERE condition]\n"
    "\n"
    "  item       * | table.* | COUNT(*) | operand\n"
    "  condition  operand = | <> | < | <= | > | >= operand | operand IS [NOT] NULL\n"
    "             | operand [NOT] IN (operand, ...) | operand [NOT] LIKE operand\n"
    "             | operand [NOT] BETWEEN operand AND operand\n"
    "             | NOT condition | condition AND | OR condition | (condition)\n"
    "  operand    name | table.name | 12 | -1.5 | 'text' | \"text\" | #2011-03-14# | TRUE | FALSE "
    "| "
    "NULL\n"
    "\n"
    "LIKE knows the wildcards % (any text), _ (one character) and [a-z].\n"
    "Keywords are known in either case. A name that is a keyword, or holds other characters than\n"
    "letters, digits and \"_\", is written in [brackets] or `backquotes`.\n"
    "\n"
    "Parameters: every name that is no column of the table is one. They take the words behind the\n"
    "statement in the order in which they stand there first; \\N is Null, '' an empty text. Each "
    "is\n"
    "converted to the type of the column that it is compared with or written to.\n"
    "\n"
    "Prints each row as a line of JSON, or the number of rows written.\n"
    "\n"
    "  rdvsite sql NewDB.mdb \"SELECT Line, Volume_Name FROM Used_Lines WHERE Config_ID = 1\"\n"
    "  rdvsite sql NewDB.mdb \"SELECT * FROM Used_Lines WHERE Config_ID = c AND Line = l\" 1 12\n"
    "  rdvsite sql NewDB.mdb \"UPDATE Used_Lines SET Description = d WHERE Config_ID = 1 AND Line "
    "= 2\" "
    "\\\n"
    "          \"Spare parts\"\n"
    "  rdvsite sql NewDB.mdb \"DELETE FROM Used_Cards WHERE Config_ID = c\" -1";

struct SqlOptions {
  std::string file;
  std::string statement;
  std::vector<std::string> arguments;
};

std::string Listed(const std::vector<Text>& names) {
  std::string list;
  for (const Text& name : names) list += (list.empty() ? "" : ", ") + Quoted(name);
  return list;
}

// A name without a value, and the column that may have been meant.
std::string WithoutValue(const Text& name, const jet::TableDefinition& table) {
  std::vector<std::string> columns;
  for (const jet::Column& column : table.columns) columns.push_back(ToUtf8(column.name));
  const std::string nearest = tools::Nearest(ToUtf8(name), columns);
  return Quoted(name) + " is no column of " + ToUtf8(table.name) + " and has no value" +
         (nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

// As many arguments as parameters: what is missing is a name that is misspelt as a rule, and what
// is too much was meant for something.
void RequireArguments(const jet::sql::Statement& statement, const jet::TableDefinition& table,
                      const SqlOptions& options) {
  const std::vector<Text> parameters = jet::sql::ParametersOf(statement, table);
  const size_t given = options.arguments.size();
  if (given > parameters.size()) {
    throw tools::UsageError("'" + options.arguments[parameters.size()] +
                            "' is one argument too many: the statement takes " +
                            (parameters.empty() ? "none" : Listed(parameters)));
  }
  if (given == parameters.size()) return;
  std::string names;
  for (size_t i = given; i < parameters.size(); ++i)
    names += (names.empty() ? "" : "; ") + WithoutValue(parameters[i], table);
  try {
    jet::RaiseMissingParameter();
  } catch (const RuntimeError& error) {
    throw tools::Refusal(names + ". " + Described(error));
  }
}

// The statement with a mark below the place.
std::string Shown(const jet::sql::SyntaxError& error, const std::string& statement) {
  const Text& unexpected = error.Unexpected();
  return (unexpected.empty() ? "the statement ends too early, after "
                             : Quoted(unexpected) + " was not expected at ") +
         std::string("character ") +
         std::to_string(error.Position() + (unexpected.empty() ? 0 : 1)) + " of \"" + statement +
         "\". " + Described(error);
}

void PrintRows(const RowTable& table, std::ostream& out) {
  const std::function<void(std::string_view)> writer = [&out](std::string_view text) {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    tools::StopWithoutReader(out);
  };
  jet::JsonWriter json(writer);
  for (const std::vector<Value>& row : table.rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      json.Raw(i == 0 ? "{" : ",");
      json.String(table.columns[i]);
      json.Raw(":");
      json.Field(row[i]);
    }
    json.Raw("}\n");
  }
  json.Flush();
}

std::vector<Argument> ArgumentsOf(const SqlOptions& options) {
  std::vector<Argument> values;
  for (const std::string& argument : options.arguments)
    values.push_back(argument == "\\N" ? Argument() : Argument(FromUtf8(argument)));
  return values;
}

// What the engine's error does not say: which column it is about, and which value.
std::string WithRefusedValues(const RuntimeError& error, const Text& path,
                              const SqlOptions& options) {
  std::string refused;
  try {
    const jet::sql::Statement statement = jet::sql::ParseStatement(FromUtf8(options.statement));
    const auto engine = OpenDatabase(path);
    const jet::Engine::ReadScope scope(*engine);
    const jet::TableDefinition& table = engine->Table(jet::sql::TableOf(statement));
    refused = RefusedValues(statement, table, ArgumentsOf(options), error);
  } catch (const std::exception&) {
    // The table lies in another file, or the statement is none: the error says it all.
  }
  return (refused.empty() ? "" : refused + ". ") + Explained(error, path);
}

CommandResult Execute(const Text& path, const SqlOptions& options) {
  const Text text = FromUtf8(options.statement);
  try {
    const jet::sql::Statement statement = jet::sql::ParseStatement(text);
    const auto engine = OpenDatabase(path);
    {
      const jet::Engine::ReadScope scope(*engine);
      // The columns of a linked table stand in another file.
      const Text& table = jet::sql::TableOf(statement);
      if (!engine->Link(table)) RequireArguments(statement, engine->Table(table), options);
    }
    engine->Close();
    const auto connection = jet::OpenJetConnection(path);
    CommandResult result = connection->Execute(text, ArgumentsOf(options));
    connection->Close();
    return result;
  } catch (const jet::sql::SyntaxError& error) {
    throw tools::Refusal(Shown(error, options.statement));
  } catch (const RuntimeError& error) {
    if (IsAboutFile(error, path)) throw std::runtime_error(Explained(error, path));
    throw tools::Refusal(WithRefusedValues(error, path, options));
  }
}

int Sql(const SqlOptions& options, std::ostream& out) {
  const CommandResult result = Execute(DatabasePath(options.file), options);
  if (result.rows) {
    PrintRows(*result.rows, out);
  } else {
    out << result.rows_written << '\n';
    tools::RequireTold(out);
  }
  return tools::kDone;
}

}  // namespace

void AddSql(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<SqlOptions>();
  CLI::App& command = line.Add("sql", "runs one SELECT, UPDATE, INSERT or DELETE",
                               [options, &out] { return Sql(*options, out); });
  AddFileOperand(command, options->file);
  command.add_option("STATEMENT", options->statement, "In the language below")->required();
  line.TakeRest(command, 2, options->arguments, "ARGUMENT", "The values of its parameters");
  command.footer(kGrammar);
}

}  // namespace rdv
