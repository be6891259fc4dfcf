// Files whose map of free pages calls a page free that somebody else has. Nobody may be given it,
// whatever it holds and whoever has it.
#include "data/jet/catalog/catalog.h"
#include "data/jet/rows/usage_map.h"
#include "tests/jet/hostile_file.h"

namespace rdv::jet {
namespace {

class HostileFreePage : public HostileFile {
 protected:
  enum { kOwn, kOther };
  static constexpr int kLinks = 50;

  HostileFreePage() {
    Change([](Engine& engine) {
      const TableDefinition& table = engine.Table(u"Links");
      for (int32_t i = 0; i < kLinks; ++i) {
        const Assignment values[] = {{kOwn, i}, {kOther, i}};
        engine.Insert(table, values);
      }
    });
    Read();
  }

  // The definition of a table, and what its maps list, as they are in the file.
  TableDefinition TableOf(TextView name) const {
    BufferPageSource pages({file_.begin(), file_.end()}, kPageSize, path_);
    return Catalog(FileReader(pages)).Table(name);
  }
  uint32_t FirstPageOf(RowId map) const {
    BufferPageSource pages({file_.begin(), file_.end()}, kPageSize, path_);
    const FileReader file(pages);
    return UsageMap(file, map).Pages().at(0);
  }

  // A change that takes a page is refused, and the file is as it was: also for the checker, which
  // knows what is wrong with it.
  void ExpectNotGivenOut(uint32_t page) {
    CallFree(file_, fields_, page);  // the one to be taken next
    Store();
    const std::string finding = "Page " + std::to_string(page) + " is in use but marked as free";
    EXPECT_NE(Findings().find(finding), std::string::npos) << Findings();
    EXPECT_NE(Refusal(InsertThing).find("Page " + std::to_string(page)), std::string::npos);
    EXPECT_TRUE(SameButCommitWords(ReadWholeFile(name_), file_));
  }
  static bool SameButCommitWords(std::vector<uint8_t> left, std::vector<uint8_t> right) {
    left.erase(left.begin(), left.begin() + kPageSize);
    right.erase(right.begin(), right.begin() + kPageSize);
    return left == right;
  }
};

TEST_F(HostileFreePage, WithRowsOfAnotherTableIsNotGivenOut) {
  ExpectNotGivenOut(FirstPageOf(TableOf(u"Links").owned_map));
}

TEST_F(HostileFreePage, WithEntriesOfAnotherTablesIndexIsNotGivenOut) {
  ExpectNotGivenOut(TableOf(u"Links").indexes.at(0).root);
}

TEST_F(HostileFreePage, WithLongValuesOfAnotherTableIsNotGivenOut) {
  Change([](Engine& engine) {
    TableSpec notes{.name = u"Notes", .columns = {}, .indexes = {}};
    notes.columns = {{.name = u"Id", .type = ColumnType::Long},
                     {.name = u"Note", .type = ColumnType::Memo}};
    engine.CreateTable(notes);
    const Assignment values[] = {{0, int32_t{1}}, {1, Text(20000, u'n')}};
    engine.Insert(engine.Table(u"Notes"), values);
  });
  Read();
  ExpectNotGivenOut(FirstPageOf(TableOf(u"Notes").FindColumn(u"Note")->owned_map));
}

TEST_F(HostileFreePage, WithAnotherTablesDefinitionIsNotGivenOut) {
  ExpectNotGivenOut(TableOf(u"Links").Page());
}

TEST_F(HostileFreePage, WithAnotherTablesMapsIsNotGivenOut) {
  const uint32_t page = TableOf(u"Links").owned_map.page;
  // Things' maps lie elsewhere, or the page would be asked for by who writes to Things.
  if (page == TableOf(u"Things").owned_map.page) GTEST_SKIP() << "the tables' maps share a page";
  ExpectNotGivenOut(page);
}

TEST_F(HostileFreePage, OfTheCatalogIsNotGivenOut) {
  ExpectNotGivenOut(FirstPageOf(TableOf(u"MSysACEs").owned_map));
}

// The word of a page that was given back once is not taken for the truth.
TEST_F(HostileFreePage, ThatItsOwnerGaveBackIsGivenOutAgain) {
  Change([](Engine& engine) {
    const TableDefinition& table = engine.Table(u"Things");
    const Assignment values[] = {{kName, Text(u"long")}, {kRemarks, Text(30000, u'l')}};
    engine.Delete(table, engine.Insert(table, values));
  });
  const auto size = std::filesystem::file_size(name_);
  Change(InsertThing);
  EXPECT_EQ(std::filesystem::file_size(name_), size);
  EXPECT_EQ(Findings(), "");
}

}  // namespace
}  // namespace rdv::jet
