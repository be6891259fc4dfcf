// The same choices made by rdvlines and at the control, as rdvplay plays it.
#ifndef _WIN32

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <random>

#include "tests/lines/lines_site.h"
#include "tests/support/sites/places.h"

namespace rdv::lines::test {
namespace {

using testing::IsEmpty;

struct Named {
  const char* caption;
  int code;
};
constexpr Named kPartitions[] = {
    {"Reception", 1}, {"Sales", 2}, {"North", 1}, {"West", 4}, {"Ward A", 1}};
// Lines of music on hold have captions of their own, of which one is "High", too.
constexpr Named kVolumes[] = {{"High", 128}, {"Low", 0}};
constexpr Named kMusicVolumes[] = {{"High", 8}, {"Very low", 1}, {"Medium", 5}, {"Very high", 9}};
constexpr Named kNodes[] = {{"Message", 0}, {"Menu", 1}, {"Queue", 2}, {"Music", 11}, {"Test", 13}};
constexpr Named kModes[] = {
    {"Ring", 1}, {"Delay", 2}, {"Loop Start", 13}, {"Tone Group", 26}, {"On Demand", 18}};
constexpr Named kImpedances[] = {{"Use Country Code", 0}, {"Europe", 3}, {"China", 5}};
constexpr Named kSoftStops[] = {{"Disabled", 0}, {"Enabled", 1}};
constexpr const char* kLabels[] = {"Lobby", "O'Brien", "say \\\"x\\\"", "Zürich 2", "a''b"};

// What rdvlines is told, and what the user of the control does after the click on the cell.
struct Choice {
  int column = 0;
  std::string assignment;
  std::string played;
};

class Chooser {
 public:
  explicit Chooser(unsigned seed) : random_(seed) {}

  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  template <typename Item, size_t Count>
  const Item& OneOf(const Item (&items)[Count]) {
    return items[static_cast<size_t>(Below(Count))];
  }

  Choice Next(bool music_on_hold) {
    switch (Below(9)) {
      case 0:
        return Picked(12, "Partition", "cmbPartition", OneOf(kPartitions));
      case 1:
        return Pair(13, "Starting Node", " ", "cmbStartingNodeName", OneOf(kNodes),
                    "cmbStartingNodeNumber", 1 + Below(18));
      case 2:
        return Picked(14, "Volume", "cmbVolume",
                      music_on_hold ? OneOf(kMusicVolumes) : OneOf(kVolumes));
      case 3:
        return Pair(15, "Mode", "=", "cmbModeType", OneOf(kModes), "cmbModeNumber", 1 + Below(11));
      case 4: {
        const int option = 1 + Below(99);
        return Picked(16, "NIS Option", "cmbNISOption", {nullptr, option});
      }
      case 5: {
        const std::string option = std::to_string(1 + Below(900));
        return {17, "EWT Option=" + option, "paste txtEWTOption " + option + "\n"};
      }
      case 6:
        return Picked(18, "Impedance", "cmbImpedance", OneOf(kImpedances));
      case 7:
        return Picked(19, "Soft Stop", "cmbSoftStop", OneOf(kSoftStops));
      default: {
        const std::string label = OneOf(kLabels);
        std::string plain;
        for (const char unit : label) {
          if (unit != '\\') plain += unit;
        }
        return {20, "Label=" + plain, "paste txtLabel \"" + label + "\"\n"};
      }
    }
  }

 private:
  static Choice Picked(int column, const std::string& name, const std::string& list,
                       const Named& entry) {
    const std::string code = std::to_string(entry.code);
    const std::string caption = entry.caption == nullptr ? code : entry.caption;
    return {column, name + "=" + caption, "pick " + list + " =" + code + "\n"};
  }
  static Choice Pair(int column, const std::string& name, const std::string& separator,
                     const std::string& names, const Named& entry, const std::string& numbers,
                     int number) {
    const std::string digits = std::to_string(number);
    return {column, name + "=" + entry.caption + separator + digits,
            "pick " + names + " =" + std::to_string(entry.code) + "\npick " + numbers + " =" +
                digits + "\n"};
  }

  std::mt19937 random_;
};

std::vector<int> ShownLines(const LinesSite& site, int config) {
  const nlohmann::json document =
      nlohmann::json::parse(site.Run("show", {std::to_string(config), "--json"}).out);
  std::vector<int> lines;
  for (const nlohmann::json& line : document["configurations"][0]["lines"]) {
    lines.push_back(line["line"].get<int>());
  }
  return lines;
}

// "1/3 Volume_ID: 0 | 128" for each field in which two states of a table differ.
std::vector<std::string> Differences(const std::vector<StoredRow>& left,
                                     const std::vector<StoredRow>& right) {
  std::vector<std::string> differences;
  if (left.size() != right.size()) differences.push_back("the number of rows");
  for (size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
    for (const auto& [column, value] : left[i]) {
      if (right[i].at(column) == value) continue;
      const auto line = left[i].find("Line");
      differences.push_back(left[i].at("Config_ID") + "/" +
                            (line == left[i].end() ? "card" : line->second) + " " + column + ": " +
                            value + " | " + right[i].at(column));
    }
  }
  return differences;
}

class RandomChoices : public testing::TestWithParam<unsigned> {};

TEST_P(RandomChoices, MakeTheSameDatabaseAsAtTheControl) {
  constexpr int kTries = 40;
  const LinesSite site;
  const LinesSite played;
  Chooser chooser(GetParam());
  std::string script;
  int taken = 0;
  int refused = 0;
  for (int i = 0; i < kTries; ++i) {
    const int config = std::vector{1, 3, 4}[static_cast<size_t>(chooser.Below(3))];
    const std::vector<int> lines = ShownLines(site, config);
    const int row = chooser.Below(static_cast<int>(lines.size()));
    const int line = lines[static_cast<size_t>(row)];
    const Choice choice = chooser.Next(line >= 9);
    const Outcome set =
        site.Run("set", {std::to_string(config), std::to_string(line), choice.assignment});
    refused += set.code;
    if (set.out.find("\nwritten; ") == std::string::npos) continue;
    ++taken;
    script += "create\nshow " + std::to_string(config) + "\nclick " + std::to_string(row + 1) +
              " " + std::to_string(choice.column) + "\n" + choice.played +
              "press cmdApply\ndestroy\n";
  }
  EXPECT_GT(taken, kTries / 6);
  EXPECT_GT(refused, kTries / 6);
  WriteBytes(site.Scratch("script.rdv"), script);
  const std::string command = rdv::sites::Place("player").string() + " --site '" + played.Folder() +
                              "' '" + site.Scratch("script.rdv").string() + "' > /dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << script;
  EXPECT_THAT(Differences(site.Rows("Used_Lines"), played.Rows("Used_Lines")), IsEmpty()) << script;
  EXPECT_THAT(Differences(site.Rows("Used_Cards"), played.Rows("Used_Cards")), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChoices, testing::Range(1u, 5u));

TEST(RestoredUnit, IsTheSameAsWithTheButtonOfTheControl) {
  const LinesSite site;
  const LinesSite played;
  std::string script;
  for (const char* type : {"8 Impedance Lines 2 MOH Lines", "4 Hybrid Lines 2 MOH Lines"}) {
    for (const char* config : {"1", "2", "3"}) {
      ASSERT_EQ(site.Run("restore", {config, type}).code, 0);
      script += std::string("create\nshow ") + config + "\npick cmbRDVType \"" + type +
                "\"\npress cmdShowDefaults\npress cmdApply\ndestroy\n";
    }
  }
  WriteBytes(site.Scratch("script.rdv"), script);
  const std::string command = rdv::sites::Place("player").string() + " --site '" + played.Folder() +
                              "' '" + site.Scratch("script.rdv").string() + "' > /dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_THAT(Differences(site.Rows("Used_Lines"), played.Rows("Used_Lines")), IsEmpty());
  EXPECT_THAT(Differences(site.Rows("Used_Cards"), played.Rows("Used_Cards")), IsEmpty());
}

}  // namespace
}  // namespace rdv::lines::test

#endif
