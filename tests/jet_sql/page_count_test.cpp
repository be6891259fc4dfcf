// How many pages a statement reads: what the key leads to, however large the file.
#include <gtest/gtest.h>

#include <filesystem>

#include "data/commands.h"
#include "data/jet/engine.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/statement_parser.h"

namespace rdv::jet::sql {
namespace {

class PageCounts : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(Sites())) GTEST_SKIP() << "the sample sites are not at hand";
  }

  static std::filesystem::path Sites() { return std::filesystem::path(RDV_SHARED_DIR) / "sites"; }

  // Pages that one command reads in a file that has just been opened, and the rows that it gives.
  static std::pair<uint64_t, size_t> Read(const char* site, Command command,
                                          const std::vector<Argument>& arguments) {
    const auto engine = Engine::Open((Sites() / site / "NewDB.mdb").u16string());
    const uint64_t before = engine->Counters().pages_read;
    const Engine::ReadScope scope(*engine);
    const auto select = std::get<Select>(ParseStatement(DefinitionOf(command).statement));
    const RowTable rows = RunSelect(engine->File(), engine->Table(select.table), select, arguments);
    return {engine->Counters().pages_read - before, rows.rows.size()};
  }
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

}  // namespace
}  // namespace rdv::jet::sql
