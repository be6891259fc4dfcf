// rdvsite from its arguments to what it prints.
#include <gtest/gtest.h>

#include <algorithm>

#include "data/needed_tables.h"
#include "tests/tools/site_tool.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace rdv {
namespace {

TEST_F(SiteTool, CreatesASoundSiteOfThreeConfigurationsInItsFolders) {
  Create();
  EXPECT_TRUE(std::filesystem::exists(Suite() / "ORVANTPlus.ini"));
  const Outcome check = RunTool({"check", Database()});
  EXPECT_EQ(check.code, kDone) << check.out;
  EXPECT_EQ(check.out.substr(0, 6), "sound:");
  const std::string unit =
      "SELECT LineType FROM Used_Lines WHERE Config_ID = c AND Base_Slot_No = 1";
  EXPECT_EQ(Lines(Sql(unit, {"1"}).out), 12u);
  EXPECT_EQ(Lines(Sql(unit, {"2"}).out), 0u);
  EXPECT_EQ(Lines(Sql(unit + " AND LineType = 6", {"3"}).out), 4u);
  EXPECT_EQ(Lines(Sql("SELECT * FROM orvsettings").out), 3u);
}

TEST_F(SiteTool, CreatesAsManyConfigurationsAsItIsTold) {
  Create({"--configurations", "12"});
  EXPECT_EQ(Lines(Sql("SELECT * FROM orvsettings").out), 12u);
  const std::string unit = "SELECT * FROM Used_Lines WHERE Config_ID = 12";
  EXPECT_EQ(Lines(Sql(unit + " AND Base_Slot_No = 1 AND LineType = 6").out), 8u);
  EXPECT_EQ(Lines(Sql(unit).out), 16u);
  EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
}

TEST_F(SiteTool, LeavesASiteAloneThatIsThere) {
  Create();
  Sql("DELETE FROM Used_Lines");
  const Outcome again = RunTool({"create", folder_.Path().string()});
  EXPECT_EQ(again.code, kUnusable);
  EXPECT_NE(again.errors.find("already exists"), std::string::npos) << again.errors;
  EXPECT_EQ(Sql("SELECT * FROM Used_Lines").out, "");
}

TEST_F(SiteTool, KeepsSettingsThatAreThereWithoutADatabase) {
  std::filesystem::create_directories(Suite());
  WriteFile(Suite() / "ORVANTPlus.ini", "[MINE]\r\n1=a\r\n");
  Create();
  EXPECT_EQ(ReadFile(Suite() / "ORVANTPlus.ini"), "[MINE]\r\n1=a\r\n");
  EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
}

TEST_F(SiteTool, MakesTheSiteThatAnEarlierCallDidNotFinish) {
  std::filesystem::create_directories(Suite() / "Database");
  WriteFile(Database() + ".new", std::string(70000, 'x'));
  WriteFile(Suite() / "ORVANTPlus.ini.new", "; Sett");
  Create();
  EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

TEST_F(SiteTool, LeavesNothingButFoldersOfASiteThatItCannotFinish) {
  // In the way of the settings, which come after the tables.
  std::filesystem::create_directories(Suite() / "ORVANTPlus.ini.new" / "in use");
  const Outcome outcome = RunTool({"create", folder_.Path().string()});
  EXPECT_EQ(outcome.code, kUnusable);
  EXPECT_NE(outcome.errors.find("ORVANTPlus.ini"), std::string::npos) << outcome.errors;
  EXPECT_EQ(Files(), std::vector<std::string>());
  std::filesystem::remove_all(Suite() / "ORVANTPlus.ini.new");
  Create();
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

#ifndef _WIN32

TEST_F(SiteTool, BeingKilledLeavesNoDatabaseAndNothingInTheWay) {
  const std::filesystem::path draft = Database() + ".new";
  const pid_t child = fork();
  if (child == 0) {
    RunTool({"create", folder_.Path().string(), "--configurations", "32767"});
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
  EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

#endif

TEST_F(SiteTool, PrintsRowsAsLinesOfJsonAndWritesAsTheirNumber) {
  Create();
  EXPECT_EQ(Sql("SELECT Line, Volume_Name, rsvd1 FROM Used_Lines WHERE Config_ID = 1 AND "
                "Base_Slot_No = 1 AND Line < 3")
                .out,
            "{\"Line\":1,\"Volume_Name\":\"High\",\"rsvd1\":0}\n"
            "{\"Line\":2,\"Volume_Name\":\"Low\",\"rsvd1\":0}\n");
  EXPECT_EQ(Sql("DELETE FROM Used_Lines WHERE Config_ID = c", {"3"}).out, "12\n");
}

TEST_F(SiteTool, PrintsEveryKindOfValueInTheFormOfADump) {
  Create();
  Sql("UPDATE orvsettings SET Remarks = a, Saved_On = b, Config_Caption = c WHERE ConfigID = 1",
      {"say \"é\"\r\n\t\\", "2011-03-14 15:09:26", "\\N"});
  EXPECT_EQ(Sql("SELECT * FROM orvsettings WHERE ConfigID = 1").out,
            "{\"ConfigID\":1,\"PartitionEnabled\":true,\"Config_Caption\":null,\"Revision\":10,"
            "\"Saved_On\":\"2011-03-14T15:09:26\",\"Idle_Factor\":0.25,"
            "\"Upkeep_Cost\":\"125.0100\",\"Remarks\":\"say \\\"é\\\"\\r\\n\\t\\\\\"}\n");
}

TEST_F(SiteTool, TellsNullFromEmptyTextInArguments) {
  Create();
  EXPECT_EQ(Sql("UPDATE Used_Lines SET Description = d WHERE Config_ID = 1", {""}).out, "16\n");
  EXPECT_EQ(Lines(Sql("SELECT * FROM Used_Lines WHERE Description IS NULL").out), 0u);
  EXPECT_EQ(Sql("UPDATE Used_Lines SET Description = d WHERE Config_ID = 1", {"\\N"}).out, "16\n");
  EXPECT_EQ(Lines(Sql("SELECT * FROM Used_Lines WHERE Description IS NULL").out), 16u);
}

TEST_F(SiteTool, DumpsAllTablesOrThoseThatAreNamed) {
  Create();
  const std::string all = RunTool({"dump", Database()}).out;
  EXPECT_EQ(all.substr(0, 22), "{\n\"file\":\"NewDB.mdb\",\n");
  EXPECT_NE(all.find("\"name\":\"Node_Type_Max\""), std::string::npos);
  const std::string one = RunTool({"dump", Database(), "used_cards"}).out;
  EXPECT_NE(one.find("\"name\":\"Used_Cards\""), std::string::npos);
  EXPECT_EQ(one.find("\"name\":\"Node_Type_Max\""), std::string::npos);
  const Outcome nowhere = RunTool({"dump", Database(), "UsedCards"});
  EXPECT_EQ(nowhere.code, kUsage);
  EXPECT_EQ(nowhere.out, "");
  EXPECT_EQ(nowhere.errors,
            "rdvsite dump: there is no table 'UsedCards': did you mean 'Used_Cards'? (see rdvsite "
            "dump --help)\n");
}

TEST_F(SiteTool, TakesTheFolderOfASiteForItsDatabase) {
  Create();
  EXPECT_EQ(RunTool({"check", folder_.Path().string()}).code, kDone);
  const Outcome elsewhere = RunTool({"check", Suite().string()});
  EXPECT_EQ(elsewhere.code, kUnusable);
  EXPECT_NE(elsewhere.errors.find("is a folder, and no site"), std::string::npos);
}

TEST_F(SiteTool, ListsTheTablesAndWhatTheyAreMadeOf) {
  Create();
  const std::string tables = RunTool({"tables", Database()}).out;
  EXPECT_EQ(Lines(tables), 10u);
  EXPECT_NE(tables.find("orvsettings                      3 rows, 8 columns\n"), std::string::npos)
      << tables;
  const Outcome schema = RunTool({"schema", Database(), "used_cards"});
  EXPECT_EQ(schema.code, kDone) << schema.errors;
  for (const char* line : {"Used_Cards (7 rows)\n", "\n  Slot_Caption                   TEXT(50)\n",
                           "\n  Config_ID                      INT\n",
                           "\n  primary key PrimaryKey: Config_ID, Base_Slot_No, Slot_Offset\n"}) {
    EXPECT_NE(schema.out.find(line), std::string::npos) << line << schema.out;
  }
  const Outcome all = RunTool({"schema", Database()});
  for (const NeededTable& table : NeededTables())
    EXPECT_NE(all.out.find(ToUtf8(table.name) + " ("), std::string::npos);
  EXPECT_EQ(RunTool({"schema", Database(), "Nowhere"}).code, kUsage);
}

TEST_F(SiteTool, NamesEachColumnThatIsUnknown) {
  Create();
  const Outcome outcome =
      Sql("SELECT Line, Volum_ID FROM Used_Lines WHERE Config = 1 ORDER BY Line");
  EXPECT_EQ(outcome.code, kFindings);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors,
            "rdvsite sql: 'Volum_ID' is no column of Used_Lines and has no value; did you mean "
            "'Volume_ID'?; 'Config' is no column of Used_Lines and has no value; did you mean "
            "'Config_ID'?. No value given for one or more required parameters. (error -2147217904, "
            "Microsoft JET Database Engine)\n");
}

TEST_F(SiteTool, NamesTheColumnAndTheValueThatItDoesNotTake) {
  Create();
  const std::pair<std::string, std::string> mismatches[] = {
      {"SELECT * FROM Used_Lines WHERE Line = 1 AND Volume_ID = 'loud'",
       "column 'Volume_ID' (INT) does not take 'loud'"},
      {"SELECT * FROM Used_Lines WHERE 5 < Description",
       "column 'Description' (TEXT) does not take '5'"},
      {"UPDATE Used_Lines SET Volume_ID = 'loud', Impedance = 'high' WHERE Line = 1",
       "column 'Volume_ID' (INT) does not take 'loud'; column 'Impedance' (INT) does not "
       "take 'high'"},
      {"INSERT INTO Used_Lines (Config_ID, Line) VALUES (1, 'one')",
       "column 'Line' (INT) does not take 'one'"}};
  for (const auto& [statement, text] : mismatches) {
    const Outcome outcome = Sql(statement);
    EXPECT_EQ(outcome.code, kFindings) << statement;
    EXPECT_EQ(outcome.errors.substr(0, outcome.errors.find(" (error")),
              "rdvsite sql: " + text + ". Data type mismatch in criteria expression.");
  }
  EXPECT_EQ(Sql("UPDATE Used_Lines SET Volume_ID = v WHERE Line = l", {"99999", "1"})
                .errors.substr(0, 71),
            "rdvsite sql: column 'Volume_ID' (INT) does not take '99999'. Overflow (");
  EXPECT_NE(Sql("UPDATE Used_Lines SET Description = d WHERE Line = 1", {std::string(300, 'x')})
                .errors.find("column 'Description' (TEXT) does not take 'xxx"),
            std::string::npos);
}

TEST_F(SiteTool, RefusesMoreArgumentsThanTheStatementTakesAndWritesNothing) {
  Create();
  const Outcome outcome =
      Sql("UPDATE Used_Lines SET Description = d WHERE Config_ID = 1", {"Gate", "2"});
  EXPECT_EQ(outcome.code, kUsage);
  EXPECT_EQ(outcome.errors.substr(0, 78),
            "rdvsite sql: '2' is one argument too many: the statement takes 'd' (see rdvsit");
  EXPECT_EQ(Sql("SELECT * FROM Used_Lines WHERE Description = d", {"Gate"}).out, "");
  EXPECT_EQ(Sql("SELECT * FROM Used_Lines", {"-1"}).code, kUsage);
}

TEST_F(SiteTool, TakesArgumentsThatBeginWithADash) {
  Create();
  EXPECT_EQ(Sql("SELECT Line FROM Used_Lines WHERE Starting_Node_Number = n AND Config_ID = c",
                {"-1", "1"})
                .out,
            "{\"Line\":7}\n{\"Line\":8}\n");
}

TEST_F(SiteTool, ShowsWhereAStatementIsWrong) {
  Create();
  const Outcome word = Sql("SELECT Line FORM Used_Lines");
  EXPECT_EQ(word.code, kFindings);
  EXPECT_EQ(word.errors.substr(0, 55), "rdvsite sql: 'FORM' was not expected at character 13 of");
  EXPECT_EQ(Sql("SELECT * FROM Used_Lines WHERE").errors.substr(0, 67),
            "rdvsite sql: the statement ends too early, after character 30 of \"S");
  EXPECT_EQ(Sql("DELETE FROM Used_Lines WHERE Line ! 3").errors.substr(0, 52),
            "rdvsite sql: '!' was not expected at character 35 of");
  EXPECT_EQ(Sql("DELETE FROM Used_Lines WHERE Description = 'Gate").errors.substr(0, 56),
            "rdvsite sql: ''Gate' was not expected at character 44 of");
}

TEST_F(SiteTool, TellsEngineErrorsWithNumberDescriptionAndSource) {
  Create();
  const Outcome outcome = Sql("SELECT * FROM Nowhere");
  EXPECT_EQ(outcome.code, kFindings);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors,
            "rdvsite sql: The Microsoft Jet database engine cannot find the input table or query "
            "'Nowhere'. Make sure it exists and that its name is spelled correctly. (error "
            "-2147217865, Microsoft JET Database Engine)\n");
}

TEST_F(SiteTool, HelpOnStatementsHasTheGrammarAndExamples) {
  const Outcome help = RunTool({"help", "sql"});
  EXPECT_EQ(help.code, kDone);
  for (const char* part : {"SELECT [DISTINCT] [TOP number] item", "INSERT INTO", "ORDER BY",
                           "COUNT(*)", "[NOT] IN (", "[NOT] BETWEEN", "[NOT] LIKE", "IS [NOT] NULL",
                           "\\N is Null", "rdvsite sql NewDB.mdb \"UPDATE"}) {
    EXPECT_NE(help.out.find(part), std::string::npos) << part;
  }
}

TEST_F(SiteTool, HelpIsAskedForAndNotMade) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  for (const char* word : {"--help", "-h"}) {
    EXPECT_EQ(RunTool({"create", word}).code, kDone);
  }
  EXPECT_EQ(RunTool({"create", ""}).code, kUsage);
  EXPECT_EQ(RunTool({"create", "--site"}).code, kUsage);
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

// Words that make no command, and what is said of them.
struct Wrong {
  std::vector<std::string> words;
  std::string answer;
};

TEST_F(SiteTool, NamesTheWordThatMakesNoCommand) {
  const Wrong wrong[] = {
      {{}, "rdvsite: a command is missing: create, tables"},
      {{"crate"}, "rdvsite: unknown command 'crate': did you mean 'create'?"},
      {{"create"}, "rdvsite create: FOLDER is missing"},
      {{"create", "x", "y"}, "rdvsite create: 'y' is one word too many"},
      {{"create", "x", "--configuration", "3"},
       "rdvsite create: unknown option '--configuration': did you mean '--configurations'?"},
      {{"create", "x", "--configurations"}, "rdvsite create: --configurations"},
      {{"create", "x", "--configurations", "many"}, "rdvsite create: --configurations"},
      {{"create", "x", "--configurations", "0"}, "rdvsite create: --configurations"},
      {{"create", "x", "--configurations", "32768"}, "rdvsite create: --configurations"},
      {{"dump"}, "rdvsite dump: FILE is missing"},
      {{"sql", "x"}, "rdvsite sql: STATEMENT is missing"},
      {{"check"}, "rdvsite check: FILE is missing"},
      {{"check", "x", "y"}, "rdvsite check: 'y' is one word too many"},
      {{"repair", "x", "--dryrun"}, "rdvsite repair: unknown option '--dryrun': did you mean"}};
  for (const Wrong& each : wrong) {
    const Outcome outcome = RunTool(each.words);
    EXPECT_EQ(outcome.code, kUsage);
    EXPECT_EQ(outcome.errors.substr(0, each.answer.size()), each.answer);
    EXPECT_EQ(Lines(outcome.errors), 1u) << outcome.errors;
    EXPECT_EQ(outcome.out, "");
  }
  EXPECT_FALSE(std::filesystem::exists("x"));
}

}  // namespace
}  // namespace rdv
