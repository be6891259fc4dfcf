#include "tools/rdvsite/tool.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string_view>
#include <vector>

#include "data/connection.h"
#include "data/jet/check/check.h"
#include "data/jet/check/repair.h"
#include "data/jet/dump/dump.h"
#include "data/jet/dump/json_writer.h"
#include "data/jet/engine.h"
#include "data/jet/file/file.h"
#include "data/jet/format/errors.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/conversion.h"
#include "runtime/error.h"
#include "tools/rdvsite/demonstration_site.h"

namespace rdv {
namespace {

using Arguments = std::span<const Text>;

constexpr const char* kUsageText =
    "usage: rdvsite create DIR [--configurations N]\n"
    "       rdvsite dump FILE [TABLE...]\n"
    "       rdvsite sql FILE STATEMENT [ARGUMENT...]\n"
    "       rdvsite check FILE\n"
    "       rdvsite repair FILE\n"
    "\n"
    "create   makes a demonstration site in DIR, which plays the common application data folder;\n"
    "         N is 1 to 32767, without it 3. Settings that are there are kept; a database that is\n"
    "         there is refused\n"
    "dump     prints a database as JSON, all its tables or those named\n"
    "sql      runs one SELECT, UPDATE, INSERT or DELETE; its parameters take the arguments in\n"
    "         their order, an argument \\N is Null. Prints each row as a line of JSON, or the\n"
    "         number of rows written\n"
    "check    reads the whole file and prints what is wrong with it\n"
    "repair   mends what can be mended without guessing\n";

// Raised for arguments that make no command.
struct UsageError {};

std::function<void(std::string_view)> WriterTo(std::ostream& out) {
  return [&out](std::string_view text) {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
  };
}

int Create(Arguments arguments, std::ostream& out) {
  int configurations = kDefaultConfigurations;
  if (arguments.size() == 3 && arguments[1] == u"--configurations") {
    if (!IsNumeric(arguments[2])) throw UsageError();
    const double number = CDbl(arguments[2]);
    if (!(number >= 1 && number <= kMaxConfigurations)) throw UsageError();
    configurations = static_cast<int>(number);
  } else if (arguments.size() != 1) {
    throw UsageError();
  }
  const std::filesystem::path database = CreateDemonstrationSite(arguments[0], configurations);
  out << ToUtf8(database.u16string()) << '\n';
  return kDone;
}

int Dump(Arguments arguments, std::ostream& out) {
  if (arguments.empty()) throw UsageError();
  const Text& path = arguments[0];
  const auto engine = jet::Engine::Open(path);
  const jet::Engine::ReadScope scope(*engine);
  const Text file_name = std::filesystem::path(path).filename().u16string();
  jet::DumpDatabase(engine->File(), {.file_name = file_name, .tables = arguments.subspan(1)},
                    WriterTo(out));
  if (!scope.StillValid()) jet::RaiseFileInUse(path);
  return kDone;
}

void PrintRows(const RowTable& table, std::ostream& out) {
  const std::function<void(std::string_view)> writer = WriterTo(out);
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

int Sql(Arguments arguments, std::ostream& out) {
  if (arguments.size() < 2) throw UsageError();
  std::vector<Argument> values;
  for (const Text& text : arguments.subspan(2))
    values.push_back(text == u"\\N" ? Argument() : Argument(text));
  const auto connection = jet::OpenJetConnection(arguments[0]);
  const CommandResult result = connection->Execute(arguments[1], values);
  connection->Close();
  if (result.rows) {
    PrintRows(*result.rows, out);
  } else {
    out << result.rows_written << '\n';
  }
  return kDone;
}

void Print(const std::vector<jet::Finding>& findings, const char* prefix, std::ostream& out) {
  for (const jet::Finding& finding : findings) {
    out << prefix << ToUtf8(jet::KindName(finding.kind)) << ", page " << finding.page << ": "
        << ToUtf8(finding.text) << '\n';
  }
}

int PrintReport(const jet::CheckReport& report, std::ostream& out) {
  Print(report.findings, "", out);
  out << (report.Clean() ? "sound: " : "not sound: ") << report.pages << " pages ("
      << report.free_pages << " free), " << report.tables << " tables, " << report.rows << " rows, "
      << report.index_entries << " index entries\n";
  return report.Clean() ? kDone : kFailed;
}

int Check(Arguments arguments, std::ostream& out) {
  if (arguments.size() != 1) throw UsageError();
  const auto engine = jet::Engine::Open(arguments[0]);
  const jet::Engine::ReadScope scope(*engine);
  const jet::CheckReport report = jet::CheckFile(engine->File());
  if (!scope.StillValid()) jet::RaiseFileInUse(arguments[0]);
  return PrintReport(report, out);
}

int Repair(Arguments arguments, std::ostream& out) {
  if (arguments.size() != 1) throw UsageError();
  const jet::RepairReport report =
      jet::RepairDatabase(jet::NativeFileSystem(), arguments[0], jet::EngineOptions().lock_wait);
  Print(report.mended, "mended: ", out);
  return PrintReport(report.remaining, out);
}

struct SubCommand {
  TextView name;
  int (*run)(Arguments, std::ostream&);
};
constexpr SubCommand kSubCommands[] = {
    {u"create", Create}, {u"dump", Dump}, {u"sql", Sql}, {u"check", Check}, {u"repair", Repair}};

int RunNamed(Arguments arguments, std::ostream& out) {
  if (!arguments.empty()) {
    for (const SubCommand& command : kSubCommands) {
      if (command.name == arguments[0]) return command.run(arguments.subspan(1), out);
    }
  }
  throw UsageError();
}

}  // namespace

int RunSiteTool(std::span<const Text> arguments, std::ostream& out, std::ostream& errors) {
  try {
    const int code = RunNamed(arguments, out);
    out.flush();
    return code;
  } catch (const UsageError&) {
    errors << kUsageText;
    return kUsage;
  } catch (const std::exception& error) {
    errors << error.what() << '\n';
    return kFailed;
  }
}

}  // namespace rdv
