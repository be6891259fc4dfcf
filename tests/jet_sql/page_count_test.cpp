// How many pages a statement reads and writes: what the key leads to, however large the file. And
// what several of them flush.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "data/commands.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/parameters.h"
#include "data/jet/sql/statement_parser.h"
#include "tests/support/site_fixture.h"

namespace rdv::jet::sql {
namespace {

constexpr TextView kOneLine =
    u" WHERE Config_ID = a AND Base_Slot_No = b AND Slot_Offset = c AND Line = d";

class PageCounts : public testing::Test {
 protected:
  static std::filesystem::path FileOf(const std::string& site) {
    return sites::SiteFolder(site) / "NewDB.mdb";
  }

  struct Pages {
    uint64_t read = 0;
    uint64_t written = 0;
  };

  // What a statement that writes one row costs in a copy of a site that has just been opened, and
  // in which a row has been deleted before.
  Pages Write(const char* site, TextView statement, const std::vector<Argument>& arguments) const {
    const auto path = CopyOf(site);
    RunOnce(path, u"DELETE FROM Used_Lines" + Text(kOneLine), {u"1", u"1", u"1", u"12"});
    return RunOnce(path, statement, arguments);
  }

  std::filesystem::path CopyOf(const char* site) const {
    const auto path = folder_.Path() / "copy.mdb";
    std::filesystem::remove(path);
    std::filesystem::copy_file(FileOf(site), path);
    std::filesystem::permissions(path, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    return path;
  }

  // Changes one line after the other, each in a statement of its own.
  static void Apply(Engine& engine, const std::vector<Text>& lines, const Text& volume) {
    const Statement update =
        ParseStatement(u"UPDATE Used_Lines SET Volume_ID = v" + Text(kOneLine));
    for (const Text& line : lines) {
      Engine::WriteScope scope(engine);
      EXPECT_EQ(Run(engine, update, {volume, u"1500", u"1", u"1", line}), 1);
      scope.Commit();
    }
  }

  // The pages that hold the lines of a unit.
  static std::set<uint32_t> PagesOfUnit(Engine& engine, int16_t configuration) {
    const Engine::ReadScope scope(engine);
    const TableDefinition& table = engine.Table(u"Used_Lines");
    const Column& column = *table.FindColumn(u"Config_ID");
    std::set<uint32_t> pages;
    for (TableScan scan(engine.File(), table); scan.Next();) {
      if (scan.Row().Get(column) == Value(configuration)) pages.insert(scan.Row().Id().page);
    }
    return pages;
  }

  // As many pages are written in a small and in a large file, and no more are read in the large one
  // than two more levels of the index, a page of each of the table's two maps, and what is read of
  // rows beside.
  void ExpectSameCost(TextView statement, uint64_t written, const Text& line,
                      std::vector<Argument> small_arguments = {}, uint64_t pages_beside = 0) {
    std::vector<Argument> large_arguments = small_arguments;
    small_arguments.insert(small_arguments.end(), {u"1", u"1", u"1", line});
    large_arguments.insert(large_arguments.end(), {u"1500", u"1", u"1", line});
    const Pages small = Write("plain", statement, small_arguments);
    const Pages large = Write("large", statement, large_arguments);
    EXPECT_EQ(small.written, written);
    EXPECT_EQ(large.written, written);
    EXPECT_GE(small.read, written);
    EXPECT_LE(large.read, small.read + 4 + pages_beside);
  }

  // Pages that one command reads in a file that has just been opened, and the rows that it gives.
  static std::pair<uint64_t, size_t> Read(const char* site, Command command,
                                          const std::vector<Argument>& arguments) {
    const auto engine = Engine::Open(FileOf(site).u16string());
    const uint64_t before = engine->Counters().pages_read;
    const Engine::ReadScope scope(*engine);
    const auto select = std::get<Select>(ParseStatement(DefinitionOf(command).statement));
    const auto plan = MakePlan(select, engine->Table(select.table));
    const CommandResult result = plan->Run(*engine, arguments);
    return {engine->Counters().pages_read - before, result.rows->rows.size()};
  }

 private:
  static Pages RunOnce(const std::filesystem::path& path, TextView statement,
                       const std::vector<Argument>& arguments) {
    const auto engine = Engine::Open(path.u16string());
    const EngineCounters before = engine->Counters();
    {
      Engine::WriteScope scope(*engine);
      EXPECT_EQ(Run(*engine, ParseStatement(statement), arguments), 1);
      scope.Commit();
    }
    const EngineCounters& after = engine->Counters();
    EXPECT_EQ(after.commits, before.commits + 1);
    return {after.pages_read - before.pages_read, after.pages_written - before.pages_written};
  }

  static int Run(Engine& engine, const Statement& statement,
                 const std::vector<Argument>& arguments) {
    const auto plan = MakePlan(statement, engine.Table(TableOf(statement)));
    return plan->Run(engine, arguments).rows_written;
  }

  rdv::test::TemporaryFolder folder_;
};

TEST_F(PageCounts, LinesOfAUnitAreSoughtByTheKey) {
  const auto [small_pages, small_rows] = Read("plain", Command::Get_Used_Lines, {u"1"});
  const auto [large_pages, large_rows] = Read("large", Command::Get_Used_Lines, {u"1500"});
  EXPECT_EQ(small_rows, 12u);
  EXPECT_EQ(large_rows, 12u);
  EXPECT_GT(large_pages, 0u);
  // The catalog and the definition as in the small file, a few more levels of the index, and at
  // most a page for each row, as they are scattered.
  EXPECT_LE(large_pages, small_pages + 3 + large_rows);
}

TEST_F(PageCounts, OneLineIsSoughtByTheKey) {
  const auto [pages, rows] = Read("large", Command::Get_Specific_Line, {u"1500", u"1", u"1", u"3"});
  EXPECT_EQ(rows, 1u);
  EXPECT_LE(pages, 20u);
}

TEST_F(PageCounts, ASearchThatCannotMatchReadsNoRows) {
  const auto [pages, rows] = Read("large", Command::Get_Used_Lines, {u"99999"});
  const auto [found_pages, found_rows] = Read("large", Command::Get_Used_Lines, {u"1500"});
  EXPECT_EQ(rows, 0u);
  EXPECT_LT(pages, found_pages);
}

// The pages of the unit's other eleven lines come into the journal with the line's own.
TEST_F(PageCounts, AnUpdateByKeyWritesTheRowsPageAlone) {
  ExpectSameCost(u"UPDATE Used_Lines SET Volume_ID = 7, Mode_Caption = 'x'" + Text(kOneLine), 1,
                 u"3", {}, 11);
}

TEST_F(PageCounts, AnInsertionWritesTheRowsPageTheIndexAndTheCounts) {
  ExpectSameCost(
      u"INSERT INTO Used_Lines (Volume_Name, Config_ID, Base_Slot_No, Slot_Offset, Line) "
      u"VALUES (v, a, b, c, d)",
      3, u"77", {u"High"});
}

// In the large file the map of the pages with room as well. In the small one the deletion before
// was on the same page, which that map has named since then.
TEST_F(PageCounts, ADeletionWritesTheRowsPageTheIndexTheCountsAndAMapThatDoesNotNameThePageYet) {
  const Text statement = u"DELETE FROM Used_Lines" + Text(kOneLine);
  EXPECT_EQ(Write("plain", statement, {u"1", u"1", u"1", u"3"}).written, 3u);
  EXPECT_EQ(Write("large", statement, {u"1500", u"1", u"1", u"3"}).written, 4u);
}

const std::vector<Text> kTenLines = {u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10"};

// In whichever order they are written.
TEST_F(PageCounts, AnApplyOfTenRowsOnAsManyPagesFlushesTheJournalTwiceAndTheFileOnce) {
  for (const auto& lines : {kTenLines, std::vector(kTenLines.rbegin(), kTenLines.rend())}) {
    const auto engine = Engine::Open(CopyOf("large").u16string());
    ASSERT_GE(PagesOfUnit(*engine, 1500).size(), 10u);
    Apply(*engine, lines, u"7");
    EXPECT_EQ(engine->Counters().commits, 10u);
    EXPECT_EQ(engine->Counters().flushes, 1u);
    engine->Close();
    EXPECT_EQ(engine->Counters().flushes, 3u);
  }
}

}  // namespace
}  // namespace rdv::jet::sql
