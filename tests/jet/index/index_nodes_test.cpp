// Nodes as other programs may leave them: an entry above that is larger than all below it, and a
// last child with an entry in the place of a tail. Both are read and written all the same.
#include <gtest/gtest.h>

#include <functional>

#include "data/jet/catalog/catalog.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/index_page_writer.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/table/constraints.h"
#include "runtime/error.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

constexpr int32_t kNumbers = 3000;
constexpr std::chrono::milliseconds kNodesWait{100};
constexpr size_t kCachePages = 64;
constexpr int32_t kStep = 2;  // between the numbers that are there

class IndexNodes : public testing::Test {
 protected:
  void SetUp() override {
    path_ = PathText(folder_.Path() / "nodes.mdb");
    Engine::Create(path_);
    const auto engine = Engine::Open(path_);
    Engine::WriteScope scope(*engine);
    engine->CreateTable(
        {.name = u"Rows",
         .columns = {{.name = u"Number", .type = ColumnType::Long}},
         .indexes = {{.name = u"PrimaryKey", .columns = {{u"Number"}}, .primary = true}}});
    for (int32_t i = 1; i <= kNumbers; ++i) Insert(*engine, i * kStep);
    scope.Commit();
  }

  static RowId Insert(Engine& engine, int32_t number) {
    const Assignment values[] = {{0, number}};
    return engine.Insert(engine.Table(u"Rows"), values);
  }

  void Insert(int32_t number) {
    const auto engine = Engine::Open(path_);
    Engine::WriteScope scope(*engine);
    Insert(*engine, number);
    scope.Commit();
  }

  // Changes the index's root, which is a node.
  void ChangeRoot(const std::function<void(IndexPageImage&)>& change) {
    Pager pager(NativeFileSystem(), path_, kNodesWait, kCachePages);
    pager.BeginWrite();
    {
      const FileReader file(pager);
      const WriteContext context{pager, file};
      const TableDefinition table = Catalog(file).Table(u"Rows");
      const uint32_t root = table.indexes[0].root;
      IndexPageImage image = LoadIndexPage(context, table.Page(), root);
      ASSERT_FALSE(image.leaf);
      ASSERT_GE(image.entries.size(), 2u);
      change(image);
      ASSERT_TRUE(StoreIndexPage(context, table.Page(), root, image));
    }
    pager.Commit();
    pager.Close();
  }

  size_t EntriesInOrder() {
    const auto engine = Engine::Open(path_);
    const Engine::ReadScope scope(*engine);
    const TableDefinition& table = engine->Table(u"Rows");
    IndexCursor cursor(engine->File(), table, table.indexes[0]);
    size_t count = 0;
    std::vector<uint8_t> last;
    for (cursor.SeekFirst(); cursor.Valid(); cursor.Next(), ++count) {
      EXPECT_TRUE(std::ranges::lexicographical_compare(last, cursor.Key())) << count;
      last.assign(cursor.Key().begin(), cursor.Key().end());
    }
    return count;
  }

  bool HasNumber(int32_t number) {
    const auto engine = Engine::Open(path_);
    const Engine::ReadScope scope(*engine);
    const TableDefinition& table = engine->Table(u"Rows");
    const Value values[] = {number};
    return HasKey(engine->File(), table, table.indexes[0],
                  BuildKey(engine->File(), table, table.indexes[0], values));
  }

  TemporaryFolder folder_;
  Text path_;
};

// The key's number, at the end of it: the flag comes first.
int32_t NumberOf(Bytes entry) {
  return static_cast<int32_t>(Load32BigEndian(entry.data() + 1) ^ 0x80000000u);
}

TEST_F(IndexNodes, ANumberBetweenALeafAndALargerEntryAboveGoesIntoThatLeaf) {
  int32_t free = 0;
  ChangeRoot([&](IndexPageImage& root) {
    free = NumberOf(root.entries[0]) + 1;
    // As if a row with that number had been the leaf's last one.
    Store32BigEndian(&root.entries[0][1], static_cast<uint32_t>(free) ^ 0x80000000u);
  });
  Insert(free);
  EXPECT_TRUE(HasNumber(free));
  EXPECT_THROW(Insert(free), RuntimeError);
  EXPECT_THROW(Insert(free + 1), RuntimeError) << "the next leaf has it";
  EXPECT_EQ(EntriesInOrder(), kNumbers + 1u);
}

TEST_F(IndexNodes, AChainOfNodesDeeperThanAnyTreeIsFoundAndNotFollowed) {
  constexpr size_t kChain = 200;
  {
    Pager pager(NativeFileSystem(), path_, kNodesWait, kCachePages);
    pager.BeginWrite();
    const FileReader file(pager);
    const WriteContext context{pager, file};
    const TableDefinition table = Catalog(file).Table(u"Rows");
    PageAllocator allocator(context);
    IndexPageImage root = LoadIndexPage(context, table.Page(), table.indexes[0].root);
    for (size_t i = 0; i < kChain; ++i) {
      IndexPageImage node;
      node.leaf = false;
      node.tail = root.tail;
      const uint32_t page = allocator.Allocate();
      ASSERT_TRUE(StoreIndexPage(context, table.Page(), page, node));
      root.tail = page;
    }
    ASSERT_TRUE(StoreIndexPage(context, table.Page(), table.indexes[0].root, root));
    pager.Commit();
    pager.BeginRead();
    const CheckReport report = CheckFile(file);
    pager.EndRead();
    const auto index = std::ranges::find(report.findings, FindingKind::Index, &Finding::kind);
    ASSERT_NE(index, report.findings.end());
    EXPECT_NE(index->text.find(u"endless"), Text::npos) << ToUtf8(index->text);
    pager.Close();
  }
  EXPECT_THROW(HasNumber(kNumbers * kStep + 1), RuntimeError);
}

TEST_F(IndexNodes, WithoutATailTheLastChildTakesWhatIsBeyondAllEntries) {
  ChangeRoot([](IndexPageImage& root) {
    // The last child gets an entry, that of its last row.
    EntryBytes last = root.entries.back();
    Store32BigEndian(&last[1], static_cast<uint32_t>(kNumbers * kStep) ^ 0x80000000u);
    Store32BigEndian(&last[last.size() - kEntryChildSize], root.tail);
    root.entries.push_back(last);
    root.tail = 0;
  });
  EXPECT_TRUE(HasNumber(kNumbers * kStep));
  EXPECT_FALSE(HasNumber(kNumbers * kStep + 1));
  Insert(kNumbers * kStep + 1);
  EXPECT_TRUE(HasNumber(kNumbers * kStep + 1));
  EXPECT_THROW(Insert(kNumbers * kStep + 1), RuntimeError);
  EXPECT_EQ(EntriesInOrder(), kNumbers + 1u);
}

}  // namespace
}  // namespace rdv::jet
