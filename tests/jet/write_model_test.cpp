// Thousands of random changes to files with many indexes, held against a model in memory.
#include <gtest/gtest.h>

#include <map>
#include <optional>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/findings.h"
#include "tests/jet/other_reader.h"
#include "tests/jet/random_values.h"
#include "tests/jet/write_support.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

using Row = std::vector<Value>;

// One table of a file and what it should hold.
class Model {
 public:
  Model(Engine& engine, Text table) : engine_(&engine), table_name_(std::move(table)) {
    const Engine::ReadScope scope(*engine_);
    rows_ = Read();
  }
  void Reopened(Engine& engine) { engine_ = &engine; }

  size_t Size() const { return rows_.size(); }
  int Refused() const { return refused_; }

  void Step(RandomValues& random) {
    const size_t choice = random.Below(rows_.size() < 20 ? 2 : 10);
    if (choice < 5) {
      Insert(random);
    } else if (choice < 8) {
      Update(random);
    } else {
      Delete(random);
    }
  }

  void DeleteAll(RandomValues& random) {
    while (!rows_.empty()) Delete(random);
  }

  // Every row is there, by scan and by index.
  void Verify() {
    const Engine::ReadScope scope(*engine_);
    const auto found = Read();
    ASSERT_EQ(found.size(), rows_.size());
    for (const auto& [id, row] : rows_) {
      const auto same = found.find(id);
      ASSERT_NE(same, found.end()) << "page " << id.page << " row " << int{id.row};
      for (size_t i = 0; i < row.size(); ++i)
        EXPECT_TRUE(row[i] == same->second[i]) << ToUtf8(Table().columns[i].name);
    }
    for (const RealIndex& index : Table().indexes) VerifyIndex(index);
  }

 private:
  const TableDefinition& Table() { return engine_->Table(table_name_); }

  std::map<RowId, Row> Read() {
    std::map<RowId, Row> rows;
    for (TableScan scan(engine_->File(), Table()); scan.Next();) {
      Row row;
      for (const Column& column : Table().columns) row.push_back(scan.Row().Get(column));
      rows.emplace(scan.Row().Id(), std::move(row));
    }
    return rows;
  }

  void VerifyIndex(const RealIndex& index) {
    for (const auto& [id, row] : rows_) {
      if (id.row % 7 != 3) continue;
      const auto key = KeyOf(index, row);
      if (!key) continue;
      bool found = false;
      for (IndexSeek seek(engine_->File(), Table(), index, *key); !found && seek.Next();)
        found = seek.Row().Id() == id;
      EXPECT_TRUE(found) << "index " << index.position << " does not lead to a row";
    }
  }

  std::optional<Key> KeyOf(const RealIndex& index, const Row& row) {
    std::vector<Value> values;
    bool all_null = true;
    for (const IndexColumn& part : index.columns) {
      values.push_back(row[part.column]);
      all_null = all_null && IsNull(values.back());
    }
    if (all_null) return std::nullopt;
    return TryBuildKey(engine_->File(), Table(), index, values);
  }

  // Whether some unique index refuses the row beside the others, or a Null in it.
  bool IsRefused(const Row& row, RowId own) {
    for (size_t i = 0; i < row.size(); ++i) {
      const Column& column = Table().columns[i];
      if (column.required && IsNull(row[i])) return true;
      if (!column.allow_zero_length && row[i] == Value(Text())) return true;
    }
    for (const RealIndex& index : Table().indexes) {
      for (const IndexColumn& part : index.columns) {
        if (index.required && IsNull(row[part.column])) return true;
      }
      const auto key = KeyOf(index, row);
      if (!index.unique || !key) continue;
      for (const auto& [id, other] : rows_) {
        if (id != own && KeyOf(index, other) == key) return true;
      }
    }
    return false;
  }

  // Does it, or makes sure that it was refused for a reason.
  template <typename Change>
  bool Try(const Row& row, RowId own, Change change) {
    Engine::WriteScope scope(*engine_);
    const bool refused = IsRefused(row, own);
    try {
      change();
    } catch (const RuntimeError& error) {
      EXPECT_TRUE(refused) << error.what();
      ++refused_;
      scope.Commit();
      return false;
    }
    EXPECT_FALSE(refused);
    scope.Commit();
    return true;
  }

  void Insert(RandomValues& random) {
    std::vector<Assignment> values;
    Row row;
    bool numbered = false;
    {
      const Engine::ReadScope scope(*engine_);
      for (size_t i = 0; i < Table().columns.size(); ++i) {
        const Column& column = Table().columns[i];
        Value value = column.autonumber ? Value(Null()) : random.For(column);
        numbered = numbered || column.autonumber;
        row.push_back(column.type == ColumnType::Boolean && IsNull(value) ? Value(false) : value);
        values.push_back({i, std::move(value)});
      }
    }
    RowId id;
    const Row expected = numbered ? WithNumbers(row) : row;
    if (!Try(expected, {}, [&] { id = engine_->Insert(Table(), values); })) return;
    EXPECT_FALSE(rows_.contains(id));
    rows_[id] = Padded(expected);
    if (numbered) ++last_number_;
  }

  Row WithNumbers(Row row) {
    const Engine::ReadScope scope(*engine_);
    for (size_t i = 0; i < row.size(); ++i) {
      if (!Table().columns[i].autonumber) continue;
      last_number_ = std::max(last_number_, static_cast<int32_t>(Table().last_autonumber));
      row[i] = last_number_ + 1;
    }
    return row;
  }

  Row Padded(Row row) {
    const Engine::ReadScope scope(*engine_);
    for (size_t i = 0; i < row.size(); ++i) {
      const Column& column = Table().columns[i];
      Text* text = std::get_if<Text>(&row[i]);
      if (column.fixed && text) text->resize(column.length / 2, u' ');
    }
    return row;
  }

  RowId Any(RandomValues& random) {
    return std::next(rows_.begin(), static_cast<ptrdiff_t>(random.Below(rows_.size())))->first;
  }

  void Update(RandomValues& random) {
    const RowId id = Any(random);
    Row row = rows_[id];
    std::vector<Assignment> assignments;
    {
      const Engine::ReadScope scope(*engine_);
      for (size_t i = 0; i < row.size(); ++i) {
        const Column& column = Table().columns[i];
        if (column.autonumber || !random.OneIn(3)) continue;
        row[i] = random.For(column);
        assignments.push_back({i, row[i]});
        if (column.type == ColumnType::Boolean && IsNull(row[i])) row[i] = false;
      }
    }
    if (Try(row, id, [&] { engine_->Update(Table(), id, assignments); })) rows_[id] = Padded(row);
  }

  void Delete(RandomValues& random) {
    const RowId id = Any(random);
    Engine::WriteScope scope(*engine_);
    engine_->Delete(Table(), id);
    scope.Commit();
    rows_.erase(id);
  }

  Engine* engine_;
  Text table_name_;
  std::map<RowId, Row> rows_;
  int32_t last_number_ = 0;
  int refused_ = 0;
};

#ifdef _WIN32
constexpr bool kOtherReaderMissing = false;  // there is none
void ExpectOtherReadersToAgree(const std::filesystem::path&, Engine&) {}
#else
const bool kOtherReaderMissing = !HasOtherReader();
void ExpectOtherReadersToAgree(const std::filesystem::path& path, Engine& engine) {
  if (kOtherReaderMissing) return;
  EXPECT_EQ(DifferenceFromMdbJson(path, engine), "");
  EXPECT_EQ(DifferenceFromMdbExport(path, engine), "");
}
#endif
constexpr char kHeldAgainstTheModelOnly[] =
    "mdb-json or mdb-export is not installed; all that needs neither was found as it has to be";

struct Trial {
  const char* file;
  const char* table;
  int steps;
};

class WriteModelTest : public testing::TestWithParam<Trial> {};

TEST_P(WriteModelTest, AgreesWithTheFileAfterThousandsOfChanges) {
  const Trial& trial = GetParam();
  const TemporaryFolder folder;
  const auto path = folder.Copy(SamplePath(trial.file));
  RandomValues random(20040229);
  std::unique_ptr<Engine> engine = Engine::Open(PathText(path));
  Model model(*engine, FromUtf8(trial.table));
  const auto check = [&] {
    const Engine::ReadScope scope(*engine);
    return Findings(CheckFile(engine->File()));
  };
  constexpr int kPhases = 4;
  for (int phase = 0; phase < kPhases; ++phase) {
    SCOPED_TRACE("phase " + std::to_string(phase));
    for (int step = 0; step < trial.steps / kPhases; ++step) {
      model.Step(random);
      if (testing::Test::HasFailure()) FAIL() << "at step " << step;
    }
    ASSERT_EQ(check(), "");
    engine->Close();
    engine = Engine::Open(PathText(path));
    model.Reopened(*engine);
    model.Verify();
    ExpectOtherReadersToAgree(path, *engine);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(model.Size(), 10u);
  model.DeleteAll(random);
  EXPECT_EQ(check(), "");
  if (kOtherReaderMissing) GTEST_SKIP() << kHeldAgainstTheModelOnly;
}

// The real files have few of the types.
TEST(WriteAllTypes, AgreesWithTheFileAfterManyChanges) {
  TableSpec things{.name = u"Things", .columns = {}, .indexes = {}};
  const auto add = [&things](const Text& name, ColumnType type,
                             uint16_t length = 0) -> ColumnSpec& {
    return things.columns.emplace_back(
        ColumnSpec{.name = name, .type = type, .length = length, .precision = 12, .scale = 3});
  };
  add(u"Id", ColumnType::Long).autonumber = true;
  add(u"Yes", ColumnType::Boolean);
  add(u"Tiny", ColumnType::Byte);
  add(u"Small", ColumnType::Integer);
  add(u"Large", ColumnType::Long);
  add(u"Money", ColumnType::Currency);
  add(u"Factor", ColumnType::Single);
  add(u"Ratio", ColumnType::Double);
  add(u"Made", ColumnType::DateTime);
  add(u"Key", ColumnType::Guid);
  add(u"Digits", ColumnType::Numeric);
  add(u"Name", ColumnType::Text, 60);
  add(u"Bytes", ColumnType::Binary, 50);
  add(u"Remarks", ColumnType::Memo);
  add(u"Picture", ColumnType::Ole);
  things.indexes = {{.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true},
                    {.name = u"Several", .columns = {{u"Name"}, {u"Digits", true}}},
                    {.name = u"Dates", .columns = {{u"Made", true}, {u"Money"}}}};
  const TemporaryFolder folder;
  const auto path = folder.Path() / "types.mdb";
  Engine::Create(PathText(path), {}, [&](Engine& engine) {
    Engine::WriteScope scope(engine);
    engine.CreateTable(things);
    scope.Commit();
  });
  RandomValues random(19991231);
  const auto engine = Engine::Open(PathText(path));
  Model model(*engine, things.name);
  for (int step = 0; step < 400 && !HasFailure(); ++step) model.Step(random);
  model.Verify();
  EXPECT_GT(model.Size(), 40u);
  ExpectOtherReadersToAgree(path, *engine);
  if (kOtherReaderMissing) GTEST_SKIP() << kHeldAgainstTheModelOnly;
}

INSTANTIATE_TEST_SUITE_P(
    Files, WriteModelTest,
    testing::ValuesIn(test::TrialsAtHand<Trial>(
        {{"corpus/jet4/compIndexTestV2003.mdb", "Table1", 1200},
         {"corpus/jet4/testUnicodeCompV2003.mdb", "Table", 800},
         {"corpus/jet4/overflowTestV2000.mdb", "Table1", 800},
         {"corpus/jet4/delColTestV2000.mdb", "Table1", 400},
         {"corpus/jet4/fixedTextTestV2000.mdb", "users", 400},
         {"corpus/jet4/fixedNumericTestV2003.mdb", "test", 400},
         {"corpus/jet4/bigIndexTestV2000.mdb", "Table1", 1200},
         {"corpus/jet4/testIndexPropertiesV2003.mdb", "TableIgnoreNulls2", 800},
         {"corpus/jet4/testIndexPropertiesV2003.mdb", "TableUnique2_temp", 800},
         {"corpus/jet4/testPromotionV2003.mdb", "jobDB1", 1200},
         {"corpus/jet4/test2V2000.mdb", "MSP_PROJECTS", 200},
         {"foreign/indexed/NewDB.mdb", "Used_Cards", 1200},
         {"sites/indexed/NewDB.mdb", "Partition_Settings", 1200},
         {"sites/indexed/NewDB.mdb", "Used_Cards", 1200},
         {"sites/indexed/NewDB.mdb", "Node_Type_Max", 1200},
         {"sites/shapes/NewDB.mdb", "Descending", 1200},
         {"sites/shapes/NewDB.mdb", "Nulls", 800},
         {"sites/shapes/NewDB.mdb", "LongKeys", 1200},
         {"sites/shapes/NewDB.mdb", "Wide", 200}},
        &Trial::file)),
    [](const testing::TestParamInfo<Trial>& param) {
      std::string name = std::string(param.param.file) + "_" + param.param.table;
      for (char& letter : name) {
        if (!std::isalnum(static_cast<unsigned char>(letter))) letter = '_';
      }
      return name;
    });

}  // namespace
}  // namespace rdv::jet
