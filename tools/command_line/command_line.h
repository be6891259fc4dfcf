// The words that a program of ours understands, its help, and what it says of words that it does
// not understand. The options of each command are CLI11's.
//
// Every program answers alike:
//   -h, --help, help             what it does and its commands        standard output, exit code 0
//   COMMAND --help, help COMMAND one command                          likewise
//   --version                    its name and version                 likewise
//   a wrong word                 one line that names it and what may have been meant, exit code 2
//   output that does not arrive  one line with the system's text, exit code 3
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/error.h"
#include "tools/command_line/exit_codes.h"

namespace rdv::tools {

// Raised by a command for words that make no sense together; what() names the word. Exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Raised by a command that cannot do what it was asked for, while what was named can be used. Exit
// code 1. Every other exception ends a command with kUnusable.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "description (error number, source)": what every program prints of such an error.
std::string Described(const RuntimeError& error);

class CommandLine {
 public:
  // Gives the exit code. Called after the words were read into the variables of the options.
  using Run = std::function<int()>;

  // `purpose` is one line without a stop: "makes, shows and checks site databases".
  CommandLine(std::string program, std::string purpose);

  // Adds a command; its operands and options are added to the result, which lives as long as this.
  // Help lists commands in the order in which they were added.
  CLI::App& Add(const std::string& word, const std::string& purpose, Run run);
  // For a program that has no commands, in place of Add().
  CLI::App& AddOnly(Run run);
  // A page of `help WORD` that belongs to no command.
  void AddTopic(const std::string& word, const std::string& purpose, std::string text);
  // The last words of `command` come into `rest` as they are, also those that begin with a dash:
  // all that follow the first `operands` words. Help shows them as [`name`...].
  void TakeRest(CLI::App& command, size_t operands, std::vector<std::string>& rest,
                const std::string& name, const std::string& description);
  // Help shows the word as one that has to be there. For a command that asks for it itself, because
  // words before it may be left out.
  static void ShowAsNeeded(CLI::App& command, const CLI::Option* word);

  // Runs what `arguments` (UTF-8, without the program's name) say and flushes `out`. Never raises.
  int Execute(std::span<const std::string> arguments, std::ostream& out, std::ostream& errors);

  // The words of all commands and topics, for completions and the like.
  std::vector<std::string> Words() const;

 private:
  struct Rest {
    size_t operands = 0;
    std::vector<std::string>* words = nullptr;
    std::vector<std::string> shown;  // what CLI11 would read into; stays empty
  };
  struct Command {
    std::string word;
    std::string purpose;
    std::unique_ptr<CLI::App> app;
    Run run;
    std::unique_ptr<Rest> rest;
  };
  struct Topic {
    std::string word;
    std::string purpose;
    std::string text;
  };

  CLI::App& AddCommand(const std::string& word, const std::string& purpose, Run run);
  int Dispatch(std::span<const std::string> arguments, std::ostream& out);
  int RunCommand(Command& command, std::span<const std::string> arguments, std::ostream& out);
  int Help(std::span<const std::string> words, std::ostream& out) const;
  const Command* Find(const std::string& word) const;
  std::string Overview() const;

  std::string program_;
  std::string purpose_;
  bool has_commands_ = true;
  std::vector<Command> commands_;
  std::vector<Topic> topics_;
  std::string current_;  // whose words are read, for the beginning of an error
};

// A check for CLI11: refuses "" for what names a file, a folder or a thing.
CLI::Validator NotEmpty();

}  // namespace rdv::tools
