// Plays every scenario script on a fresh copy of a sample site and compares what is printed with
// the answers beside the script.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>

#ifdef _WIN32
#include <cstdio>

#include "tests/support/window_probe.h"
#endif

#include "data/connection_route.h"
#include "tests/scenarios/same_answer.h"
#include "tests/support/site_files.h"

namespace rdv::test {
namespace {

namespace fs = std::filesystem;

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

// What the comment at the head of a script asks for.
struct StartingPoint {
  std::string database;
  std::string settings;
  std::vector<std::string> statements;
};

StartingPoint StartingPointOf(const std::vector<std::string>& script) {
  constexpr std::string_view kStatement = "# before: ";
  StartingPoint start;
  const std::string& head = script.at(0);
  const size_t comma = head.find(", ");
  const size_t colon = head.find(": ");
  if (!head.starts_with("# ") || comma > colon || colon == std::string::npos) {
    throw std::runtime_error("a script begins with \"# DATABASE, SETTINGS: what it proves\"");
  }
  start.database = head.substr(2, comma - 2);
  if (start.database == "none") start.database.clear();
  start.settings = head.substr(comma + 2, colon - comma - 2);
  for (const std::string& line : script) {
    if (line.starts_with(kStatement)) start.statements.push_back(line.substr(kStatement.size()));
  }
  return start;
}

std::string SettingsFolder(const StartingPoint& start) {
  if (start.settings == "-") return "";
  const std::string site = start.database.substr(0, start.database.find('/'));
  return site + "/" + start.settings;
}

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

// With the folder of the site, which is another one each time, replaced by SITE.
std::string Neutral(std::string answer, const SiteFiles& site) {
  for (const fs::path& file : {site.DatabaseFile(), site.SettingsFile()}) {
    const std::string relative = file.lexically_relative(site.Folder()).generic_string();
    answer = ReplaceAll(std::move(answer), Escaped(file), "SITE/" + relative);
  }
  return answer;
}

void Execute(const SiteFiles& site, const std::string& statement) {
  const Text path = site.DatabaseFile().u16string();
  OpenConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path)
      ->Execute(FromUtf8(statement), {});
}

// What the player printed for each script. All scripts that this program is to test are played by
// one run of the player, because starting it can cost more than playing: each from a file of its
// own, which first names the site and ends with a mark.
class Playing : public ::testing::Environment {
 public:
  void SetUp() override {
    if (!fs::exists(SharedSites())) return;
#ifdef _WIN32
    if (!MakesDropDownLists()) {
      std::printf("skipped: %s\n", kNoDropDownLists);
      std::exit(kSkipped);
    }
    RegisterComponent();
#endif
    const fs::path before = fs::current_path();
    fs::path player = fs::absolute(RDV_PLAYER);
    fs::current_path(folder_.Path());
    std::vector<std::string> names = SelectedScripts();
    std::string command = '"' + player.make_preferred().string() + '"';
    for (const std::string& name : names) {
      Prepare(name);
      command += ' ' + name + ".rdv";
    }
    command += " >answers 2>errors";
#ifdef _WIN32
    command = '"' + command + '"';  // the command processor takes one pair of quotes away
#endif
    status_ = std::system(command.c_str());
    errors_ = ContentsOf("errors");
    TakeAnswers(names);
    fs::current_path(before);
  }

#ifdef _WIN32
  void TearDown() override {
    if (!component_) return;
    EXPECT_EQ(CallComponent("DllUnregisterServer"), S_OK);
    FreeLibrary(component_);
  }
#endif

  int Status() const {
    return status_;
  }
  const std::string& Errors() const {
    return errors_;
  }
  const std::vector<std::string>& AnswersOf(const std::string& name) {
    return answers_[name];
  }

 private:
  // No configuration has this number, and no script asks for cards twice and then for lines.
  static constexpr std::string_view kPrintMark = "\ncards -32768\ncards -32768\nlines -32768\n";
  static constexpr std::array<std::string_view, 3> kMark = {"{\"cards\":[]}", "{\"cards\":[]}",
                                                            "{\"lines\":[]}"};

  static std::vector<std::string> SelectedScripts() {
    std::vector<std::string> names;
    const ::testing::UnitTest& program = *::testing::UnitTest::GetInstance();
    for (int suite = 0; suite < program.total_test_suite_count(); ++suite) {
      const ::testing::TestSuite& tests = *program.GetTestSuite(suite);
      for (int test = 0; test < tests.total_test_count(); ++test) {
        const ::testing::TestInfo& info = *tests.GetTestInfo(test);
        if (!info.should_run() || !info.value_param()) continue;
        const std::string quoted = info.value_param();
        names.push_back(quoted.substr(1, quoted.size() - 2));
      }
    }
    return names;
  }

  void Prepare(const std::string& name) {
    const fs::path script = fs::path(RDV_SCENARIO_DIR) / (name + ".rdv");
    const StartingPoint start = StartingPointOf(LinesOf(script));
    const SiteFiles& site =
        *sites_.emplace(name, std::make_unique<SiteFiles>(start.database, SettingsFolder(start)))
             .first->second;
    for (const std::string& statement : start.statements) Execute(site, statement);
    std::ofstream(name + ".rdv", std::ios::binary) << "site \"" << Escaped(site.Folder()) << "\"\n"
                                                   << ContentsOf(script) << kPrintMark;
  }

  void TakeAnswers(const std::vector<std::string>& names) {
    auto name = names.begin();
    for (const std::string& line : LinesOf("answers")) {
      if (name == names.end()) break;
      std::vector<std::string>& answers = answers_[*name];
      answers.push_back(Neutral(line, *sites_[*name]));
      if (answers.size() < kMark.size()) continue;
      const auto mark = answers.end() - static_cast<ptrdiff_t>(kMark.size());
      if (std::equal(kMark.begin(), kMark.end(), mark)) {
        answers.erase(mark, answers.end());
        ++name;
      }
    }
  }

#ifdef _WIN32
  // The player creates the control as any host does: from the registry.
  void RegisterComponent() {
    component_ = LoadLibraryW(fs::path(RDV_COMPONENT).make_preferred().c_str());
    ASSERT_NE(component_, nullptr);
    ASSERT_EQ(CallComponent("DllRegisterServer"), S_OK);
  }
  HRESULT CallComponent(const char* name) const {
    const auto address = reinterpret_cast<void*>(GetProcAddress(component_, name));
    return address ? reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(address)() : E_NOTIMPL;
  }

  static constexpr int kSkipped = 77;  // as CTest knows it
  HMODULE component_ = nullptr;
#endif

  TemporaryFolder folder_;
  std::map<std::string, std::unique_ptr<SiteFiles>> sites_;
  std::map<std::string, std::vector<std::string>> answers_;
  int status_ = 0;
  std::string errors_;
};

Playing& playing = *new Playing;
const auto* const environment = ::testing::AddGlobalTestEnvironment(&playing);

class Scenario : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!fs::exists(SharedSites())) {
      GTEST_SKIP() << "the sample sites are not at hand in " << SharedSites();
    }
  }

  void Keep(const std::vector<std::string>& answers) const {
    const char* folder = std::getenv("RDV_SCENARIO_OUTPUT");
    if (!folder) return;
    std::ofstream out(fs::path(folder) / (GetParam() + ".jsonl"), std::ios::binary);
    for (const std::string& answer : answers) out << answer << '\n';
  }
};

TEST_P(Scenario, PrintsTheExpectedAnswers) {
  EXPECT_EQ(playing.Status(), 0) << playing.Errors();
  const std::vector<std::string>& answers = playing.AnswersOf(GetParam());
  Keep(answers);
  const fs::path file = fs::path(RDV_SCENARIO_DIR) / (GetParam() + ".jsonl");
  ASSERT_TRUE(fs::exists(file));
  const std::vector<std::string> expected = LinesOf(file);
  for (size_t line = 0; line < std::min(answers.size(), expected.size()); ++line) {
    EXPECT_TRUE(SameAnswer(answers[line], expected[line]))
        << "answer " << line + 1 << "\n  printed: " << answers[line]
        << "\n expected: " << expected[line];
  }
  EXPECT_EQ(answers.size(), expected.size()) << "number of answers";
}

std::vector<std::string> AllScenarios() {
  std::vector<std::string> names;
  for (const fs::directory_entry& file : fs::directory_iterator(RDV_SCENARIO_DIR)) {
    if (file.path().extension() == ".rdv") names.push_back(file.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string TestName(const ::testing::TestParamInfo<std::string>& scenario) {
  return ReplaceAll(scenario.param, "-", "_");
}

INSTANTIATE_TEST_SUITE_P(Scripts, Scenario, ::testing::ValuesIn(AllScenarios()), TestName);

}  // namespace
}  // namespace rdv::test
