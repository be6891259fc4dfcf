// The indexes of real files: what is stored against what the rows say.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/index_page.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/rows/usage_map.h"
#include "runtime/error.h"
#include "tests/jet/corpus.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

struct StoredEntry {
  Key key;
  RowId row;
  auto operator<=>(const StoredEntry&) const = default;
};

std::vector<StoredEntry> Walk(const FileReader& file, const TableDefinition& table,
                              const RealIndex& index) {
  std::vector<StoredEntry> entries;
  IndexCursor cursor(file, table, index);
  for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
    entries.push_back({Key(cursor.Key().begin(), cursor.Key().end()), cursor.Row()});
  }
  return entries;
}

// The entries that the rows ask for, in order. Rows whose text has no known key go to `unknown`.
std::vector<StoredEntry> Expected(const FileReader& file, const TableDefinition& table,
                                  const RealIndex& index, std::set<RowId>& unknown) {
  std::vector<StoredEntry> entries;
  for (TableScan scan(file, table); scan.Next();) {
    try {
      if (auto key = KeyOfRow(file, table, index, scan.Row())) {
        entries.push_back({std::move(*key), scan.Row().Id()});
      }
    } catch (const RuntimeError&) {
      unknown.insert(scan.Row().Id());
    }
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

void CollectPages(const FileReader& file, const TableDefinition& table, uint32_t page,
                  std::set<uint32_t>& pages) {
  ASSERT_TRUE(pages.insert(page).second) << "page " << page << " is met twice";
  const IndexPageView view(file, table.Page(), page);
  if (view.IsLeaf()) return;
  for (auto entry = view.EntryAt(0); entry; entry = view.EntryAt(entry->end))
    CollectPages(file, table, view.Child(*entry), pages);
  if (view.Tail() != 0) CollectPages(file, table, view.Tail(), pages);
}

class IndexesOfFile : public testing::TestWithParam<std::string> {
 protected:
  // Calls `check` for each index of each local table, the catalog's own included.
  template <typename Check>
  void ForEachIndex(Check check) {
    OpenFile file(GetParam());
    const Catalog catalog(file.Reader());
    for (const CatalogObject& object : catalog.All()) {
      if (!object.IsLocalTable()) continue;
      const TableDefinition table = catalog.Table(object);
      for (const RealIndex& index : table.indexes) {
        SCOPED_TRACE(ToUtf8(table.name) + ", index " + std::to_string(index.position));
        check(file.Reader(), table, index);
      }
    }
  }
};

// Han characters have no code in the table of the sort order; one row of each of these has them.
size_t RowsWithoutKnownKey(const std::string& file) {
  const bool has_han = file == "corpus/jet4/testUnicodeCompV2003.mdb" ||
                       file == "sites/indexed/NewDB.mdb" || file == "foreign/indexed/NewDB.mdb";
  return has_han ? 1 : 0;
}

TEST_P(IndexesOfFile, HoldExactlyTheKeysThatTheRowsGive) {
  size_t entries = 0;
  std::set<RowId> all_unknown;
  ForEachIndex([&](const FileReader& file, const TableDefinition& table, const RealIndex& index) {
    std::set<RowId> unknown;
    const std::vector<StoredEntry> expected = Expected(file, table, index, unknown);
    std::vector<StoredEntry> stored = Walk(file, table, index);
    entries += stored.size();
    EXPECT_TRUE(std::is_sorted(stored.begin(), stored.end()));
    const size_t before = stored.size();
    std::erase_if(stored, [&](const StoredEntry& entry) { return unknown.contains(entry.row); });
    EXPECT_EQ(before - stored.size(), unknown.size());
    EXPECT_EQ(stored.size(), expected.size());
    EXPECT_TRUE(stored == expected);
    all_unknown.insert(unknown.begin(), unknown.end());
  });
  EXPECT_GT(entries, 0u);
  EXPECT_EQ(all_unknown.size(), RowsWithoutKnownKey(GetParam()));
}

TEST_P(IndexesOfFile, AreFoundByEveryKeyAndByItsBeginning) {
  ForEachIndex([](const FileReader& file, const TableDefinition& table, const RealIndex& index) {
    const std::vector<StoredEntry> entries = Walk(file, table, index);
    IndexCursor cursor(file, table, index);
    // In large tables some hundred keys, spread over all of them.
    const size_t step = entries.size() / 300 + 1;
    for (size_t i = 0; i < entries.size(); i += step) {
      const auto same_key =
          std::lower_bound(entries.begin(), entries.end(), StoredEntry{entries[i].key, {}});
      cursor.Seek(entries[i].key);
      ASSERT_TRUE(cursor.Valid());
      EXPECT_EQ(cursor.Row(), same_key->row);
      const Bytes start = Bytes(entries[i].key).first(entries[i].key.size() / 2);
      const auto same_start = std::lower_bound(entries.begin(), entries.end(),
                                               StoredEntry{Key(start.begin(), start.end()), {}});
      cursor.Seek(start);
      ASSERT_TRUE(cursor.Valid());
      EXPECT_EQ(cursor.Row(), same_start->row);
      EXPECT_TRUE(cursor.KeyStartsWith(start));
    }
  });
}

TEST_P(IndexesOfFile, OwnExactlyThePagesThatTheirMapsList) {
  ForEachIndex([](const FileReader& file, const TableDefinition& table, const RealIndex& index) {
    std::set<uint32_t> pages;
    CollectPages(file, table, index.root, pages);
    const std::vector<uint32_t> listed = UsageMap(file, index.map).Pages();
    EXPECT_EQ(std::vector<uint32_t>(pages.begin(), pages.end()), listed);
  });
}

INSTANTIATE_TEST_SUITE_P(Files, IndexesOfFile, testing::ValuesIn(AllFiles()),
                         [](const auto& file) { return TestName(file.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(IndexesOfFile);

TEST(StoredKeyOfRow, IsFoundForATextThatNoKeyIsKnownOf) {
  const char* name = "sites/indexed/NewDB.mdb";
  OpenFile file(name);
  const TableDefinition table = Catalog(file.Reader()).Table(u"Used_Lines");
  int unknown = 0;
  for (const RealIndex& index : table.indexes) {
    std::map<RowId, Key> stored;
    for (const StoredEntry& entry : Walk(file.Reader(), table, index))
      stored[entry.row] = entry.key;
    for (TableScan scan(file.Reader(), table); scan.Next();) {
      const auto key = StoredKeyOfRow(file.Reader(), table, index, scan.Row());
      ASSERT_TRUE(key);
      EXPECT_EQ(*key, stored[scan.Row().Id()]);
      const std::vector<Value> values = IndexValuesOfRow(table, index, scan.Row());
      if (!TryBuildKey(file.Reader(), table, index, values)) ++unknown;
    }
  }
  EXPECT_EQ(unknown, 1);
}

// The counts that were taken of these files independently: local tables, rows, index entries.
struct FileCounts {
  const char* name;
  size_t tables;
  size_t rows;
  size_t entries;
};

class CountsOfFile : public testing::TestWithParam<FileCounts> {};

TEST_P(CountsOfFile, AreThoseTakenIndependently) {
  const FileCounts& expected = GetParam();
  OpenFile file(expected.name);
  const Catalog catalog(file.Reader());
  size_t tables = 0, rows = 0, entries = 0;
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    ++tables;
    const TableDefinition table = catalog.Table(object);
    for (TableScan scan(file.Reader(), table); scan.Next();) ++rows;
    for (const RealIndex& index : table.indexes) {
      entries += Walk(file.Reader(), table, index).size();
    }
  }
  EXPECT_EQ(tables, expected.tables);
  EXPECT_EQ(rows, expected.rows);
  EXPECT_EQ(entries, expected.entries);
}

INSTANTIATE_TEST_SUITE_P(Files, CountsOfFile,
                         testing::ValuesIn(test::TrialsAtHand<FileCounts>(
                             {{"corpus/jet3/testIndexCodesV1997.mdb", 38, 1790, 3429},
                              {"corpus/jet4/indexTestV2000.mdb", 13, 182, 249},
                              {"corpus/jet4/compIndexTestV2003.mdb", 10, 659, 723},
                              {"corpus/jet4/testIndexPropertiesV2003.mdb", 16, 241, 348},
                              {"corpus/jet4/testUnicodeCompV2003.mdb", 12, 177, 272},
                              {"corpus/jet4/overflowTestV2000.mdb", 6, 87, 99},
                              {"corpus/jet4/test2V2000.mdb", 6, 69, 87},
                              {"corpus/blank/adox_jet4.mdb", 4, 24, 32},
                              {"corpus/blank/emptyJet4.mdb", 4, 24, 32}},
                             &FileCounts::name)),
                         [](const auto& file) { return TestName(file.param.name); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CountsOfFile);

}  // namespace
}  // namespace rdv::jet
