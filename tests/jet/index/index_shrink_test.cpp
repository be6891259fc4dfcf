// What becomes of an index of several levels while its rows go, in orders that empty its nodes in
// different ways: from either end, from the middle, and leaving single children behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_page.h"
#include "data/jet/rows/usage_map.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

constexpr size_t kRowsAtFirst = 1500;
constexpr size_t kRowsBetweenChecks = 250;

// Long, and different from the first letters on, so that few share a page: in order of `number`.
Text KeyOf(size_t number) {
  Text key(200, static_cast<char16_t>(u'a' + number % 26));
  for (size_t place = 4; place-- > 0; number /= 10)
    key[place] = static_cast<char16_t>(u'0' + number % 10);
  return key;
}

class IndexShrink : public testing::Test {
 protected:
  void SetUp() override {
    const Text path = PathText(folder_.Path() / "shrink.mdb");
    Engine::Create(path);
    engine_ = Engine::Open(path);
    Engine::WriteScope scope(*engine_);
    engine_->CreateTable(
        {.name = u"Rows",
         .columns = {{.name = u"Key", .type = ColumnType::Text, .length = 250}},
         .indexes = {{.name = u"PrimaryKey", .columns = {{u"Key"}}, .primary = true}}});
    for (size_t i = 0; i < kRowsAtFirst; ++i) {
      const Assignment values[] = {{0, KeyOf(i)}};
      rows_.push_back(engine_->Insert(engine_->Table(u"Rows"), values));
    }
    scope.Commit();
  }

  // Leaves above zero levels of nodes.
  int Levels() {
    const Engine::ReadScope scope(*engine_);
    const TableDefinition& table = engine_->Table(u"Rows");
    int levels = 1;
    IndexPageView page(engine_->File(), table.Page(), table.indexes[0].root);
    for (; !page.IsLeaf(); ++levels) {
      const auto first = page.EntryAt(0);
      const uint32_t child = first ? page.Child(*first) : page.Tail();
      page = IndexPageView(engine_->File(), table.Page(), child);
    }
    return levels;
  }
  size_t Pages() {
    const Engine::ReadScope scope(*engine_);
    return UsageMap(engine_->File(), engine_->Table(u"Rows").indexes[0].map).Pages().size();
  }

  void ExpectSound(size_t rows_left) {
    const Engine::ReadScope scope(*engine_);
    for (const Finding& finding : CheckFile(engine_->File()).findings)
      ADD_FAILURE() << ToUtf8(finding.text) << " with " << rows_left << " rows left";
    const TableDefinition& table = engine_->Table(u"Rows");
    size_t entries = 0;
    IndexCursor cursor(engine_->File(), table, table.indexes[0]);
    for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) ++entries;
    EXPECT_EQ(entries, rows_left);
  }

  void DeleteInOrder(const std::vector<size_t>& order) {
    EXPECT_GE(Levels(), 3);
    const size_t pages = Pages();
    size_t left = kRowsAtFirst;
    for (size_t start = 0; start < order.size() && !HasFailure(); start += kRowsBetweenChecks) {
      Engine::WriteScope scope(*engine_);
      const size_t end = std::min(order.size(), start + kRowsBetweenChecks);
      for (size_t i = start; i < end; ++i, --left)
        engine_->Delete(engine_->Table(u"Rows"), rows_[order[i]]);
      scope.Commit();
      ExpectSound(left);
    }
    EXPECT_LT(Pages(), pages);
  }

  static std::vector<size_t> Ascending() {
    std::vector<size_t> order(kRowsAtFirst);
    std::iota(order.begin(), order.end(), size_t{0});
    return order;
  }
  void ExpectEmpty() {
    EXPECT_EQ(Levels(), 1);
    EXPECT_EQ(Pages(), 1u);
  }

  TemporaryFolder folder_;
  std::unique_ptr<Engine> engine_;
  std::vector<RowId> rows_;
};

TEST_F(IndexShrink, FromTheFirstRowOn) {
  DeleteInOrder(Ascending());
  ExpectEmpty();
}

TEST_F(IndexShrink, FromTheLastRowBackwards) {
  std::vector<size_t> order = Ascending();
  std::ranges::reverse(order);
  DeleteInOrder(order);
  ExpectEmpty();
}

TEST_F(IndexShrink, FromTheMiddleToBothEnds) {
  std::vector<size_t> order = Ascending();
  std::ranges::stable_sort(order, {}, [](size_t row) {
    return row < kRowsAtFirst / 2 ? kRowsAtFirst / 2 - row : row - kRowsAtFirst / 2;
  });
  DeleteInOrder(order);
  ExpectEmpty();
}

TEST_F(IndexShrink, InAnyOrder) {
  std::vector<size_t> order = Ascending();
  std::mt19937 random(5);
  std::ranges::shuffle(order, random);
  DeleteInOrder(order);
  ExpectEmpty();
}

// One row of each fifty stays: nodes are left with one child.
TEST_F(IndexShrink, AllButAFewAndThenGrowsAgain) {
  std::vector<size_t> order = Ascending();
  std::erase_if(order, [](size_t row) { return row % 50 == 25; });
  DeleteInOrder(order);
  {
    Engine::WriteScope scope(*engine_);
    for (const size_t row : order) {
      const Assignment values[] = {{0, KeyOf(row)}};
      engine_->Insert(engine_->Table(u"Rows"), values);
    }
    scope.Commit();
  }
  ExpectSound(kRowsAtFirst);
  EXPECT_GE(Levels(), 3);
}

}  // namespace
}  // namespace rdv::jet
