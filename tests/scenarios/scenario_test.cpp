// Plays every scenario script on a fresh copy of a sample site and compares what is printed with
// the answers beside the script.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>

#include "data/connection_route.h"
#include "tests/scenarios/playing.h"
#include "tests/scenarios/same_answer.h"
#include "tests/support/sites/places.h"

namespace rdv::test {
namespace {

namespace fs = std::filesystem;

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
  return start.database + "/" + start.settings;
}

void Execute(const SiteFiles& site, const std::string& statement) {
  const Text path = site.DatabaseFile().u16string();
  OpenConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path)
      ->Execute(FromUtf8(statement), {});
}

// What the player printed for each script that this program is to test.
class Playing : public ::testing::Environment {
 public:
  void SetUp() override {
    std::vector<Script> scripts;
    for (const std::string& name : SelectedScripts()) scripts.push_back(Prepare(name));
    if (scripts.empty()) return;
    MakeTheControlKnown();
    played_ = Play(sites::Place("player"), scripts);
  }

  const Played& Result() const { return played_; }
  const std::vector<std::string>& AnswersOf(const std::string& name) {
    return played_.answers[name];
  }
  // As the script has left it; some have none.
  fs::path DatabaseOf(const std::string& name) const { return databases_.at(name); }

 private:
  static std::vector<std::string> SelectedScripts() {
    std::vector<std::string> names;
    const ::testing::UnitTest& program = *::testing::UnitTest::GetInstance();
    for (int suite = 0; suite < program.total_test_suite_count(); ++suite) {
      const ::testing::TestSuite& tests = *program.GetTestSuite(suite);
      if (std::string_view(tests.name()) != "Scripts/Scenario") continue;
      for (int test = 0; test < tests.total_test_count(); ++test) {
        const ::testing::TestInfo& info = *tests.GetTestInfo(test);
        if (!info.should_run()) continue;
        const std::string quoted = info.value_param();
        names.push_back(quoted.substr(1, quoted.size() - 2));
      }
    }
    return names;
  }

  Script Prepare(const std::string& name) {
    const fs::path file = sites::Place("scenarios") / (name + ".rdv");
    const StartingPoint start = StartingPointOf(LinesOf(file));
    const SiteFiles& site =
        *sites_.emplace_back(std::make_unique<SiteFiles>(start.database, SettingsFolder(start)));
    for (const std::string& statement : start.statements) Execute(site, statement);
    databases_[name] = site.DatabaseFile();
    return {name, ContentsOf(file), &site};
  }

  std::vector<std::unique_ptr<SiteFiles>> sites_;
  std::map<std::string, fs::path> databases_;
  Played played_;
};

Playing& playing = *new Playing;
const auto* const environment = ::testing::AddGlobalTestEnvironment(&playing);

class Scenario : public ::testing::TestWithParam<std::string> {
 protected:
  void Keep(const std::vector<std::string>& answers) const {
#ifdef _WIN32
    // In the letters that folders have, not in those of a code page.
    const wchar_t* folder = _wgetenv(L"RDV_SCENARIO_OUTPUT");
#else
    const char* folder = std::getenv("RDV_SCENARIO_OUTPUT");
#endif
    if (!folder) return;
    std::ofstream out(fs::path(folder) / (GetParam() + ".jsonl"), std::ios::binary);
    for (const std::string& answer : answers) out << answer << '\n';
    if (fs::exists(playing.DatabaseOf(GetParam())))
      CopySample(playing.DatabaseOf(GetParam()), fs::path(folder) / (GetParam() + ".mdb"));
  }
};

TEST_P(Scenario, PrintsTheExpectedAnswers) {
  EXPECT_EQ(playing.Result().status, 0) << playing.Result().errors;
  const std::vector<std::string>& answers = playing.AnswersOf(GetParam());
  Keep(answers);
  const fs::path file = sites::Place("scenarios") / (GetParam() + ".jsonl");
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
  for (const fs::directory_entry& file : fs::directory_iterator(sites::Place("scenarios"))) {
    if (file.path().extension() == ".rdv") names.push_back(file.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string TestName(const ::testing::TestParamInfo<std::string>& scenario) {
  std::string name = scenario.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Scripts, Scenario, ::testing::ValuesIn(AllScenarios()), TestName);

}  // namespace
}  // namespace rdv::test
