#include "tests/scenarios/playing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

namespace rdv::test {
namespace {

namespace fs = std::filesystem;

// What ends a script's answers. No configuration has this number, and no script asks for cards
// twice and then for lines.
constexpr std::string_view kPrintMark = "\ncards -32768\ncards -32768\nlines -32768\n";
constexpr std::array<std::string_view, 3> kMark = {"{\"cards\":[]}", "{\"cards\":[]}",
                                                   "{\"lines\":[]}"};

// As it stands inside a JSON string.
std::string Escaped(const fs::path& path) {
  std::string escaped;
  for (const char byte : path.string()) {
    if (byte == '\\') escaped += '\\';
    escaped += byte;
  }
  return escaped;
}

std::string ReplaceAll(std::string text, std::string_view what, std::string_view with) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

std::string Neutral(std::string answer, const SiteFiles& site) {
  for (const fs::path& file : {site.DatabaseFile(), site.SettingsFile()}) {
    const std::string relative = file.lexically_relative(site.Folder()).generic_string();
    answer = ReplaceAll(std::move(answer), Escaped(file), "SITE/" + relative);
  }
  return answer;
}

void TakeAnswers(const std::vector<Script>& scripts, Played& played) {
  auto script = scripts.begin();
  for (const std::string& line : LinesOf("answers")) {
    if (script == scripts.end()) break;
    std::vector<std::string>& answers = played.answers[script->name];
    answers.push_back(Neutral(line, *script->site));
    if (answers.size() < kMark.size()) continue;
    const auto mark = answers.end() - static_cast<ptrdiff_t>(kMark.size());
    if (std::equal(kMark.begin(), kMark.end(), mark)) {
      answers.erase(mark, answers.end());
      ++script;
    }
  }
}

}  // namespace

std::vector<std::string> LinesOf(const fs::path& file) {
  std::vector<std::string> lines;
  std::ifstream in(file, std::ios::binary);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string ContentsOf(const fs::path& file) {
  std::ostringstream contents;
  contents << std::ifstream(file, std::ios::binary).rdbuf();
  return contents.str();
}

Played Play(const fs::path& player, const std::vector<Script>& scripts) {
  const TemporaryFolder folder;
  const fs::path before = fs::current_path();
  std::string command = '"' + fs::absolute(player).make_preferred().string() + '"';
  fs::current_path(folder.Path());
  for (const Script& script : scripts) {
    std::ofstream(script.name + ".rdv", std::ios::binary)
        << "site \"" << Escaped(script.site->Folder()) << "\"\n"
        << script.text << kPrintMark;
    command += ' ' + script.name + ".rdv";
  }
  command += " >answers 2>errors";
#ifdef _WIN32
  command = '"' + command + '"';  // the command processor takes one pair of quotes away
#endif
  Played played;
  played.status = std::system(command.c_str());
  played.errors = ContentsOf("errors");
  TakeAnswers(scripts, played);
  fs::current_path(before);
  return played;
}

}  // namespace rdv::test
