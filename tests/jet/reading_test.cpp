// Finding tables and rows: how many pages it takes, and what broken files answer.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "data/jet/dump/dump.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/rows/usage_map.h"
#include "runtime/error.h"
#include "tests/jet/corpus.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

const RealIndex& PrimaryKey(const TableDefinition& table) {
  for (const LogicalIndex& index : table.logical_indexes) {
    if (index.kind == LogicalIndexKind::Primary) return table.indexes[index.real_index];
  }
  throw std::logic_error("the table has no primary key");
}

// Reads everything there is to read: all rows of all tables, all indexes in full, all maps.
void ReadAll(const FileReader& file) {
  DumpDatabase(file, {}, [](std::string_view) {});
  const Catalog catalog(file);
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    const TableDefinition table = catalog.Table(object);
    UsageMap(file, table.owned_map).Pages();
    UsageMap(file, table.free_map).Pages();
    for (const RealIndex& index : table.indexes) {
      IndexCursor cursor(file, table, index);
      RowView row(file, table);
      for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
        FetchRow(file, table, cursor.Row(), row);
      }
    }
  }
}

// The description of the error that reading the file ends with, "" for none.
Text ErrorOfReading(std::vector<uint8_t> bytes, const std::string& name) {
  try {
    OpenFile file(std::move(bytes), name);
    ReadAll(file.Reader());
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Source(), u"Microsoft JET Database Engine");
    return error.Description();
  }
  return u"";
}

TEST(Catalog, FindsATableWithoutRegardToCase) {
  OpenFile file("sites/plain/NewDB.mdb");
  const TableDefinition table = Catalog(file.Reader()).Table(u"uSED_lINES");
  EXPECT_EQ(table.name, u"Used_Lines");
  EXPECT_EQ(table.columns.size(), 24u);
  ASSERT_NE(table.FindColumn(u"CONFIG_ID"), nullptr);
  EXPECT_EQ(table.FindColumn(u"CONFIG_ID")->name, u"Config_ID");
}

TEST(Catalog, ReportsATableThatIsNotThere) {
  OpenFile file("sites/broken/10-missing-table/NewDB.mdb");
  const Catalog catalog(file.Reader());
  for (const TextView name : {u"SR_Mode_Type_Names", u"漢字"}) {
    try {
      catalog.Table(name);
      ADD_FAILURE() << "a table that is not there was found";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Number(), -2147217865);
      EXPECT_EQ(error.Description(),
                u"The Microsoft Jet database engine cannot find the input table or query '" +
                    Text(name) + u"'. Make sure it exists and that its name is spelled correctly.");
    }
  }
}

// Opening and finding a table: the header, the catalog's definition, its index, its row, the
// table's definition. Each level of the catalog's index adds one; it has one level here.
TEST(PagesRead, OfOpeningAndFindingATableAreAsManyInALargeFileAsInASmallOne) {
  for (const char* name : {"sites/plain/NewDB.mdb", "sites/large/NewDB.mdb"}) {
    OpenFile file(name);
    file.ResetCount();
    const Catalog catalog(file.Reader());
    EXPECT_EQ(file.PagesRead(), 1) << name;
    catalog.Table(u"Used_Lines");
    EXPECT_LE(file.PagesRead(), 5) << name;
  }
}

// Twelve lines of one configuration: one page per level of the index, at most one more leaf, and
// one page per row.
TEST(PagesRead, OfTheLinesOfOneConfigurationDoNotGrowWithTheFile) {
  for (const char* name : {"sites/plain/NewDB.mdb", "sites/large/NewDB.mdb"}) {
    OpenFile file(name);
    const TableDefinition table = Catalog(file.Reader()).Table(u"Used_Lines");
    const RealIndex& index = PrimaryKey(table);
    ASSERT_EQ(table.columns[index.columns[0].column].name, u"Config_ID");
    file.ResetCount();
    const Value configuration[] = {int16_t{1}};
    IndexSeek seek(file.Reader(), table, index,
                   BuildKey(file.Reader(), table, index, configuration));
    int rows = 0;
    while (seek.Next()) {
      EXPECT_EQ(seek.Row().Get(*table.FindColumn(u"Config_ID")), Value(int16_t{1}));
      ++rows;
    }
    EXPECT_GE(rows, 12) << name;
    EXPECT_LE(file.PagesRead(), 4 + rows) << name;
  }
}

TEST(PagesRead, OfAScanAreThePagesOfTheTableOnce) {
  OpenFile file("sites/large/NewDB.mdb");
  const TableDefinition table = Catalog(file.Reader()).Table(u"Used_Lines");
  const size_t pages = UsageMap(file.Reader(), table.owned_map).Pages().size();
  const size_t map_pages = UsageMap(file.Reader(), table.owned_map).MapPages().size();
  file.ResetCount();
  int rows = 0;
  for (TableScan scan(file.Reader(), table); scan.Next();) ++rows;
  EXPECT_EQ(rows, 36000);
  // The map's row, its page of bits for each page of the table and at the end, and the page.
  EXPECT_LE(static_cast<size_t>(file.PagesRead()), 1 + (1 + map_pages) * (pages + 1));
}

RDV_TEST_ON_FILE(testing::Test, ScanGivesMovedRowsWhereTheirPointersAre,
                 "corpus/jet4/overflowTestV2000.mdb") {
  OpenFile file(GetParam());
  const Catalog catalog(file.Reader());
  const TableDefinition table = catalog.Table(catalog.UserTables().at(0));
  RowId last;
  int rows = 0;
  for (TableScan scan(file.Reader(), table); scan.Next(); ++rows) {
    EXPECT_LT(last, scan.Row().Id());
    last = scan.Row().Id();
    RowView row(file.Reader(), table);
    ASSERT_TRUE(FetchRow(file.Reader(), table, last, row));
    EXPECT_EQ(row.Content().data(), scan.Row().Content().data());
  }
  EXPECT_EQ(rows, 7);
  // The bytes of a moved row are no row of their own.
  RowView row(file.Reader(), table);
  EXPECT_FALSE(FetchRow(file.Reader(), table, {28, 0}, row));
}

RDV_TEST_ON_FILE(testing::Test, RelationshipIsReadFromTheCatalog,
                 "corpus/jet4/indexTestV2000.mdb") {
  OpenFile file(GetParam());
  const Catalog catalog(file.Reader());
  const TableDefinition table = catalog.Table(u"Table1");
  const auto index = std::find_if(table.logical_indexes.begin(), table.logical_indexes.end(),
                                  [](const LogicalIndex& each) { return each.number == 2; });
  ASSERT_NE(index, table.logical_indexes.end());
  ASSERT_TRUE(index->foreign_key);
  EXPECT_FALSE(index->foreign_key->referenced_side);
  EXPECT_EQ(index->foreign_key->other_table, 27u);
  EXPECT_EQ(index->foreign_key->other_index, 2u);
  EXPECT_FALSE(index->foreign_key->cascade_updates);
  EXPECT_TRUE(index->foreign_key->cascade_deletes);
}

struct BrokenFile {
  const char* folder;
  TextView reason;  // part of the error
};

class BrokenSite : public testing::TestWithParam<BrokenFile> {};

TEST_P(BrokenSite, IsRefusedByNameAndReason) {
  const std::string name = GetParam().folder + ("/" + std::string("NewDB.mdb"));
  const Text error = ErrorOfReading(LoadBytes(SamplePath(name)), name);
  EXPECT_NE(error.find(u"'" + FromUtf8(name) + u"'"), Text::npos) << ToUtf8(error);
  EXPECT_NE(error.find(GetParam().reason), Text::npos) << ToUtf8(error);
}

constexpr char16_t kUnrecognized[] = u"Unrecognized database format";

INSTANTIATE_TEST_SUITE_P(
    Sites, BrokenSite,
    testing::Values(
        BrokenFile{"sites/broken/01-cut-in-header", kUnrecognized},
        BrokenFile{"sites/broken/02-cut-in-page", kUnrecognized},
        BrokenFile{"sites/broken/03-no-bytes", kUnrecognized},
        BrokenFile{"sites/broken/04-text-file", kUnrecognized},
        BrokenFile{"sites/broken/05-random-header", kUnrecognized},
        BrokenFile{"sites/broken/06-catalog-overwritten", u"Page 2 is not of the kind"},
        BrokenFile{"sites/broken/07-pointer-out-of-range", u"Page 65535 is referred to"},
        BrokenFile{"sites/broken/08-cyclic-index", u" holds index entries that belong before"},
        BrokenFile{"sites/broken/09-row-offset-outside", u" says that row 4 lies outside"}),
    [](const auto& file) { return TestName(file.param.folder); });

// The same damage, done to files of another program.
std::vector<BrokenFile> ForeignBrokenFiles() {
  std::vector<BrokenFile> files = {
      {"foreign/broken/01-cut-in-header", kUnrecognized},
      {"foreign/broken/02-cut-in-page", kUnrecognized},
      {"foreign/broken/03-no-bytes", kUnrecognized},
      {"foreign/broken/04-text-file", kUnrecognized},
      {"foreign/broken/05-random-header", kUnrecognized},
      {"foreign/broken/06-catalog-overwritten", u"Page 2 is not of the kind"},
      {"foreign/broken/07-pointer-out-of-range", u"Page 65535 is referred to"},
      {"foreign/broken/08-cyclic-index", u"Page 88 holds index entries that belong before"},
      {"foreign/broken/09-row-offset-outside", u"Page 48 says that row 4 lies outside"}};
  return test::TrialsAtHand(std::move(files), &BrokenFile::folder);
}

INSTANTIATE_TEST_SUITE_P(Foreign, BrokenSite, testing::ValuesIn(ForeignBrokenFiles()),
                         [](const auto& file) { return TestName(file.param.folder); });

// The site whose index leads in a circle can still be read row by row.
TEST(BrokenSite, WithACyclicIndexIsScannedInFull) {
  OpenFile file("sites/broken/08-cyclic-index/NewDB.mdb");
  std::string dump;
  DumpDatabase(file.Reader(), {}, [&dump](std::string_view piece) { dump += piece; });
  EXPECT_NE(dump.find("Sales – group A"), std::string::npos);
}

// Files changed at random: read or refused, whatever the change; sanitizers watch over the rest.
class ChangedFile : public testing::TestWithParam<std::string> {};

TEST_P(ChangedFile, IsReadOrRefused) {
  const std::vector<uint8_t> sound = LoadBytes(SamplePath(GetParam()));
  constexpr int kRounds = 150;
  int refused = 0;
  for (int round = 0; round < kRounds; ++round) {
    std::mt19937 random(static_cast<unsigned>(round));
    std::vector<uint8_t> bytes = sound;
    const auto changes = 1 + random() % 40;
    for (size_t i = 0; i < changes; ++i) {
      // Pages have their structures at both ends; half of the changes go to the beginning.
      const size_t page = random() % (bytes.size() / 2048) * 2048;
      const size_t offset = random() % 2 == 0 ? random() % 64 : random() % 2048;
      static constexpr uint8_t kTellingBytes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, 0x40};
      const auto any = static_cast<uint8_t>(random());
      bytes[page + offset] = random() % 2 == 0 ? any : kTellingBytes[random() % 6];
    }
    const Text error = ErrorOfReading(std::move(bytes), GetParam());
    if (error.empty()) continue;
    ++refused;
    EXPECT_FALSE(error.find(FromUtf8(GetParam())) == Text::npos &&
                 error.find(u"not a valid password") == Text::npos &&
                 error != u"Not a valid password.")
        << ToUtf8(error);
  }
  EXPECT_GT(refused, 0);
  EXPECT_LT(refused, kRounds);
}

std::vector<std::string> SmallFiles() {
  return test::AtHand({"corpus/blank/adox_jet4.mdb", "corpus/jet4/overflowTestV2000.mdb",
                       "corpus/jet4/test2V2000.mdb", "corpus/jet4/compIndexTestV2003.mdb",
                       "corpus/jet3/test2V1997.mdb", "corpus/jet3/compIndexTestV1997.mdb",
                       "sites/plain/NewDB.mdb", "sites/indexed/NewDB.mdb"});
}

INSTANTIATE_TEST_SUITE_P(Files, ChangedFile, testing::ValuesIn(SmallFiles()),
                         [](const auto& file) { return TestName(file.param); });

TEST(CutOffFile, IsReadOrRefusedWhereverItEnds) {
  const std::string name = "sites/indexed/NewDB.mdb";
  const std::vector<uint8_t> sound = LoadBytes(SamplePath(name));
  int refused = 0;
  for (size_t size = 0; size < sound.size(); size += 1024) {
    const auto end = sound.begin() + static_cast<std::ptrdiff_t>(size);
    if (!ErrorOfReading(std::vector<uint8_t>(sound.begin(), end), name).empty()) ++refused;
  }
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace rdv::jet
