#include "tools/play/player.h"

#include <filesystem>
#include <fstream>
#include <iostream>

#include "tools/play/commands.h"

namespace rdv::play {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// `line_number` counts along, so that whoever catches an error knows where it is.
void Play(std::istream& script, const Options& options, std::ostream& out, int& line_number) {
  const std::unique_ptr<Driver> driver = MakeDriver();
  Answers answers(out);
  Commands commands(*driver, answers);
  if (options.site) driver->UseSite(FromUtf8(*options.site));
  for (std::string line; std::getline(script, line);) {
    ++line_number;
    std::string_view text = line;
    if (line_number == 1 && text.starts_with(kByteOrderMark)) {
      text.remove_prefix(kByteOrderMark.size());
    }
    if (const std::vector<Token> tokens = Tokenize(text); !tokens.empty()) commands.Run(tokens);
  }
}

ExitStatus PlayFile(const std::string& name, const Options& options, std::istream& in,
                    std::ostream& out, std::ostream& err) {
  int line_number = 0;
  try {
    if (name == "-") {
      Play(in, options, out, line_number);
      return ExitStatus::Played;
    }
    std::ifstream file(std::filesystem::path(FromUtf8(name)), std::ios::binary);
    if (!file) {
      err << "rdvplay: there is no script '" << name << "' that can be read\n";
      return ExitStatus::NoScript;
    }
    Play(file, options, out, line_number);
    return ExitStatus::Played;
  } catch (const ScriptError& error) {
    err << name << ':' << line_number << ": " << error.what() << '\n';
    return ExitStatus::ScriptError;
  }
}

}  // namespace

ExitStatus PlayAll(const Options& options, std::istream& in, std::ostream& out, std::ostream& err) {
  for (const std::string& script : options.scripts) {
    const ExitStatus status = PlayFile(script, options, in, out, err);
    if (status != ExitStatus::Played) return status;
  }
  return ExitStatus::Played;
}

}  // namespace rdv::play
