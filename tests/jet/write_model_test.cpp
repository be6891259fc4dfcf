// Thousands of random changes to files with many indexes, held against a model in memory.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>

#include "data/jet/check.h"
#include "data/jet/engine.h"
#include "data/jet/index_key.h"
#include "data/jet/table_reader.h"
#include "runtime/error.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

using Row = std::vector<Value>;

class RandomValues {
 public:
  explicit RandomValues(uint32_t seed) : random_(seed) {}

  size_t Below(size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random_);
  }
  bool OneIn(size_t count) { return Below(count) == 0; }

  // Values repeat now and then, so that unique indexes have something to refuse.
  Value For(const Column& column) {
    if (OneIn(8) && !column.required) return Null();
    switch (column.type) {
      case ColumnType::Boolean:
        return OneIn(2);
      case ColumnType::Byte:
        return static_cast<uint8_t>(Below(256));
      case ColumnType::Integer:
        return static_cast<int16_t>(static_cast<int>(Below(4000)) - 2000);
      case ColumnType::Long:
        return static_cast<int32_t>(Below(100000)) - 50000;
      case ColumnType::Currency:
        return Currency{static_cast<int64_t>(Below(1'000'000)) - 500'000};
      case ColumnType::Single:
        return static_cast<float>(Below(10000)) / 8 - 600;
      case ColumnType::Double:
        return static_cast<double>(Below(10000)) / 8 - 600;
      case ColumnType::DateTime:
        return DateTime{static_cast<double>(Below(80000)) / 2};
      case ColumnType::Guid:
        return RandomGuid();
      case ColumnType::Numeric:
        return DecimalNumber{OneIn(2), column.scale, {0, 0, 0, static_cast<uint32_t>(Below(9999))}};
      case ColumnType::Text:
        return RandomText(column.fixed ? 1 : 0, column.length / 2);
      case ColumnType::Memo:
        return RandomText(0, OneIn(10) ? 9000 : OneIn(3) ? 700 : 40);
      case ColumnType::Binary:
        return RandomBytes(column.length);
      case ColumnType::Ole:
        return RandomBytes(OneIn(10) ? 20000 : 200);
    }
    return Null();
  }

 private:
  Guid RandomGuid() {
    Guid guid;
    for (uint8_t& byte : guid.bytes) byte = static_cast<uint8_t>(Below(256));
    return guid;
  }
  Binary RandomBytes(size_t longest) {
    Binary bytes(Below(longest + 1));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(Below(256));
    return bytes;
  }
  Text RandomText(size_t shortest, size_t longest) {
    if (longest == 0) return {};
    if (longest <= 255 && OneIn(2)) longest = std::min<size_t>(longest, 12);
    constexpr TextView kLetters = u"aAbBcCeE \u00E9\u00C4\u00DF-'12 .\u0141\u03A9\u0416xyz";
    Text text(std::max(shortest, Below(longest + 1)), u' ');
    const bool plain = OneIn(2);
    for (char16_t& unit : text)
      unit = plain ? static_cast<char16_t>(u'a' + Below(26)) : kLetters[Below(kLetters.size())];
    // A column of a fixed length fills up with blanks.
    return text;
  }

  std::mt19937 random_;
};

std::string Findings(const CheckReport& report) {
  std::string text;
  for (const Finding& finding : report.findings)
    text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
  return text;
}

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

// The rows that an independent reader finds; nothing where it is not installed.
std::optional<size_t> CountByAnotherReader([[maybe_unused]] const std::filesystem::path& path,
                                           [[maybe_unused]] const std::string& table) {
#ifdef _WIN32
  return std::nullopt;
#else
  if (std::system("command -v mdb-json > /dev/null") != 0) return std::nullopt;
  const std::string command = "mdb-json '" + path.string() + "' '" + table + "'";
  FILE* pipe = popen(command.c_str(), "r");
  size_t lines = 0;
  for (int letter = fgetc(pipe); letter != EOF; letter = fgetc(pipe)) lines += letter == '\n';
  EXPECT_EQ(pclose(pipe), 0);
  return lines;
#endif
}

struct Trial {
  const char* file;
  const char* table;
  int steps;
};

class WriteModelTest : public testing::TestWithParam<Trial> {};

TEST_P(WriteModelTest, AgreesWithTheFileAfterThousandsOfChanges) {
  const Trial& trial = GetParam();
  if (!std::filesystem::exists(SharedFile(trial.file))) GTEST_SKIP() << "no " << trial.file;
  const TemporaryFolder folder;
  const auto path = folder.Copy(SharedFile(trial.file));
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
    EXPECT_EQ(CountByAnotherReader(path, trial.table).value_or(model.Size()), model.Size());
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(model.Size(), 10u);
  model.DeleteAll(random);
  EXPECT_EQ(check(), "");
}

INSTANTIATE_TEST_SUITE_P(
    RealFiles, WriteModelTest,
    testing::Values(Trial{"corpus/jet4/compIndexTestV2003.mdb", "Table1", 1200},
                    Trial{"corpus/jet4/testUnicodeCompV2003.mdb", "Table", 800},
                    Trial{"corpus/jet4/overflowTestV2000.mdb", "Table1", 800},
                    Trial{"corpus/jet4/delColTestV2000.mdb", "Table1", 400},
                    Trial{"corpus/jet4/fixedTextTestV2000.mdb", "users", 400},
                    Trial{"corpus/jet4/fixedNumericTestV2003.mdb", "test", 400},
                    Trial{"corpus/jet4/bigIndexTestV2000.mdb", "Table1", 1200},
                    Trial{"corpus/jet4/testIndexPropertiesV2003.mdb", "TableIgnoreNulls2", 800},
                    Trial{"corpus/jet4/testIndexPropertiesV2003.mdb", "TableUnique2_temp", 800},
                    Trial{"corpus/jet4/testPromotionV2003.mdb", "jobDB1", 1200},
                    Trial{"corpus/jet4/test2V2000.mdb", "MSP_PROJECTS", 200},
                    Trial{"sites/indexed/NewDB.mdb", "Partition_Settings", 1200},
                    Trial{"sites/indexed/NewDB.mdb", "Used_Cards", 1200},
                    Trial{"sites/indexed/NewDB.mdb", "Node_Type_Max", 1200}),
    [](const testing::TestParamInfo<Trial>& param) {
      std::string name = std::string(param.param.file) + "_" + param.param.table;
      for (char& letter : name) {
        if (!std::isalnum(static_cast<unsigned char>(letter))) letter = '_';
      }
      return name;
    });

}  // namespace
}  // namespace rdv::jet
