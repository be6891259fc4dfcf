// Random scripts, the same in every run: the real windows print what the in-memory widgets print,
// both leave the same rows behind, and the database file is sound whatever was done.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string_view>

#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "tests/scenarios/playing.h"
#include "tests/scenarios/random_script.h"
#include "tests/scenarios/same_answer.h"
#include "tests/support/sites/places.h"

namespace rdv::test {
namespace {

constexpr int kActions = 120;

class RandomScripts : public ::testing::TestWithParam<unsigned> {
 protected:
  void SetUp() override { MakeTheControlKnown(); }

  static std::vector<std::string> AnswersOf(const std::filesystem::path& player,
                                            const std::string& script, const SiteFiles& site) {
    Played played = Play(player, {{"random", script, &site}});
    EXPECT_EQ(played.status, 0) << played.errors;
    return played.answers["random"];
  }

  static void Keep(const std::string& script) {
    const char* folder = std::getenv("RDV_SCENARIO_OUTPUT");
    if (!folder) return;
    const auto name = "random-" + std::to_string(GetParam()) + ".rdv";
    std::ofstream(std::filesystem::path(folder) / name, std::ios::binary) << script;
  }

  static std::string Around(const std::string& answer, size_t byte) {
    constexpr size_t kBefore = 80;
    return answer.substr(byte > kBefore ? byte - kBefore : 0, 200);
  }
};

TEST_P(RandomScripts, EndTheSameWithEveryPlayer) {
  const std::string_view database = GetParam() % 2 == 0 ? "plain" : "indexed";
  const std::string script = RandomScript(GetParam(), kActions);
  Keep(script);
  const SiteFiles site(database);
  const SiteFiles compared_site(database);
  const std::vector<std::string> answers = AnswersOf(sites::Place("player"), script, site);
  const std::vector<std::string> compared =
      AnswersOf(sites::Place("memory-player"), script, compared_site);
  ASSERT_GT(answers.size(), static_cast<size_t>(kActions));
  ASSERT_EQ(answers.size(), compared.size());
  for (size_t i = 0; i < answers.size(); ++i) {
    const auto difference = FirstDifference(answers[i], compared[i]);
    ASSERT_FALSE(difference) << "answer " << i + 1 << " from byte " << *difference
                             << "\n   printed: " << Around(answers[i], *difference)
                             << "\n  compared: " << Around(compared[i], *difference);
  }
  const auto engine = jet::Engine::Open(site.DatabaseFile().u16string());
  const jet::Engine::ReadScope scope(*engine);
  for (const jet::Finding& finding : jet::CheckFile(engine->File()).findings) {
    ADD_FAILURE() << ToUtf8(finding.text);
  }
}

// As many as RDV_SEEDS says, for a longer run.
unsigned SeedCount() {
  constexpr unsigned kUsual = 10;
  const char* seeds = std::getenv("RDV_SEEDS");
  return seeds ? static_cast<unsigned>(std::atoi(seeds)) : kUsual;
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScripts, ::testing::Range(1u, 1u + SeedCount()));

}  // namespace
}  // namespace rdv::test
