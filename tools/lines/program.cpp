#include "tools/lines/program.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "runtime/conversion.h"
#include "runtime/error.h"
#include "tools/command_line/command_line.h"
#include "tools/lines/columns.h"
#include "tools/lines/commands.h"

namespace rdv::lines {
namespace {

using tools::UsageError;

bool IsNumber(const std::string& word) {
  return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
}

int NumberIn(const std::string& word, const char* what) {
  try {
    if (IsNumber(word)) return CInt(FromUtf8(word));
  } catch (const RuntimeError&) {
    // Told below.
  }
  throw UsageError("'" + word + "' is no number of a " + what);
}

// "1-4,9" or "all"; all is no range.
std::vector<LineRange> LinesIn(const std::string& word) {
  std::vector<LineRange> ranges;
  if (word == "all") return ranges;
  for (size_t at = 0; at <= word.size();) {
    const size_t end = std::min(word.find(',', at), word.size());
    const std::string part = word.substr(at, end - at);
    const size_t dash = part.find('-');
    LineRange range;
    range.first = NumberIn(part.substr(0, dash), "line");
    if (range.first == 0) throw UsageError("lines are counted from 1");
    range.last = dash == std::string::npos ? range.first : NumberIn(part.substr(dash + 1), "line");
    if (range.last < range.first) throw UsageError("'" + part + "' runs backwards");
    ranges.push_back(range);
    at = end + 1;
  }
  return ranges;
}

Assignment AssignmentIn(const std::string& word) {
  const size_t equals = word.find('=');
  if (equals == std::string::npos) throw UsageError("'" + word + "' is no COLUMN=VALUE");
  const std::string name = word.substr(0, equals);
  const std::optional<int> column = ShownColumnNamed(FromUtf8(name));
  if (!column) {
    std::string known;
    for (const ShownColumn& shown : kShownColumns) {
      known += (known.empty() ? "" : ", ") + ToUtf8(CaptionOf(shown.column));
    }
    throw UsageError("'" + name + "' is no column; there are " + known);
  }
  return {*column, FromUtf8(word.substr(equals + 1))};
}

// The words of a command without its options: the site is the first one, unless that is a number.
class Words {
 public:
  explicit Words(const std::vector<std::string>& words) : words_(words) {}

  Selection TakeSite() {
    Selection selection;
    if (!words_.empty() && !IsNumber(words_.front())) selection.site = TakeText("SITE");
    return selection;
  }
  Text TakeText(const char* name) { return FromUtf8(Take(name)); }
  std::string Take(const char* name) {
    if (words_.empty()) throw UsageError(std::string(name) + " is missing");
    std::string word = words_.front();
    words_.erase(words_.begin());
    if (word.empty()) throw UsageError(std::string(name) + " must not be empty");
    return word;
  }
  int16_t TakeConfig() { return static_cast<int16_t>(NumberIn(Take("CONFIG"), "configuration")); }
  bool Empty() const { return words_.empty(); }
  size_t Count() const { return words_.size(); }
  void RequireEnd() const {
    if (!words_.empty()) throw UsageError("'" + words_.front() + "' is one word too many");
  }

 private:
  std::vector<std::string> words_;
};

// What the options and words of the command line are read into.
struct Given {
  std::vector<std::string> words;
  bool csv = false;
  bool json = false;
  bool dry_run = false;
  std::string file;
  std::string title = "Line configuration";

  Format ChosenFormat() const {
    if (csv && json) throw UsageError("'--csv' and '--json' exclude each other");
    return csv ? Format::Csv : json ? Format::Json : Format::Text;
  }
};

Selection SiteAndConfigs(const Given& given) {
  Words words(given.words);
  Selection selection = words.TakeSite();
  while (!words.Empty()) selection.configs.push_back(words.TakeConfig());
  return selection;
}

// Nothing stands for standard output, as a dash does.
std::optional<Text> FileIn(const Given& given) {
  if (given.file.empty() || given.file == "-") return std::nullopt;
  return FromUtf8(given.file);
}

int RunShow(const Given& given, const Surroundings& around) {
  return Show(SiteAndConfigs(given), given.ChosenFormat(), around);
}

int RunCheck(const Given& given, const Surroundings& around) {
  return Check(SiteAndConfigs(given), given.ChosenFormat(), around);
}

int RunExport(const Given& given, const Surroundings& around) {
  return Export(SiteAndConfigs(given), FileIn(given), around);
}

int RunReport(const Given& given, const Surroundings& around) {
  return Report(SiteAndConfigs(given), FileIn(given), FromUtf8(given.title), around);
}

int RunSet(const Given& given, const Surroundings& around) {
  Words words(given.words);
  Selection selection = words.TakeSite();
  selection.configs.push_back(words.TakeConfig());
  const std::vector<LineRange> lines = LinesIn(words.Take("LINES"));
  std::vector<Assignment> assignments;
  do {
    assignments.push_back(AssignmentIn(words.Take("COLUMN=VALUE")));
  } while (!words.Empty());
  return Set(selection, lines, assignments, given.dry_run, around);
}

int RunRestore(const Given& given, const Surroundings& around) {
  Words words(given.words);
  Selection selection = words.TakeSite();
  selection.configs.push_back(words.TakeConfig());
  const Text unit_type = words.TakeText("UNITTYPE");
  words.RequireEnd();
  return Restore(selection, unit_type, given.dry_run, around);
}

int RunImport(const Given& given, const Surroundings& around) {
  Words words(given.words);
  std::optional<Text> site;
  if (words.Count() > 1) site = words.TakeText("SITE");
  const Text file = words.TakeText("FILE");
  words.RequireEnd();
  return Import(site, file, given.dry_run, around);
}

int RunUndo(const Given& given, const Surroundings& around) {
  Words words(given.words);
  std::optional<Text> site;
  if (!words.Empty()) site = words.TakeText("SITE");
  words.RequireEnd();
  return Undo(site, given.dry_run, around);
}

int RunCompare(const Given& given, const Surroundings& around) {
  Words words(given.words);
  const Text left = words.TakeText("SITE1");
  const Text right = words.TakeText("SITE2");
  words.RequireEnd();
  return Compare(left, right, given.ChosenFormat(), around);
}

constexpr const char* kSiteTopic =
    "SITE is the folder that plays the common application data folder (the database is\n"
    "Tolvane/ORVANT+/Database/NewDB.mdb in it), or the path of a database; its settings file is\n"
    "looked for in the folder above one named \"Database\", else beside it. Without SITE it is "
    "the\n"
    "one that the control finds on this machine.\n";

constexpr const char* kWritingTopic =
    "set, restore and import go through the editors of the control and save whole units, as Apply\n"
    "does: what saving changes besides is printed as \"saved with it\". Everything is written in "
    "one\n"
    "step or not at all. Before it the database is copied beside itself, NewDB-DATE-TIME.mdb "
    "(UTC);\n"
    "what undo needs lies in NewDB-DATE-TIME.undo.json. The newest ten of each are kept. A line "
    "that\n"
    "another program has changed between reading and writing is told with both values, and "
    "nothing\n"
    "is written then. --dry-run does all but the last step.\n";

std::string Joined(std::span<const std::string> words) {
  std::string joined;
  for (const std::string& word : words) {
    const bool quoted = word.empty() || word.find(' ') != std::string::npos;
    joined += (joined.empty() ? "" : " ") + (quoted ? '\'' + word + '\'' : word);
  }
  return joined;
}

struct Word {
  const char* name;
  const char* description;
  bool needed = true;
  bool repeated = false;
};

// Which of them are there is for the command to say: the site may be left out.
void AddWords(CLI::App& app, std::initializer_list<Word> words) {
  for (const Word& word : words) {
    const CLI::Option* const added =
        word.repeated ? app.add_option_function<std::vector<std::string>>(
                            word.name, [](const std::vector<std::string>&) {}, word.description)
                      : app.add_option_function<std::string>(
                            word.name, [](const std::string&) {}, word.description);
    if (word.needed) tools::CommandLine::ShowAsNeeded(app, added);
  }
}

// Those that were given, in their order.
std::vector<std::string> WordsOf(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_positional()) continue;
    const std::vector<std::string>& given = option->results();
    words.insert(words.end(), given.begin(), given.end());
  }
  return words;
}

constexpr Word kSite = {"SITE", "A site, as `help site` says", false};
constexpr Word kConfigs = {"CONFIG", "Configurations; without any, all that have lines", false,
                           true};
constexpr Word kConfig = {"CONFIG", "A configuration"};

}  // namespace

int RunLines(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors,
             bool on_terminal, std::function<void()> before_writing) {
  const Surroundings around{out, errors, on_terminal, std::move(before_writing),
                            FromUtf8(Joined(arguments))};
  Given given;
  tools::CommandLine line("rdvlines", "reads, checks and changes the lines of whole sites");

  // The command's own words are known when it runs.
  const auto add = [&](const char* word, const char* purpose, auto run,
                       std::initializer_list<Word> words) -> CLI::App& {
    const auto app = std::make_shared<CLI::App*>(nullptr);
    CLI::App& added = line.Add(word, purpose, [&given, &around, run, app] {
      given.words = WordsOf(**app);
      return run(given, around);
    });
    *app = &added;
    AddWords(added, words);
    return added;
  };
  const auto add_json = [&](CLI::App& app, const char* description) {
    app.add_flag("--json", given.json, description);
  };
  const auto add_dry_run = [&](CLI::App& app) {
    app.add_flag("-n,--dry-run", given.dry_run, "Do all but the last step: nothing is written");
  };
  const auto add_output = [&](CLI::App& app, const char* description) {
    return app.add_option("-o,--output", given.file, description)
        ->option_text("FILE")
        ->check(tools::NotEmpty());
  };

  CLI::App& show =
      add("show", "prints lines as the control shows them", RunShow, {kSite, kConfigs});
  show.add_flag("--csv", given.csv, "Print the table that import reads");
  add_json(show, "Print JSON, with the codes behind the captions");

  add_json(add("check", "finds what is stored and could not have been chosen", RunCheck,
               {kSite, kConfigs}),
           "Print JSON");

  add_dry_run(add("set", "changes cells through the editors of the control", RunSet,
                  {kSite,
                   kConfig,
                   {"LINES", "As 1-4,9 or all"},
                   {"CHANGES",
                    "COLUMN=VALUE...: a caption, and what a user picks or types there; done in the "
                    "order given",
                    true, true}}));

  add_dry_run(add(
      "restore", "sets a unit up anew, as \"Restore Default\" does", RunRestore,
      {kSite, kConfig, {"UNITTYPE", "As in the control's list: \"8 Hybrid Lines 2 MOH Lines\""}}));

  add_output(add("export", "writes a table for a spreadsheet", RunExport, {kSite, kConfigs}),
             "Write to a file, not to standard output (-)");

  add_dry_run(
      add("import", "reads such a table back, all of it or nothing", RunImport,
          {kSite,
           {"FILE",
            "A table as export writes it and spreadsheets save it (CSV, UTF-8); what is not "
            "in it stays as it is"}}));

  add_json(add("compare", "tells two sites apart, cell by cell", RunCompare,
               {{"SITE1", "A site, as `help site` says"}, {"SITE2", "Another"}}),
           "Print JSON");

  CLI::App& report =
      add("report", "writes one page for the file cabinet", RunReport, {kSite, kConfigs});
  add_output(report, "The page to write (HTML); - is standard output")->required();
  report.add_option("-t,--title", given.title, "The heading of the page")->option_text("TEXT");

  add_dry_run(add("undo", "takes the last change back", RunUndo, {kSite}));

  line.AddTopic("site", "which SITE is meant", kSiteTopic);
  line.AddTopic("writing", "what set, restore and import do to a database", kWritingTopic);
  return line.Execute(arguments, out, errors);
}

}  // namespace rdv::lines
