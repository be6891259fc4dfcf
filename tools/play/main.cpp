// rdvplay: plays scenario scripts on a control and prints what its host and its user see.
#include <iostream>

#include "tools/command_line/command_line.h"
#include "tools/command_line/program.h"
#include "tools/play/commands.h"
#include "tools/play/player.h"

int rdv::tools::Program(std::span<const std::string> arguments, std::ostream& out,
                        std::ostream& errors) {
  play::Options options;
  CommandLine line("rdvplay", "plays scripts of what a user does and prints what he would see");
  CLI::App& program =
      line.AddOnly([&] { return static_cast<int>(play::PlayAll(options, std::cin, out, errors)); });
  program.add_option("SCRIPT", options.scripts, "A file with commands; - is standard input")
      ->required()
      ->check(NotEmpty());
  program
      .add_option("--site", options.site,
                  "The folder that plays the common application data folder in every script")
      ->type_name("DIR")
      ->check(NotEmpty());
  program.footer(
      "Each answer is a line of JSON. Exit code 0: played to the end, whatever it showed; 2: a "
      "script "
      "has a\nline that makes no command (SCRIPT:LINE: reason), or the words above make none.");
  line.AddTopic("script", "the commands that a script is made of", play::ScriptHelp());
  return line.Execute(arguments, out, errors);
}
