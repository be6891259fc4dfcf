// The sites of the texts in this folder hold what their texts say, and damage does what it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/check/check.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/file/page_source.h"
#include "data/jet/format/header.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/support/sites/damage.h"
#include "tests/support/sites/sample_sites.h"
#include "tests/support/sites/site_builder.h"

namespace rdv::sites {
namespace {

using jet::Catalog;
using jet::TableDefinition;
using testing::HasSubstr;

class OpenDatabase {
 public:
  explicit OpenDatabase(std::vector<uint8_t> bytes)
      : pages_(std::move(bytes), jet::kJet4.page_size, u"site.mdb"), file_(pages_) {}

  const jet::FileReader& File() const { return file_; }
  TableDefinition Table(TextView name) const { return Catalog(file_).Table(name); }

  std::vector<std::vector<Value>> Rows(TextView name) const {
    const TableDefinition table = Table(name);
    std::vector<std::vector<Value>> rows;
    for (jet::TableScan scan(file_, table); scan.Next();) {
      std::vector<Value>& row = rows.emplace_back();
      for (const jet::Column& column : table.columns) row.push_back(scan.Row().Get(column));
    }
    return rows;
  }

 private:
  jet::BufferPageSource pages_;
  jet::FileReader file_;
};

std::vector<uint8_t> ReadFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Findings(const jet::FileReader& file) {
  std::string text;
  for (const jet::Finding& finding : jet::CheckFile(file).findings)
    text += ToUtf8(finding.text) + "\n";
  return text;
}

// What reading all of it and checking it has to say against a file.
std::string Complaint(std::vector<uint8_t> bytes) {
  try {
    const OpenDatabase database(std::move(bytes));
    for (const jet::CatalogObject& table : Catalog(database.File()).UserTables())
      database.Rows(table.name);
    return Findings(database.File());
  } catch (const RuntimeError& error) {
    return ToUtf8(error.Description());
  }
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  for (char& character : name) {
    if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
  }
  return name;
}

std::vector<std::string> Sites(bool damaged) {
  std::vector<std::string> names;
  for (const std::string& name : SiteNames()) {
    if (ReadSite(name).damage.empty() != damaged) names.push_back(name);
  }
  return names;
}

class SoundSite : public testing::TestWithParam<std::string> {};

TEST_P(SoundSite, HoldsTheRowsOfItsTextAndNothingIsWrongWithIt) {
  const Site site = ReadSite(GetParam());
  const OpenDatabase database(ReadFile(SiteFolder(GetParam()) / "NewDB.mdb"));
  const std::vector<TableContent> content = ContentOf(site);
  size_t rows = 0;
  for (const TableContent& table : content) {
    const auto expected = RowsOf(content, ToUtf8(table.spec->name));
    EXPECT_TRUE(database.Rows(table.spec->name) == expected) << ToUtf8(table.spec->name);
    rows += expected.size();
  }
  EXPECT_GT(rows, 0u);
  EXPECT_EQ(Findings(database.File()), "");
}

INSTANTIATE_TEST_SUITE_P(Sites, SoundSite, testing::ValuesIn(Sites(false)), TestName);

class DamagedSite : public testing::TestWithParam<std::string> {};

TEST_P(DamagedSite, IsNotTakenForASoundOne) {
  EXPECT_NE(Complaint(ReadFile(SiteFolder(GetParam()) / "NewDB.mdb")), "");
}

INSTANTIATE_TEST_SUITE_P(Sites, DamagedSite, testing::ValuesIn(Sites(true)), TestName);

constexpr char kPeople[] =
    "table People\n"
    "  Id Long autonumber\n"
    "  Name Text 20 required\n"
    "  Born DateTime\n"
    "  Remarks Memo\n"
    "  Active Boolean\n"
    "  Pay Currency\n"
    "  key Id\n"
    "  index ByName unique ignoring-nulls: Name desc, Id\n"
    "insert People: Name, Pay\n"
    "  \"Ann\", \"1.5\"  # a comment\n"
    "  \"B\\\"#\\u00e9\\n\",\n"
    "    \"-0.0001\"\n";

TEST(SiteText, SaysTablesAndRows) {
  const OpenDatabase database(MakeDatabase(ParseSite("people", kPeople)));
  const TableDefinition table = database.Table(u"People");
  EXPECT_TRUE(table.columns[0].autonumber);
  EXPECT_TRUE(table.columns[1].required);
  EXPECT_EQ(table.columns[1].length, 40);
  ASSERT_EQ(table.logical_indexes.size(), 2u);
  const jet::RealIndex& by_name = table.indexes[table.logical_indexes[0].real_index];
  EXPECT_EQ(table.logical_indexes[0].name, u"ByName");
  EXPECT_TRUE(by_name.unique && by_name.ignore_nulls);
  EXPECT_TRUE(by_name.columns[0].descending);
  EXPECT_FALSE(by_name.columns[1].descending);
  const std::vector<std::vector<Value>> expected = {
      {int32_t{1}, Text(u"Ann"), Null(), Null(), false, Currency{15000}},
      {int32_t{2}, Text(u"B\"#\u00e9\n"), Null(), Null(), false, Currency{-1}}};
  EXPECT_TRUE(database.Rows(u"People") == expected);
}

std::vector<std::vector<Value>> PeopleAfter(const std::string& more) {
  const Site site = ParseSite("people", kPeople + more);
  auto rows = OpenDatabase(MakeDatabase(site)).Rows(u"People");
  EXPECT_TRUE(rows == RowsOf(ContentOf(site), "People"));
  return rows;
}

TEST(SiteText, ChangesAndDeletesRows) {
  const auto rows = PeopleAfter(
      "update People: Name; Remarks, Active\n"
      "  \"Ann\", filled(\"far \", 9), yes\n"
      "delete People: Id\n"
      "  2\n");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][3], Value(Text(u"far far f")));
  EXPECT_EQ(rows[0][4], Value(true));
}

TEST(SiteText, ChoosesOneOfItsLinesForEachNumber) {
  const auto rows = PeopleAfter(
      "let called = pick(n, \"even \", \"odd \") & twice\n"
      "insert People for n = 0 .. 3 with twice = n * 2, kind = n / 2 choosing kind: Name, Remarks\n"
      "  called, null\n"
      "  called, \"late\"\n");
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[3][1], Value(Text(u"odd 2")));
  EXPECT_EQ(rows[3][3], Value(Null()));
  EXPECT_EQ(rows[5][1], Value(Text(u"odd 6")));
  EXPECT_EQ(rows[5][3], Value(Text(u"late")));
}

std::string ErrorOf(const std::string& text) {
  try {
    MakeDatabase(ParseSite("people", kPeople + text));
  } catch (const SiteTextError& error) {
    return error.what();
  }
  return "no error";
}

TEST(SiteText, NamesTheLineThatItDoesNotUnderstand) {
  EXPECT_EQ(ErrorOf("inset People\n"), "people.site:14: unknown");
  EXPECT_EQ(ErrorOf("insert Nobody\n"), "people.site:14: there is no table Nobody");
  EXPECT_EQ(ErrorOf("insert People: Name\n  \"a\", 1\n"), "people.site:15: 2 values for 1 columns");
  EXPECT_EQ(ErrorOf("insert People: Name\n\n  7\n"), "people.site:16: a text is needed");
  EXPECT_EQ(ErrorOf("delete People: Name\n  \"Zoe\"\n"), "people.site:15: there is no such row");
  EXPECT_THAT(ErrorOf("insert People: Name\n  filled(\"x\", 21)\n"), HasSubstr("too small"));
  EXPECT_EQ(ErrorOf("damage\n  put row People 3: u8 0\n"), "people.site:15: there are 2 rows");
  EXPECT_EQ(ErrorOf("damage\n  put 4194304: u8 0\n"),
            "people.site:15: the place lies behind the end of the file");
}

class DamageDone : public testing::Test {
 protected:
  static std::vector<uint8_t> After(const std::string& damage) {
    return MakeDatabase(ParseSite("people", kPeople + ("damage\n" + damage)));
  }
  // What the first bytes of the file become.
  static std::vector<uint8_t> RandomBytes(int seed) {
    const auto bytes = After("  random 0: 9, " + std::to_string(seed) + "\n");
    return {bytes.begin(), bytes.begin() + 9};
  }
  // Where the two files differ.
  static std::vector<size_t> Changed(const std::string& damage) {
    // One file of both: what is made later bears a later date.
    const Site site = ParseSite("people", kPeople + ("damage\n" + damage));
    const std::vector<uint8_t> sound = After("");
    const std::vector<uint8_t> bad = Damaged(site, sound);
    std::vector<size_t> places;
    for (size_t i = 0; i < sound.size() && i < bad.size(); ++i) {
      if (sound[i] != bad[i]) places.push_back(i);
    }
    return places;
  }
};

TEST_F(DamageDone, ReachesTheColumnsAndIndexesOfADefinition) {
  const OpenDatabase columns(
      After("  put column People.Pay: u8 5 + 0x03\n"
            "  or column People.Born + 15: u8 4\n"));
  const TableDefinition table = columns.Table(u"People");
  EXPECT_EQ(table.columns[5].type, jet::ColumnType::DateTime);
  EXPECT_TRUE(table.FindColumn(u"Born")->fixed);
  const OpenDatabase indexes(
      After("  put index People.ByName + 38: u32 number-of (root People.PrimaryKey)\n"
            "  and index People.PrimaryKey + 46: u8 0xFE\n"
            "  put logical People.ByName + 4: u32 77\n"));
  const TableDefinition indexed = indexes.Table(u"People");
  const jet::RealIndex& by_name = indexed.indexes[indexed.logical_indexes[0].real_index];
  const jet::RealIndex& primary = indexed.indexes[indexed.logical_indexes[1].real_index];
  EXPECT_EQ(by_name.root, primary.root);
  EXPECT_FALSE(primary.unique);
  EXPECT_EQ(indexed.logical_indexes[0].number, 77u);
}

TEST_F(DamageDone, ReachesRowsAndTheirFields) {
  const OpenDatabase database(After("  put value People.Pay 2: u32 20000 u32 0\n"));
  EXPECT_EQ(database.Rows(u"People")[1][5], Value(Currency{20000}));
  EXPECT_EQ(Changed("  put slot People 1: u16 0xFFFF\n").size(), 2u);
  EXPECT_EQ(Changed("  for n = 1 .. 2: put row People n: u16 0xEEEE\n").size(), 4u);
}

TEST_F(DamageDone, ReachesPagesAndMaps) {
  const auto page_of = [&](const std::string& place) {
    const std::vector<size_t> places = Changed("  put " + place + ": u8 0xEE u8 0xEE\n");
    EXPECT_FALSE(places.empty()) << place;
    return places.empty() ? 0 : places[0] / 4096;
  };
  EXPECT_EQ(page_of("page 3"), 3u);
  EXPECT_EQ(page_of("free-pages"), 1u);
  EXPECT_EQ(page_of("leaf People.ByName 1"), page_of("root People.ByName"));
  EXPECT_NE(page_of("map People"), 0u);
  EXPECT_NE(page_of("free-map People"), 0u);
  EXPECT_NE(page_of("index-map People.ByName"), 0u);
  EXPECT_EQ(page_of("data People 1"), page_of("row People 1"));
}

TEST_F(DamageDone, WritesNumbersOfEitherOrderAndBytes) {
  const std::vector<uint8_t> bad =
      After("  put 100: u16 0x0102 b16 0x0102 u24 1 b24 1 u32 -2 b32 3 bytes \"a0b1\"\n");
  const std::vector<uint8_t> written(bad.begin() + 100, bad.begin() + 120);
  EXPECT_THAT(written, testing::ElementsAre(2, 1, 1, 2, 1, 0, 0, 0, 0, 1, 0xFE, 0xFF, 0xFF, 0xFF, 0,
                                            0, 0, 3, 0xA0, 0xB1));
}

TEST_F(DamageDone, FillsCopiesCutsAndReplaces) {
  const std::vector<uint8_t> filled = After("  fill page 1: 3, 0xA5\n  copy 10: 2 from page 2\n");
  EXPECT_THAT(std::vector<uint8_t>(filled.begin() + 4096, filled.begin() + 4099),
              testing::Each(0xA5));
  EXPECT_EQ(filled[10], filled[8192]);
  EXPECT_EQ(filled[11], filled[8193]);
  EXPECT_EQ(After("  cut page 1 + 5\n").size(), 4101u);
  EXPECT_THAT(After("  text \"abc\"\n"), testing::ElementsAre('a', 'b', 'c'));
  EXPECT_EQ(Changed("  random 0: 9, 1\n"), Changed("  random 0: 9, 1\n"));
  EXPECT_NE(RandomBytes(1), RandomBytes(2));
  EXPECT_EQ(RandomBytes(1), RandomBytes(1));
}

}  // namespace
}  // namespace rdv::sites
