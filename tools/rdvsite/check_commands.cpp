// Whether a database is as it has to be, and making it so.
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <ostream>

#include "data/jet/check/check.h"
#include "data/jet/check/repair.h"
#include "data/jet/file/database_copy.h"
#include "data/jet/file/file.h"
#include "data/jet/format/errors.h"
#include "tools/command_line/standard_output.h"
#include "tools/database_file/missing_parts.h"
#include "tools/database_file/temporary_copy.h"
#include "tools/rdvsite/commands.h"
#include "tools/rdvsite/database.h"

namespace rdv {
namespace {

struct CheckOptions {
  std::string file;
  bool file_only = false;
};

struct RepairOptions {
  std::string file;
  std::string copy;
  bool dry_run = false;
};

void Print(const std::vector<jet::Finding>& findings, const char* prefix, std::ostream& out) {
  for (const jet::Finding& finding : findings) {
    out << prefix << ToUtf8(jet::KindName(finding.kind)) << ", page " << finding.page << ": "
        << ToUtf8(finding.text) << '\n';
  }
}

void PrintSummary(const jet::CheckReport& report, std::ostream& out) {
  out << (report.Clean() ? "sound: " : "not sound: ") << report.pages << " pages ("
      << report.free_pages << " free), " << report.tables << " tables, " << report.rows << " rows, "
      << report.index_entries << " index entries\n";
}

// What a check found, and what of the control's needs is not there.
struct Verdict {
  jet::CheckReport file;
  std::vector<std::string> missing;
};

Verdict Examine(const Text& path, bool file_only) {
  const auto engine = OpenDatabase(path);
  try {
    const jet::Engine::ReadScope scope(*engine);
    Verdict verdict;
    verdict.file = jet::CheckFile(engine->File());
    try {
      if (!file_only) verdict.missing = MissingParts(*engine, Links::Allowed);
    } catch (const RuntimeError& error) {
      // Of a damaged catalog, which is among the findings already.
      verdict.missing = {"whether all is there cannot be told: " + Described(error)};
    }
    if (!scope.StillValid()) jet::RaiseFileInUse(path);
    return verdict;
  } catch (const RuntimeError& error) {
    throw std::runtime_error(Explained(error, path));
  }
}

int Check(const CheckOptions& options, std::ostream& out) {
  const Verdict verdict = Examine(DatabasePath(options.file), options.file_only);
  Print(verdict.file.findings, "", out);
  for (const std::string& what : verdict.missing) out << "the control needs more: " << what << '\n';
  PrintSummary(verdict.file, out);
  return verdict.file.Clean() && verdict.missing.empty() ? tools::kDone : tools::kFindings;
}

std::string Now() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H%M%S", std::localtime(&now));
  return text.data();
}

// Beside the file: "NewDB before repair 2011-03-14 150926.mdb", with a number where that is taken.
Text NameForCopy(const Text& path) {
  const std::filesystem::path file(path);
  const std::u16string stem =
      (file.parent_path() / file.stem()).u16string() + u" before repair " + FromUtf8(Now());
  Text name = stem + file.extension().u16string();
  for (int64_t number = 2; std::filesystem::exists(std::filesystem::path(name)); ++number)
    name = stem + u"-" + Decimal(number) + file.extension().u16string();
  return name;
}

// Whatever state the file was left in: that is what is to be mended.
void CopyForRepair(const Text& path, const Text& copy) {
  jet::CopyDatabase(jet::NativeFileSystem(), path, copy, jet::EngineOptions().lock_wait,
                    jet::Suspects::Read);
}

int Mend(const Text& path, const char* prefix, std::ostream& out) {
  const jet::RepairReport report =
      jet::RepairDatabase(jet::NativeFileSystem(), path, jet::EngineOptions().lock_wait);
  Print(report.mended, prefix, out);
  Print(report.remaining.findings, "remains: ", out);
  PrintSummary(report.remaining, out);
  return report.remaining.Clean() ? tools::kDone : tools::kFindings;
}

void Remove(const Text& path) {
  std::error_code ignored;
  std::filesystem::remove(std::filesystem::path(path), ignored);
}

// The error with the one file's name in place of the other's.
RuntimeError About(const Text& file, const Text& instead_of, const RuntimeError& error) {
  Text description = error.Description();
  const size_t at = description.find(instead_of);
  if (at != Text::npos) description.replace(at, instead_of.size(), file);
  return {error.Number(), description, error.Source()};
}

int RepairCopy(const Text& path, const Text& copy, std::ostream& out) {
  CopyForRepair(path, copy);
  try {
    const int code = Mend(copy, "mended: ", out);
    tools::RequireTold(out, "the copy is made");
    return code;
  } catch (const RuntimeError& error) {
    // A copy that cannot be mended is of no use, and what is wrong with it is wrong with the file.
    Remove(copy);
    throw About(path, copy, error);
  }
}

// Tells where the file lies as it was, before anything is done to it.
void TellCopy(const Text& copy, std::ostream& out) {
  try {
    out << "the file as it was: " << ToUtf8(copy) << '\n';
    out.flush();
  } catch (const tools::OutputError& error) {
    Remove(copy);
    throw std::runtime_error("nothing is changed; the output cannot be written: " +
                             std::string(error.what()));
  }
}

int RepairFile(const Text& path, const RepairOptions& options, std::ostream& out) {
  if (!options.copy.empty()) return RepairCopy(path, FromUtf8(options.copy), out);
  const Verdict verdict = Examine(path, true);
  if (verdict.file.Clean()) {
    out << "nothing to mend\n";
    PrintSummary(verdict.file, out);
    return tools::kDone;
  }
  if (options.dry_run) {
    const TemporaryCopy copy(path, jet::Suspects::Read);
    out << "nothing is changed; the repair would do this:\n";
    return Mend(copy.Path(), "would be mended: ", out);
  }
  const Text copy = NameForCopy(path);
  CopyForRepair(path, copy);
  TellCopy(copy, out);
  const int code = Mend(path, "mended: ", out);
  tools::RequireTold(out);
  return code;
}

int Repair(const RepairOptions& options, std::ostream& out) {
  if (options.dry_run && !options.copy.empty())
    throw tools::UsageError("--dry-run changes nothing and --to makes a file: one of them");
  const Text path = DatabasePath(options.file);
  try {
    return RepairFile(path, options, out);
  } catch (const RuntimeError& error) {
    // What is wrong with the copy is not wrong with the file.
    const Text copy = FromUtf8(options.copy);
    const bool about_copy = !copy.empty() && error.Description().find(copy) != Text::npos;
    if (!about_copy) throw std::runtime_error(Explained(error, path));
    throw std::runtime_error(
        (IsMissingRight(error) ? Quoted(copy) + " cannot be made there. " : "") + Described(error));
  }
}

}  // namespace

void AddCheck(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App& command =
      line.Add("check", "reads the whole file and says what is wrong with it, or missing in it",
               [options, &out] { return Check(*options, out); });
  AddFileOperand(command, options->file);
  command.add_flag("--file-only", options->file_only,
                   "Whether the file is sound, whatever tables it holds");
  command.footer(
      "A line for each finding: what, on which page, and what it is about; then what the control "
      "needs and\ndoes not find; then the summary. Exit code 0: sound, and the control finds all "
      "that it needs;\n1: something was found; 3: the file cannot be opened.");
}

void AddRepair(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<RepairOptions>();
  CLI::App& command = line.Add("repair", "mends what can be mended without guessing",
                               [options, &out] { return Repair(*options, out); });
  AddFileOperand(command, options->file);
  command.add_option("--to", options->copy, "Mends a copy of this name and leaves FILE alone")
      ->type_name("COPY")
      ->check(tools::NotEmpty());
  command.add_flag("--dry-run", options->dry_run, "Says what would be done and changes nothing");
  command.footer(
      "Without --to, the file as it is is copied beside itself first. Maps, counts, indexes and "
      "the "
      "like follow\nfrom the rows and are made anew; what cannot be told from them stays as it is "
      "and is listed as remaining.\nExit code 0: sound now; 1: something remains; 3: the file "
      "cannot be opened or written.");
}

}  // namespace rdv
