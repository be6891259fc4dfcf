// A file with so many pages that the map of free pages no longer fits the page that it begins on.
#include <gtest/gtest.h>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/format/format.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/rows/usage_map.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

// Together more pages than one page of bits tells about.
constexpr int32_t kPictures = 34;
constexpr size_t kPicture = size_t{4} << 20;

class LargeFile : public testing::Test {
 protected:
  void SetUp() override {
    path_ = PathText(folder_.Path() / "large.mdb");
    Engine::Create(path_);
    engine_ = Engine::Open(path_);
    Engine::WriteScope scope(*engine_);
    engine_->CreateTable(
        {.name = u"Pictures",
         .columns = {{.name = u"Id", .type = ColumnType::Long},
                     {.name = u"Picture", .type = ColumnType::Ole}},
         .indexes = {{.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true}}});
    scope.Commit();
  }

  static Binary Picture(int32_t id) { return Binary(kPicture, static_cast<uint8_t>(id)); }

  void InsertAll() {
    for (int32_t id = 0; id < kPictures; ++id) {
      Engine::WriteScope scope(*engine_);
      const Assignment values[] = {{0, id}, {1, Picture(id)}};
      engine_->Insert(engine_->Table(u"Pictures"), values);
      scope.Commit();
    }
  }

  void DeleteAll() {
    Engine::WriteScope scope(*engine_);
    const TableDefinition& table = engine_->Table(u"Pictures");
    std::vector<RowId> rows;
    for (TableScan scan(engine_->File(), table); scan.Next();) rows.push_back(scan.Row().Id());
    for (const RowId row : rows) engine_->Delete(table, row);
    scope.Commit();
  }

  void ExpectPictures(int32_t count) {
    const Engine::ReadScope scope(*engine_);
    const TableDefinition& table = engine_->Table(u"Pictures");
    int32_t found = 0;
    for (TableScan scan(engine_->File(), table); scan.Next(); ++found) {
      const int32_t id = std::get<int32_t>(scan.Row().Get(table.columns[0]));
      EXPECT_TRUE(scan.Row().Get(table.columns[1]) == Value(Picture(id))) << id;
    }
    EXPECT_EQ(found, count);
  }

  void ExpectSound() {
    const Engine::ReadScope scope(*engine_);
    for (const Finding& finding : CheckFile(engine_->File()).findings)
      ADD_FAILURE() << ToUtf8(finding.text);
  }

  uint32_t Pages() {
    const Engine::ReadScope scope(*engine_);
    return engine_->File().PageCount();
  }
  size_t PagesOfFreeMap() {
    const Engine::ReadScope scope(*engine_);
    const UsageMap map(engine_->File(), {kGlobalMapPage, kFreePagesRow}, kOwnerGlobalMaps);
    return map.MapPages().size();
  }

  TemporaryFolder folder_;
  Text path_;
  std::unique_ptr<Engine> engine_;
};

TEST_F(LargeFile, KeepsTheMapOfFreePagesOnPagesOfItsOwn) {
  EXPECT_EQ(PagesOfFreeMap(), 0u);
  InsertAll();
  const uint32_t pages = Pages();
  EXPECT_GT(pages, kJet4.PagesPerMapPage());
  EXPECT_EQ(PagesOfFreeMap(), 2u);
  ExpectPictures(kPictures);
  ExpectSound();

  // What is deleted is used again, on either side of where one page of bits ends.
  DeleteAll();
  ExpectPictures(0);
  ExpectSound();
  engine_->Close();
  engine_ = Engine::Open(path_);
  InsertAll();
  EXPECT_LE(Pages(), pages + 1);
  ExpectPictures(kPictures);
  ExpectSound();
}

}  // namespace
}  // namespace rdv::jet
