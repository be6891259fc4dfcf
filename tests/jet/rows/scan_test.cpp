// Scans of tables that are larger than what is kept in memory, and what they pass over.
#include <gtest/gtest.h>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

constexpr int16_t kScannedRows = 3000;

// A table of rows that fill a page in fours, in a file of its own.
class ScanTest : public testing::Test {
 protected:
  void SetUp() override {
    path_ = PathText(folder_.Path() / "scan.mdb");
    Engine::Create(path_);
    const auto engine = Engine::Open(path_);
    Engine::WriteScope scope(*engine);
    engine->CreateTable(
        {.name = u"Rows",
         .columns = {{.name = u"Number", .type = ColumnType::Integer},
                     {.name = u"Long", .type = ColumnType::Long},
                     {.name = u"Filling", .type = ColumnType::Binary, .length = 500},
                     {.name = u"More", .type = ColumnType::Binary, .length = 500}},
         .indexes = {}});
    const TableDefinition& table = engine->Table(u"Rows");
    for (int16_t i = 0; i < kScannedRows; ++i) {
      std::vector<Assignment> values = {{1, int32_t{i} * 1000}, {2, Binary(480)}, {3, Binary(480)}};
      if (i % 5 != 0) values.push_back({0, static_cast<int16_t>(i % 100)});
      engine->Insert(table, values);
    }
    scope.Commit();
  }

  static int CountRows(Engine& engine) {
    int rows = 0;
    for (TableScan scan(engine.File(), engine.Table(u"Rows")); scan.Next();) ++rows;
    return rows;
  }

  // Pages that a second scan in the same scope has to read again.
  uint64_t ReadAgain(size_t cache_pages) {
    const auto engine = Engine::Open(path_, {.cache_pages = cache_pages});
    const Engine::ReadScope scope(*engine);
    EXPECT_EQ(CountRows(*engine), kScannedRows);
    const uint64_t before = engine->Counters().pages_read;
    EXPECT_EQ(CountRows(*engine), kScannedRows);
    return engine->Counters().pages_read - before;
  }

  TemporaryFolder folder_;
  Text path_;
};

TEST_F(ScanTest, PagesAreGivenBackWhereTheyAreMoreThanTheCacheKeeps) {
  constexpr uint64_t kLeast = kScannedRows / 4 - 50;
  EXPECT_GE(ReadAgain(20), kLeast);
  EXPECT_EQ(ReadAgain(5000), 0u);
}

TEST_F(ScanTest, TwoScansOfTheSamePagesDoNotTakeThemFromEachOther) {
  const auto engine = Engine::Open(path_, {.cache_pages = 1});
  const Engine::ReadScope scope(*engine);
  const TableDefinition& table = engine->Table(u"Rows");
  TableScan slow(engine->File(), table);
  TableScan fast(engine->File(), table);
  int32_t expected = 0;
  while (slow.Next()) {
    fast.Next();
    fast.Next();
    EXPECT_EQ(slow.Row().Get(table.columns[1]), Value(expected));
    expected += 1000;
  }
  EXPECT_EQ(expected, int32_t{kScannedRows} * 1000);
}

TEST_F(ScanTest, RowsWithAnotherNumberArePassedOverAndNoOther) {
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  const TableDefinition& table = engine->Table(u"Rows");
  const auto count = [&](size_t column, const Value& value) {
    TableScan scan(engine->File(), table);
    scan.SkipOtherThan(table.columns[column], value);
    int rows = 0;
    while (scan.Next()) rows += scan.Row().Get(table.columns[column]) == value ? 1 : 0;
    return rows;
  };
  EXPECT_EQ(count(0, int16_t{7}), kScannedRows / 100);
  EXPECT_EQ(count(0, int16_t{5}), 0);  // Null in all rows that would have it
  EXPECT_EQ(count(1, int32_t{2999000}), 1);
  EXPECT_EQ(count(1, int32_t{1}), 0);
  EXPECT_EQ(count(2, Binary(480)), kScannedRows);  // nothing is passed over
}

}  // namespace
}  // namespace rdv::jet
