// rdvsite from its arguments to what it prints.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/site_fixture.h"
#include "tools/rdvsite/tool.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace rdv {
namespace {

struct Outcome {
  int code = 0;
  std::string out;
  std::string errors;
};

Outcome RunTool(const std::vector<Text>& arguments) {
  std::ostringstream out;
  std::ostringstream errors;
  Outcome outcome;
  outcome.code = RunSiteTool(arguments, out, errors);
  outcome.out = out.str();
  outcome.errors = errors.str();
  return outcome;
}

class SiteTool : public testing::Test {
 protected:
  void Create(const std::vector<Text>& options = {}) {
    std::vector<Text> arguments = {u"create", folder_.Path().u16string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = RunTool(arguments);
    ASSERT_EQ(outcome.code, kDone) << outcome.errors;
  }
  Text Database() const { return (Suite() / "Database" / "NewDB.mdb").u16string(); }
  std::filesystem::path Suite() const { return folder_.Path() / "Tolvane" / "ORVANT+"; }

  Outcome Sql(const Text& statement, std::vector<Text> arguments = {}) const {
    arguments.insert(arguments.begin(), {u"sql", Database(), statement});
    return RunTool(arguments);
  }

  static void WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
  static std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  // The names of the suite's files, sorted.
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Suite())) {
      if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  static size_t Lines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  test::TemporaryFolder folder_;
};

TEST_F(SiteTool, CreatesASoundSiteOfThreeConfigurationsInItsFolders) {
  Create();
  EXPECT_TRUE(std::filesystem::exists(Suite() / "ORVANTPlus.ini"));
  const Outcome check = RunTool({u"check", Database()});
  EXPECT_EQ(check.code, kDone) << check.out;
  EXPECT_EQ(check.out.substr(0, 6), "sound:");
  const Text unit = u"SELECT LineType FROM Used_Lines WHERE Config_ID = c AND Base_Slot_No = 1";
  EXPECT_EQ(Lines(Sql(unit, {u"1"}).out), 12u);
  EXPECT_EQ(Lines(Sql(unit, {u"2"}).out), 0u);
  EXPECT_EQ(Lines(Sql(unit + u" AND LineType = 6", {u"3"}).out), 4u);
  EXPECT_EQ(Lines(Sql(u"SELECT * FROM orvsettings").out), 3u);
}

TEST_F(SiteTool, CreatesAsManyConfigurationsAsItIsTold) {
  Create({u"--configurations", u"12"});
  EXPECT_EQ(Lines(Sql(u"SELECT * FROM orvsettings").out), 12u);
  const Text unit = u"SELECT * FROM Used_Lines WHERE Config_ID = 12";
  EXPECT_EQ(Lines(Sql(unit + u" AND Base_Slot_No = 1 AND LineType = 6").out), 8u);
  EXPECT_EQ(Lines(Sql(unit).out), 16u);
  EXPECT_EQ(RunTool({u"check", Database()}).code, kDone);
}

TEST_F(SiteTool, LeavesASiteAloneThatIsThere) {
  Create();
  Sql(u"DELETE FROM Used_Lines");
  const Outcome again = RunTool({u"create", folder_.Path().u16string()});
  EXPECT_EQ(again.code, kFailed);
  EXPECT_NE(again.errors.find("already exists"), std::string::npos) << again.errors;
  EXPECT_EQ(Sql(u"SELECT * FROM Used_Lines").out, "");
}

TEST_F(SiteTool, KeepsSettingsThatAreThereWithoutADatabase) {
  std::filesystem::create_directories(Suite());
  WriteFile(Suite() / "ORVANTPlus.ini", "[MINE]\r\n1=a\r\n");
  Create();
  EXPECT_EQ(ReadFile(Suite() / "ORVANTPlus.ini"), "[MINE]\r\n1=a\r\n");
  EXPECT_EQ(RunTool({u"check", Database()}).code, kDone);
}

TEST_F(SiteTool, MakesTheSiteThatAnEarlierCallDidNotFinish) {
  std::filesystem::create_directories(Suite() / "Database");
  WriteFile(Database() + u".new", std::string(70000, 'x'));
  WriteFile(Suite() / "ORVANTPlus.ini.new", "; Sett");
  Create();
  EXPECT_EQ(RunTool({u"check", Database()}).code, kDone);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

TEST_F(SiteTool, LeavesNothingButFoldersOfASiteThatItCannotFinish) {
  // In the way of the settings, which come after the tables.
  std::filesystem::create_directories(Suite() / "ORVANTPlus.ini.new" / "in use");
  const Outcome outcome = RunTool({u"create", folder_.Path().u16string()});
  EXPECT_EQ(outcome.code, kFailed);
  EXPECT_NE(outcome.errors.find("ORVANTPlus.ini"), std::string::npos) << outcome.errors;
  EXPECT_EQ(Files(), std::vector<std::string>());
  std::filesystem::remove_all(Suite() / "ORVANTPlus.ini.new");
  Create();
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

#ifndef _WIN32

TEST_F(SiteTool, BeingKilledLeavesNoDatabaseAndNothingInTheWay) {
  const std::filesystem::path draft = Database() + u".new";
  const pid_t child = fork();
  if (child == 0) {
    RunTool({u"create", folder_.Path().u16string(), u"--configurations", u"32767"});
    _exit(0);
  }
  // Late enough to be among the configurations.
  constexpr uintmax_t kWellBegun = 500'000;
  std::error_code error;
  for (uintmax_t size = 0; error || size < kWellBegun;
       size = std::filesystem::file_size(draft, error)) {
    ASSERT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "the creation ended by itself";
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_FALSE(std::filesystem::exists(Database()));
  Create();
  EXPECT_EQ(RunTool({u"check", Database()}).code, kDone);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

#endif

TEST_F(SiteTool, PrintsRowsAsLinesOfJsonAndWritesAsTheirNumber) {
  Create();
  EXPECT_EQ(Sql(u"SELECT Line, Volume_Name, rsvd1 FROM Used_Lines WHERE Config_ID = 1 AND "
                u"Base_Slot_No = 1 AND Line < 3")
                .out,
            "{\"Line\":1,\"Volume_Name\":\"High\",\"rsvd1\":0}\n"
            "{\"Line\":2,\"Volume_Name\":\"Low\",\"rsvd1\":0}\n");
  EXPECT_EQ(Sql(u"DELETE FROM Used_Lines WHERE Config_ID = c", {u"3"}).out, "12\n");
}

TEST_F(SiteTool, PrintsEveryKindOfValueInTheFormOfADump) {
  Create();
  Sql(u"UPDATE orvsettings SET Remarks = a, Saved_On = b, Config_Caption = c WHERE ConfigID = 1",
      {u"say \"é\"\r\n\t\\", u"2011-03-14 15:09:26", u"\\N"});
  EXPECT_EQ(Sql(u"SELECT * FROM orvsettings WHERE ConfigID = 1").out,
            "{\"ConfigID\":1,\"PartitionEnabled\":true,\"Config_Caption\":null,\"Revision\":10,"
            "\"Saved_On\":\"2011-03-14T15:09:26\",\"Idle_Factor\":0.25,"
            "\"Upkeep_Cost\":\"125.0100\",\"Remarks\":\"say \\\"é\\\"\\r\\n\\t\\\\\"}\n");
}

TEST_F(SiteTool, TellsNullFromEmptyTextInArguments) {
  Create();
  EXPECT_EQ(Sql(u"UPDATE Used_Lines SET Description = d WHERE Config_ID = 1", {u""}).out, "16\n");
  EXPECT_EQ(Lines(Sql(u"SELECT * FROM Used_Lines WHERE Description IS NULL").out), 0u);
  EXPECT_EQ(Sql(u"UPDATE Used_Lines SET Description = d WHERE Config_ID = 1", {u"\\N"}).out,
            "16\n");
  EXPECT_EQ(Lines(Sql(u"SELECT * FROM Used_Lines WHERE Description IS NULL").out), 16u);
}

TEST_F(SiteTool, DumpsAllTablesOrThoseThatAreNamed) {
  Create();
  const std::string all = RunTool({u"dump", Database()}).out;
  EXPECT_EQ(all.substr(0, 22), "{\n\"file\":\"NewDB.mdb\",\n");
  EXPECT_NE(all.find("\"name\":\"Node_Type_Max\""), std::string::npos);
  const std::string one = RunTool({u"dump", Database(), u"used_cards"}).out;
  EXPECT_NE(one.find("\"name\":\"Used_Cards\""), std::string::npos);
  EXPECT_EQ(one.find("\"name\":\"Node_Type_Max\""), std::string::npos);
  EXPECT_EQ(RunTool({u"dump", Database(), u"Nowhere"}).code, kFailed);
}

TEST_F(SiteTool, MendsWhatACheckFinds) {
  const auto sample = test::SharedSites() / "broken" / "08-cyclic-index" / "NewDB.mdb";
  if (!std::filesystem::exists(sample)) GTEST_SKIP() << "the sample is not at hand: " << sample;
  const auto copy = folder_.Path() / "copy.mdb";
  std::filesystem::copy_file(sample, copy);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  EXPECT_EQ(RunTool({u"check", copy.u16string()}).code, kFailed);
  const Outcome repair = RunTool({u"repair", copy.u16string()});
  EXPECT_EQ(repair.code, kDone) << repair.out << repair.errors;
  EXPECT_EQ(repair.out.substr(0, 7), "mended:");
  EXPECT_EQ(RunTool({u"check", copy.u16string()}).code, kDone);
}

TEST_F(SiteTool, ReportsErrorsWithNumberDescriptionAndSource) {
  Create();
  const Outcome outcome = Sql(u"SELECT * FROM Nowhere");
  EXPECT_EQ(outcome.code, kFailed);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors,
            "-2147217865: The Microsoft Jet database engine cannot find the input table or query "
            "'Nowhere'. Make sure it exists and that its name is spelled correctly. (Microsoft JET "
            "Database Engine)\n");
}

TEST_F(SiteTool, ShowsItsUsageForArgumentsThatMakeNoCommand) {
  const std::vector<std::vector<Text>> wrong = {{},
                                                {u"make"},
                                                {u"create"},
                                                {u"create", u"x", u"y"},
                                                {u"create", u"x", u"--configurations"},
                                                {u"create", u"x", u"--configurations", u"many"},
                                                {u"create", u"x", u"--configurations", u"0"},
                                                {u"create", u"x", u"--configurations", u"32768"},
                                                {u"dump"},
                                                {u"sql", u"x"},
                                                {u"check"},
                                                {u"check", u"x", u"y"},
                                                {u"repair"}};
  for (const std::vector<Text>& arguments : wrong) {
    const Outcome outcome = RunTool(arguments);
    EXPECT_EQ(outcome.code, kUsage);
    EXPECT_EQ(outcome.errors.substr(0, 15), "usage: rdvsite ");
    EXPECT_EQ(outcome.out, "");
  }
  EXPECT_FALSE(std::filesystem::exists("x"));
}

}  // namespace
}  // namespace rdv
