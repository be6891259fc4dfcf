// The examples of the guide, run as they stand there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>

#include "tests/lines/lines_site.h"
#include "tests/support/sites/places.h"
#include "tools/rdvsite/demonstration_site.h"

namespace rdv::lines::test {
namespace {

struct Example {
  std::vector<std::string> words;
  std::string output;
  std::string command;
};

// A command line as a shell takes it apart, as far as the guide uses it.
std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words(1);
  bool quoted = false;
  for (const char unit : line) {
    if (unit == '"') {
      quoted = !quoted;
    } else if (unit == ' ' && !quoted) {
      words.emplace_back();
    } else {
      words.back() += unit;
    }
  }
  return words;
}

std::vector<Example> ExamplesIn(const std::string& guide) {
  const std::string prompt = "$ rdvlines ";
  std::vector<Example> examples;
  bool inside = false;
  for (const std::string& line : LinesOf(guide)) {
    if (line.starts_with("```")) {
      inside = line == "```console";
    } else if (inside && line.starts_with(prompt)) {
      examples.push_back({Words(line.substr(prompt.size())), "", line});
    } else if (inside) {
      examples.back().output += line + "\n";
    }
  }
  return examples;
}

// Without what tells the time.
std::string Timeless(const std::string& output) {
  const std::string copies =
      std::regex_replace(output, std::regex("NewDB-[0-9]{8}-[0-9]{6}-[0-9]{3}"), "NewDB-TIME");
  return std::regex_replace(copies, std::regex("[0-9-]{10} [0-9:]{8} UTC"), "TIME");
}

class InFolder {
 public:
  explicit InFolder(const std::filesystem::path& folder)
      : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
  }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;
  ~InFolder() { std::filesystem::current_path(before_); }

 private:
  const std::filesystem::path before_;
};

TEST(Guide, ShowsWhatTheProgramPrints) {
  const std::vector<Example> examples = ExamplesIn(ReadBytes(rdv::sites::Place("guide")));
  ASSERT_GE(examples.size(), 9u);
  const rdv::test::TemporaryFolder folder;
  const InFolder inside(folder.Path());
  CreateDemonstrationSite(u"site", 3);
  for (const Example& example : examples) {
    const Outcome outcome = RunWords(example.words);
    EXPECT_LE(outcome.code, 1) << example.command;
    EXPECT_EQ(Timeless(outcome.out + outcome.errors), Timeless(example.output)) << example.command;
  }
  EXPECT_TRUE(std::filesystem::exists("report.html"));
}

constexpr const char* kCommands[] = {"show",   "check",   "set",    "restore", "export",
                                     "import", "compare", "report", "undo"};

TEST(Guide, ThePageOfTheManualAndTheCompletionKnowEveryCommand) {
  const std::filesystem::path delivery = rdv::sites::Place("delivery");
  const std::string manual = ReadBytes(delivery / "rdvlines.1");
  const std::string completion = ReadBytes(delivery / "rdvlines.bash");
  for (const std::string command : kCommands) {
    EXPECT_NE(manual.find(".B rdvlines " + command), std::string::npos) << command;
    EXPECT_TRUE(std::regex_search(completion, std::regex("\\b" + command + "\\b"))) << command;
  }
}

#ifndef _WIN32

std::set<std::string> OptionsIn(const std::string& text) {
  std::set<std::string> options;
  const std::regex option("--[a-z-]+");
  for (std::sregex_iterator at(text.begin(), text.end(), option), end; at != end; ++at) {
    options.insert(at->str());
  }
  return options;
}

// What the completion offers for the last of these words, which the shell has taken apart.
std::string Completed(const std::string& words) {
  const std::filesystem::path completion = rdv::sites::Place("delivery") / "rdvlines.bash";
  const std::string script = "source '" + completion.string() + "'; COMP_WORDS=(rdvlines " + words +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _rdvlines 2>/dev/null; "
                             "echo \"${COMPREPLY[*]}\"";
  std::string output;
  FILE* const pipe = popen(
      ("bash -c '" + std::regex_replace(script, std::regex("'"), "'\\''") + "'").c_str(), "r");
  char piece[4096];
  for (size_t size; (size = fread(piece, 1, sizeof piece, pipe)) > 0;) output.append(piece, size);
  EXPECT_EQ(pclose(pipe), 0) << script;
  return output;
}

TEST(Guide, TheCompletionOffersTheOptionsOfEachCommand) {
  for (const std::string command : kCommands) {
    const std::string help = RunWords({command, "--help"}).out;
    // What stands behind the name of an option may name another one.
    std::string names;
    for (const std::string& line : LinesOf(help)) {
      const size_t at = line.find_first_not_of(' ');
      if (at != std::string::npos && at > 0 && line[at] == '-') {
        names += line.substr(0, line.find(' ', at)) + " ";
      }
    }
    EXPECT_EQ(OptionsIn(Completed(command + " --")), OptionsIn(names)) << command;
  }
}

// Bash takes COLUMN=VALUE for three words.
TEST(Guide, TheCompletionOffersNoColumnsWhereAValueBelongs) {
  EXPECT_EQ(Completed("set site 3 1 Volume ="), "\n");
  EXPECT_EQ(Completed("set site 3 1 Volume = H"), "\n");
  EXPECT_EQ(Completed("set site 3 1 Soft\\\\\\ Stop = En"), "Enabled\n");
  EXPECT_EQ(Completed("set site 3 1 Volume = High La"), "Label=\n");
}

#endif

TEST(Help, TellsWhichWordsHaveToBeThere) {
  EXPECT_THAT(RunWords({"set", "--help"}).out,
              testing::HasSubstr("rdvlines set [OPTIONS] [SITE] CONFIG LINES CHANGES...\n"));
  EXPECT_THAT(RunWords({"report", "--help"}).out,
              testing::HasSubstr("rdvlines report [OPTIONS] [SITE] [CONFIG...]\n"));
}

TEST(Help, TellsOfEachCommandAndTheVersion) {
  for (const std::string command : kCommands) {
    const Outcome help = RunWords({command, "--help"});
    EXPECT_EQ(help.code, 0) << command;
    EXPECT_NE(help.out.find("rdvlines " + command), std::string::npos) << help.out;
    EXPECT_EQ(help.errors, "");
  }
  EXPECT_EQ(RunWords({"--version"}).out.substr(0, 9), "rdvlines ");
  EXPECT_EQ(RunWords({"shwo"}).code, 2);
  EXPECT_NE(RunWords({"shwo"}).errors.find("did you mean 'show'"), std::string::npos);
}

}  // namespace
}  // namespace rdv::lines::test
