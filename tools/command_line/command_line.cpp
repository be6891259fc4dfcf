#include "tools/command_line/command_line.h"

#include <algorithm>
#include <ostream>
#include <set>

#include "runtime/environment.h"
#include "tools/command_line/standard_output.h"
#include "tools/command_line/suggestion.h"

namespace rdv::tools {
namespace {

constexpr size_t kColumnOfPurposes = 30;
constexpr size_t kWidthOfWords = 18;

class Formatter : public CLI::Formatter {
 public:
  std::set<const CLI::Option*> needed;

  std::string make_option_usage(const CLI::Option* word) const override {
    const std::string text = CLI::Formatter::make_option_usage(word);
    const bool in_brackets = text.starts_with('[') && text.ends_with(']');
    return in_brackets && needed.contains(word) ? text.substr(1, text.size() - 2) : text;
  }
};

bool IsHelp(const std::string& word) {
  return word == "--help" || word == "-h";
}

bool IsOption(const std::string& word) {
  return word.size() > 1 && word[0] == '-';
}

// An option is meant by what begins with a dash, a command or a topic by what does not.
std::string MeantInstead(const std::string& word, std::span<const std::string> known) {
  std::vector<std::string> alike;
  for (const std::string& candidate : known) {
    if (IsOption(candidate) == IsOption(word)) alike.push_back(candidate);
  }
  const std::string nearest = Nearest(word, alike);
  return nearest.empty() || nearest == word ? "" : ": did you mean '" + nearest + "'?";
}

std::string Row(const std::string& word, const std::string& purpose) {
  std::string row = "  " + word;
  row.resize(std::max(row.size() + 2, kWidthOfWords), ' ');
  return row + purpose + '\n';
}

std::vector<std::string> OptionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// What of the word can be shown.
std::string Quotable(const std::string& word) {
  std::string shown = "'";
  for (const char byte : word) shown += static_cast<unsigned char>(byte) < 0x80 ? byte : '?';
  return shown + "'";
}

// What may lie behind a file that cannot be used and that nobody named.
std::string WithEnvironment() {
  const Text in_force = EnvironmentInForce();
  return in_force.empty() ? "" : "the environment has " + ToUtf8(in_force) + '\n';
}

// The option that was given a value and takes none; "" without one.
std::string FlagWithValue(std::span<const std::string> words, const CLI::App& app) {
  for (const std::string& word : words) {
    const std::string name = word.substr(0, word.find('='));
    if (name.size() == word.size() || !IsOption(word)) continue;
    const CLI::Option* const option = app.get_option_no_throw(name);
    if (option != nullptr && option->get_items_expected_max() == 0) return name;
  }
  return "";
}

// What CLI11 found wrong, in our words where its own do not name what to do.
std::string Explain(const CLI::ParseError& error, const CLI::App& app) {
  // What nothing has taken. A misspelt option is the cause when a word seems to be missing, too.
  for (const std::string& word : app.remaining()) {
    if (!IsOption(word)) continue;
    const std::string name = word.substr(0, word.find('='));
    return "unknown option '" + name + "'" + MeantInstead(name, OptionsOf(app));
  }
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && app.remaining_size() > 0)
    return "'" + app.remaining().front() + "' is one word too many";
  std::string text = error.what();
  constexpr std::string_view kMissing = " is required";
  if (text.ends_with(kMissing)) {
    text.resize(text.size() - kMissing.size());
    return text + " is missing";
  }
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

}  // namespace

std::string Described(const RuntimeError& error) {
  return ToUtf8(error.Description()) + " (error " + std::to_string(error.Number()) + ", " +
         ToUtf8(error.Source()) + ")";
}

CommandLine::CommandLine(std::string program, std::string purpose)
    : program_(std::move(program)), purpose_(std::move(purpose)) {}

CLI::App& CommandLine::AddCommand(const std::string& word, const std::string& purpose, Run run) {
  const std::string name = word.empty() ? program_ : program_ + " " + word;
  auto app = std::make_unique<CLI::App>(purpose, name);
  app->allow_windows_style_options(false);  // the same words on every system
  app->set_help_flag("-h,--help", "Print this and end");
  const auto formatter = std::make_shared<Formatter>();
  formatter->column_width(kColumnOfPurposes);
  for (const char* label : {"REQUIRED", "TEXT", "INT", "UINT", "FLOAT"})
    formatter->label(label, "");
  formatter->label("Positionals", "Words");
  app->formatter(formatter);
  commands_.push_back({word, purpose, std::move(app), std::move(run), nullptr});
  return *commands_.back().app;
}

CLI::App& CommandLine::Add(const std::string& word, const std::string& purpose, Run run) {
  return AddCommand(word, purpose, std::move(run));
}

CLI::App& CommandLine::AddOnly(Run run) {
  has_commands_ = false;
  return AddCommand("", purpose_, std::move(run));
}

void CommandLine::AddTopic(const std::string& word, const std::string& purpose, std::string text) {
  topics_.push_back({word, purpose, std::move(text)});
}

void CommandLine::TakeRest(CLI::App& command, size_t operands, std::vector<std::string>& rest,
                           const std::string& name, const std::string& description) {
  for (Command& known : commands_) {
    if (known.app.get() != &command) continue;
    known.rest = std::make_unique<Rest>(Rest{operands, &rest, {}});
    command.add_option(name, known.rest->shown, description);
  }
}

void CommandLine::ShowAsNeeded(CLI::App& command, const CLI::Option* word) {
  dynamic_cast<Formatter&>(*command.get_formatter()).needed.insert(word);
}

int CommandLine::Execute(std::span<const std::string> arguments, std::ostream& out,
                         std::ostream& errors) {
  current_ = program_;
  try {
    for (const std::string& word : arguments) {
      if (!IsUtf8(word)) throw UsageError(Quotable(word) + " is not UTF-8");
    }
    const int code = Dispatch(arguments, out);
    out.flush();
    return code;
  } catch (const ReaderGone&) {
    return kDone;
  } catch (const UsageError& error) {
    errors << current_ << ": " << error.what() << " (see " << current_ << " --help)\n";
    return kUsage;
  } catch (const Refusal& error) {
    errors << current_ << ": " << error.what() << '\n';
    return kFindings;
  } catch (const OutputError& error) {
    errors << current_ << ": the output cannot be written: " << error.what() << '\n';
    return kUnusable;
  } catch (const RuntimeError& error) {
    errors << current_ << ": " << Described(error) << '\n' << WithEnvironment();
    return kUnusable;
  } catch (const std::exception& error) {
    errors << current_ << ": " << error.what() << '\n' << WithEnvironment();
    return kUnusable;
  }
}

int CommandLine::Dispatch(std::span<const std::string> arguments, std::ostream& out) {
  if (!arguments.empty() && arguments[0] == "--version") {
    if (arguments.size() > 1) throw UsageError("'" + arguments[1] + "' is one word too many");
    out << program_ << " " << RDV_VERSION << '\n';
    return kDone;
  }
  if (!arguments.empty() && arguments[0] == "help") return Help(arguments.subspan(1), out);
  if (!has_commands_) return RunCommand(commands_.front(), arguments, out);
  if (arguments.empty()) {
    std::string words;
    for (const Command& command : commands_) words += (words.empty() ? "" : ", ") + command.word;
    throw UsageError("a command is missing: " + words);
  }
  if (IsHelp(arguments[0])) return Help(arguments.subspan(1), out);
  for (Command& command : commands_) {
    if (command.word == arguments[0]) return RunCommand(command, arguments.subspan(1), out);
  }
  const std::string& word = arguments[0];
  const char* const kind = IsOption(word) ? "unknown option '" : "unknown command '";
  throw UsageError(kind + word + "'" + MeantInstead(word, Words()));
}

int CommandLine::RunCommand(Command& command, std::span<const std::string> arguments,
                            std::ostream& out) {
  current_ = command.app->get_name();
  size_t read = arguments.size();
  if (command.rest) {
    size_t operands = 0;
    size_t next = 0;
    while (next < arguments.size() && operands < command.rest->operands &&
           !IsHelp(arguments[next])) {
      if (!IsOption(arguments[next++])) ++operands;
    }
    if (operands == command.rest->operands) {
      // Behind the last operand an only "--help" asks for help, as everywhere.
      const bool asks = arguments.size() == next + 1 && IsHelp(arguments[next]);
      if (!asks) read = next;
      command.rest->words->assign(arguments.begin() + static_cast<ptrdiff_t>(read),
                                  arguments.end());
    }
  }
  std::vector<std::string> words(arguments.begin(),
                                 arguments.begin() + static_cast<ptrdiff_t>(read));
  std::reverse(words.begin(), words.end());  // the order that CLI11 takes them in
  if (const std::string flag = FlagWithValue(words, *command.app); !flag.empty())
    throw UsageError("'" + flag + "' takes no value");
  try {
    command.app->parse(words);
  } catch (const CLI::CallForHelp&) {
    out << command.app->help();
    if (!has_commands_) out << Overview();
    return kDone;
  } catch (const CLI::ParseError& error) {
    throw UsageError(Explain(error, *command.app));
  }
  return command.run();
}

int CommandLine::Help(std::span<const std::string> words, std::ostream& out) const {
  if (words.size() > 1) throw UsageError("'" + words[1] + "' is one word too many");
  if (words.empty() || IsHelp(words[0]) || words[0] == "help") {
    if (!has_commands_) out << commands_.front().app->help();
    out << Overview();
    return kDone;
  }
  for (const Topic& topic : topics_) {
    if (topic.word != words[0]) continue;
    out << topic.text;
    return kDone;
  }
  const Command* const command = Find(words[0]);
  if (command == nullptr) {
    throw UsageError("no help on '" + words[0] + "'" + MeantInstead(words[0], Words()));
  }
  out << command->app->help();
  return kDone;
}

const CommandLine::Command* CommandLine::Find(const std::string& word) const {
  for (const Command& command : commands_) {
    if (has_commands_ && command.word == word) return &command;
  }
  return nullptr;
}

std::vector<std::string> CommandLine::Words() const {
  std::vector<std::string> words;
  if (has_commands_) {
    for (const Command& command : commands_) words.push_back(command.word);
  }
  for (const Topic& topic : topics_) words.push_back(topic.word);
  words.insert(words.end(), {"help", "--help", "--version"});
  return words;
}

// What help without a word prints; for a program without commands, what follows its options.
std::string CommandLine::Overview() const {
  std::string text;
  if (has_commands_) {
    text = program_ + " " + RDV_VERSION + ": " + purpose_ + "\n\nUsage: " + program_ +
           " COMMAND [WORDS AND OPTIONS]\n\nCommands:\n";
    for (const Command& command : commands_) text += Row(command.word, command.purpose);
  }
  text += "\nMore:\n";
  if (has_commands_) text += Row("help COMMAND", "tells all of one command");
  for (const Topic& topic : topics_) text += Row("help " + topic.word, topic.purpose);
  text += Row("--version", "prints the version");
  return text +
         "\nExit codes: 0 done, 1 findings or refusals, 2 wrong words, 3 what was named cannot be "
         "used.\n";
}

CLI::Validator NotEmpty() {
  return CLI::Validator(
      [](std::string& text) { return text.empty() ? "must not be empty" : std::string(); }, "");
}

}  // namespace rdv::tools
