// What rdvsite says of files that cannot be used, or are not as they have to be, and mending them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "data/commands.h"
#include "data/jet/engine.h"
#include "data/jet/format/format.h"
#include "data/jet/sql/parameters.h"
#include "data/jet/sql/statement_parser.h"
#include "data/needed_tables.h"
#include "tests/support/as_anybody.h"
#include "tests/support/link_maker.h"
#include "tests/support/sites/sample_sites.h"
#include "tests/tools/site_tool.h"
#include "tools/rdvsite/demonstration_tables.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace rdv {
namespace {

// A file that is refused, and what is said of it.
struct Refused {
  std::string content;
  std::string words;
};

TEST_F(SiteTool, SaysWhyAFileIsNoDatabase) {
  Create();
  const std::string sound = ReadFile(Database());
  std::string newer = sound;
  newer.replace(4, 15, "Standard ACE DB");
  newer[0x14] = 2;
  const Refused files[] = {
      {"", "The file is empty"},
      {"no database", "The file has no such signature"},
      {std::string(100'000, '\0'), "The file has no such signature"},
      {sound.substr(0, 6000), "The file is cut off at 6000 bytes"},
      {sound.substr(0, sound.size() - 1000), "The file is cut off in the middle of a page, at "},
      {newer, "It was made by Access 2007 or later"}};
  const std::string path = (folder_.Path() / "other.mdb").string();
  for (const Refused& file : files) {
    std::filesystem::remove(path);
    WriteFile(path, file.content);
    for (const char* command : {"check", "dump", "repair", "tables"}) {
      const Outcome outcome = RunTool({command, path});
      EXPECT_EQ(outcome.code, kUnusable);
      EXPECT_NE(outcome.errors.find(file.words), std::string::npos) << outcome.errors;
      EXPECT_EQ(Lines(outcome.errors), 1u);
      EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(ReadFile(path), file.content);
  }
  const Outcome missing = RunTool({"check", (folder_.Path() / "none.mdb").string()});
  EXPECT_EQ(missing.code, kUnusable);
  EXPECT_NE(missing.errors.find("Could not find file"), std::string::npos) << missing.errors;
}

#ifndef _WIN32

TEST_F(SiteTool, TellsWhichRightIsMissing) {
  Create();
  const std::filesystem::path folder = Suite() / "Database";
  const auto allow = [&](mode_t to_file, mode_t to_folder) {
    ASSERT_EQ(chmod(Database().c_str(), to_file), 0);
    ASSERT_EQ(chmod(folder.c_str(), to_folder), 0);
  };
  const auto change = [&] {
    const test::AsAnybody anybody;
    return Sql("DELETE FROM Used_Cards");
  };
  allow(0000, 0777);
  EXPECT_EQ(change().errors.find("rdvsite sql: '" + Database() + "' cannot be read: Permission"),
            0u)
      << change().errors;
  EXPECT_EQ(change().errors.find("Cannot update"), std::string::npos) << change().errors;
  allow(0444, 0777);
  EXPECT_EQ(change().errors.find("rdvsite sql: '" + Database() +
                                 "' can be read and not be written: Permission denied"),
            0u)
      << change().errors;
  allow(0666, 0555);
  EXPECT_EQ(change().errors.find("rdvsite sql: '" + Database() +
                                 "' can be written, but not its folder '" + folder.string() + "'"),
            0u)
      << change().errors;
  EXPECT_EQ(change().code, kUnusable);
  {
    const std::string copy = (folder / "copy.mdb").string();
    const test::AsAnybody anybody;
    const Outcome repair = RunTool({"repair", Database(), "--to", copy});
    EXPECT_EQ(repair.code, kUnusable);
    EXPECT_EQ(repair.errors.find("rdvsite repair: '" + copy + "' cannot be made there. "), 0u)
        << repair.errors;
  }
  allow(0666, 0777);
  EXPECT_EQ(change().out, "7\n");
}

#endif

TEST_F(SiteTool, FindsWhatTheControlNeedsAndTheDatabaseLacks) {
  // Each table without its last needed column, and one table not at all.
  const std::string path = (folder_.Path() / "lacking.mdb").string();
  std::vector<std::string> lacking;
  jet::Engine::Create(FromUtf8(path), {}, [&](jet::Engine& engine) {
    jet::Engine::WriteScope scope(engine);
    for (jet::TableSpec table : ConfigurationTables()) {
      if (table.name == u"Used_Cards") continue;
      const auto needed = std::ranges::find_if(NeededTables(), [&](const NeededTable& candidate) {
        return EqualsIgnoringCase(candidate.name, table.name);
      });
      ASSERT_NE(needed, NeededTables().end());
      const Text column(needed->columns.back());
      std::erase_if(table.columns,
                    [&](const jet::ColumnSpec& spec) { return spec.name == column; });
      std::erase_if(table.indexes, [&](const jet::IndexSpec& index) {
        return std::ranges::any_of(
            index.columns, [&](const jet::IndexPartSpec& part) { return part.column == column; });
      });
      lacking.push_back("the control needs more: column " + ToUtf8(column) + " of table " +
                        ToUtf8(table.name) + " is missing\n");
      engine.CreateTable(table);
    }
    scope.Commit();
  });
  lacking.emplace_back("the control needs more: table Used_Cards is missing\n");
  const Outcome outcome = RunTool({"check", path});
  EXPECT_EQ(outcome.code, kFindings) << outcome.errors;
  EXPECT_EQ(Lines(outcome.out), lacking.size() + 1);
  for (const std::string& line : lacking)
    EXPECT_NE(outcome.out.find(line), std::string::npos) << line << outcome.out;
  EXPECT_NE(outcome.out.find("\nsound: "), std::string::npos) << outcome.out;
  EXPECT_EQ(RunTool({"check", "--file-only", path}).code, kDone);
}

TEST_F(SiteTool, TakesATableOfAnotherFileForNoMissingOne) {
  const std::filesystem::path path = folder_.Path() / "linking.mdb";
  test::CopySample(sites::SiteFolder("broken/10-missing-table") / "NewDB.mdb", path);
  EXPECT_NE(RunTool({"check", path.string()}).out.find("SR_Mode_Type_Names is missing"),
            std::string::npos);
  test::LinkMaker(path.u16string())
      .Make({.name = u"SR_Mode_Type_Names",
             .database = u"names.mdb",
             .foreign_name = u"SR_Mode_Type_Names",
             .connect = {}});
  const Outcome linking = RunTool({"check", path.string()});
  EXPECT_EQ(linking.out.find("missing"), std::string::npos) << linking.out;
}

TEST_F(SiteTool, SaysThatADatabaseIsNotThatOfASite) {
  const std::string path = (folder_.Path() / "blank.mdb").string();
  jet::Engine::Create(FromUtf8(path));
  const Outcome outcome = RunTool({"check", path});
  EXPECT_EQ(outcome.code, kFindings);
  EXPECT_EQ(outcome.out.substr(0, 61),
            "the control needs more: this is no database of a site: it has");
}

// So that no command of the control names a column that a check would not miss.
TEST_F(SiteTool, NeedsEveryColumnThatTheCommandsOfTheControlName) {
  Create();
  const auto engine = jet::Engine::Open(FromUtf8(Database()));
  const jet::Engine::ReadScope scope(*engine);
  for (const CommandDefinition& command : AllCommands()) {
    const jet::sql::Statement statement = jet::sql::ParseStatement(command.statement);
    const auto needed = std::ranges::find_if(NeededTables(), [&](const NeededTable& table) {
      return EqualsIgnoringCase(table.name, jet::sql::TableOf(statement));
    });
    ASSERT_NE(needed, NeededTables().end()) << ToUtf8(command.name);
    // Without any column all names are parameters: what remains are those that are columns.
    jet::TableDefinition nothing;
    nothing.name = needed->name;
    std::vector<Text> expected;
    for (const Parameter& parameter : command.parameters) expected.emplace_back(parameter.name);
    for (const Text& name : jet::sql::ParametersOf(statement, nothing)) {
      if (std::ranges::find(expected, name) != expected.end()) continue;
      EXPECT_TRUE(std::ranges::any_of(
          needed->columns, [&](TextView column) { return EqualsIgnoringCase(column, name); }))
          << ToUtf8(command.name) << ": " << ToUtf8(name);
    }
    // And with them the parameters are those of the definition, in its order.
    const std::vector<Text> parameters =
        jet::sql::ParametersOf(statement, engine->Table(needed->name));
    EXPECT_EQ(parameters, expected) << ToUtf8(command.name);
  }
}

// Damages the demonstration site as a bad disk does.
class DamagedSite : public SiteTool {
 protected:
  void SetUp() override {
    Create();
    sound_ = ReadFile(Database());
  }

  static constexpr size_t kPage = 4096;

  // The pages that hold rows of the table, by the page of its definition.
  std::vector<size_t> DataPagesOf(TextView table) const {
    const auto engine = jet::Engine::Open(FromUtf8(Database()));
    const jet::Engine::ReadScope scope(*engine);
    const uint32_t owner = engine->Table(table).Page();
    std::vector<size_t> pages;
    for (size_t page = 1; page < sound_.size() / kPage; ++page) {
      const auto byte = [&](size_t at) {
        return static_cast<uint32_t>(static_cast<uint8_t>(sound_[page * kPage + at]));
      };
      const uint32_t page_owner = byte(4) | byte(5) << 8 | byte(6) << 16 | byte(7) << 24;
      if (byte(0) == 1 && page_owner == owner) pages.push_back(page);
    }
    return pages;
  }
  void Overwrite(size_t at, const std::string& bytes) const {
    std::string damaged = sound_;
    damaged.replace(at, bytes.size(), bytes);
    WriteFile(Database(), damaged);
  }
  // A row count that no table has, in the definition: mended from the rows.
  void SpoilARowCount() const {
    uint32_t definition = 0;
    {
      const auto engine = jet::Engine::Open(FromUtf8(Database()));
      const jet::Engine::ReadScope scope(*engine);
      definition = engine->Table(u"Used_Cards").Page();
    }
    Overwrite(definition * kPage + 16, std::string("\x63\0\0\0", 4));
  }

  std::string sound_;
};

TEST_F(DamagedSite, IsMendedInPlaceWithACopyOfWhatItWas) {
  SpoilARowCount();
  const std::string damaged = ReadFile(Database());
  EXPECT_EQ(RunTool({"check", Database()}).code, kFindings);
  const Outcome repair = RunTool({"repair", Database()});
  EXPECT_EQ(repair.code, kDone) << repair.out << repair.errors;
  EXPECT_EQ(repair.out.substr(0, 20), "the file as it was: ");
  EXPECT_NE(repair.out.find("\nmended: "), std::string::npos) << repair.out;
  EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
  const std::string copy = repair.out.substr(20, repair.out.find('\n') - 20);
  EXPECT_EQ(ReadFile(copy), damaged);
  EXPECT_EQ(std::filesystem::path(copy).parent_path(), Suite() / "Database");
}

TEST_F(DamagedSite, IsLeftAloneByARepairOfACopyAndByADryRun) {
  SpoilARowCount();
  const std::string damaged = ReadFile(Database());
  const std::string copy = (folder_.Path() / "mended.mdb").string();
  const Outcome repair = RunTool({"repair", Database(), "--to", copy});
  EXPECT_EQ(repair.code, kDone) << repair.out << repair.errors;
  EXPECT_EQ(RunTool({"check", copy}).code, kDone);
  EXPECT_EQ(RunTool({"repair", Database(), "--to", copy}).code, kUnusable);
  const Outcome dry = RunTool({"repair", "--dry-run", Database()});
  EXPECT_EQ(dry.code, kDone) << dry.errors;
  EXPECT_NE(dry.out.find("\nwould be mended: "), std::string::npos) << dry.out;
  EXPECT_EQ(RunTool({"repair", "--dry-run", "--to", copy, Database()}).code, kUsage);
  EXPECT_EQ(ReadFile(Database()), damaged);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

TEST_F(DamagedSite, ThatCannotBeMendedLeavesNoCopyAndIsNamedItself) {
  Overwrite(2 * kPage, std::string(kPage, '\xFF'));  // the catalog
  const std::string copy = (folder_.Path() / "mended.mdb").string();
  const Outcome repair = RunTool({"repair", Database(), "--to", copy});
  EXPECT_EQ(repair.code, kUnusable) << repair.out;
  EXPECT_NE(repair.errors.find("'" + Database() + "'"), std::string::npos) << repair.errors;
  EXPECT_EQ(repair.errors.find(copy), std::string::npos) << repair.errors;
  EXPECT_FALSE(std::filesystem::exists(copy));
}

#ifndef _WIN32  // There making links takes a right of its own.

TEST_F(DamagedSite, IsCopiedBesideTheFileThatALinkLeadsTo) {
  SpoilARowCount();
  const std::filesystem::path link = folder_.Path() / "link.mdb";
  std::filesystem::create_symlink(Database(), link);
  const Outcome repair = RunTool({"repair", link.string()});
  EXPECT_EQ(repair.code, kDone) << repair.errors;
  const std::string copy = repair.out.substr(20, repair.out.find('\n') - 20);
  EXPECT_EQ(std::filesystem::path(copy).parent_path(), Suite() / "Database");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

#endif

// What nobody else uses: a session was ended while it wrote, or met a damaged page.
TEST_F(DamagedSite, ThatIsSuspectIsMendedInEachWay) {
  const std::string states[] = {std::string(2, '\0'),
                                std::string("\x00\x01\x00\x01\x00\x01\x01\x00", 8)};
  for (const std::string& words : states) {
    WriteFile(Database(), sound_);
    Overwrite(jet::kJet4.header.commit_words, words);
    const std::string suspect = ReadFile(Database());
    EXPECT_EQ(RunTool({"check", Database()}).code, kFindings);
    const Outcome dry = RunTool({"repair", "--dry-run", Database()});
    EXPECT_EQ(dry.code, kDone) << dry.out << dry.errors;
    EXPECT_NE(dry.out.find("\nwould be mended: "), std::string::npos) << dry.out;
    const std::string copy = (folder_.Path() / "mended.mdb").string();
    std::filesystem::remove(copy);
    const Outcome to = RunTool({"repair", Database(), "--to", copy});
    EXPECT_EQ(to.code, kDone) << to.out << to.errors;
    EXPECT_EQ(RunTool({"check", copy}).code, kDone);
    EXPECT_EQ(ReadFile(Database()), suspect);
    const Outcome repair = RunTool({"repair", Database()});
    EXPECT_EQ(repair.code, kDone) << repair.out << repair.errors;
    EXPECT_EQ(RunTool({"check", Database()}).code, kDone);
    const std::string before = repair.out.substr(20, repair.out.find('\n') - 20);
    EXPECT_EQ(ReadFile(before), suspect);
    std::filesystem::remove(before);
  }
}

TEST_F(DamagedSite, ThatIsSoundIsNotRepairedAndNotCopied) {
  const Outcome repair = RunTool({"repair", Database()});
  EXPECT_EQ(repair.code, kDone);
  EXPECT_EQ(repair.out.substr(0, 16), "nothing to mend\n");
  EXPECT_EQ(ReadFile(Database()), sound_);
  EXPECT_EQ(Files(), (std::vector<std::string>{"NewDB.mdb", "ORVANTPlus.ini"}));
}

TEST_F(DamagedSite, IsDumpedPastTheDamageWhichIsNamedAtTheEnd) {
  const std::string whole = RunTool({"dump", Database()}).out;
  const std::vector<size_t> pages = DataPagesOf(u"Used_Lines");
  ASSERT_FALSE(pages.empty());
  Overwrite(pages.front() * kPage, std::string(kPage, '\xFF'));
  const Outcome dump = RunTool({"dump", Database()});
  EXPECT_EQ(dump.code, kFindings);
  EXPECT_NE(dump.errors.find("rdvsite dump: left out: rows of table Used_Lines: "),
            std::string::npos)
      << dump.errors;
  EXPECT_NE(dump.out.find("\n\"damage\":[\n\"rows of table Used_Lines: "), std::string::npos);
  EXPECT_EQ(dump.out.substr(dump.out.size() - 5), "\n]\n}\n");
  // All other tables are there as before.
  const auto table = [](const std::string& text, const std::string& name) {
    const size_t at = text.find("{\"name\":\"" + name + "\",\n");
    return at == std::string::npos ? "" : text.substr(at, text.find("]}", at) - at);
  };
  for (const NeededTable& needed : NeededTables()) {
    const std::string name = ToUtf8(needed.name);
    ASSERT_NE(table(whole, name), "") << name;
    if (name == "Used_Lines") continue;
    EXPECT_EQ(table(dump.out, name), table(whole, name)) << name;
  }
}

TEST_F(DamagedSite, IsDumpedPastARowThatCannotBeFound) {
  const auto rows_of = [](const std::string& dump) {
    const size_t table = dump.find("{\"name\":\"Used_Lines\",\n");
    const size_t begin = dump.find("\"rows\":[", table);
    const std::string rows = dump.substr(begin, dump.find("]]}", begin) - begin);
    size_t count = 0;
    for (size_t at = 0; (at = rows.find("\n  [", at)) != std::string::npos; ++at) ++count;
    return count;
  };
  const size_t all = rows_of(RunTool({"dump", Database()}).out);
  ASSERT_GT(all, 10u);
  // The place of its second row; behind the page's head of 14 bytes each place takes two.
  Overwrite(DataPagesOf(u"Used_Lines").front() * kPage + 14 + 2, std::string("\x01\0", 2));
  const Outcome dump = RunTool({"dump", Database()});
  EXPECT_EQ(dump.code, kFindings);
  EXPECT_THAT(dump.errors, testing::HasSubstr("row 1 lies outside"));
  // A row ends where the one before it begins: one more cannot be told.
  EXPECT_EQ(rows_of(dump.out), all - 2);
}

}  // namespace
}  // namespace rdv
