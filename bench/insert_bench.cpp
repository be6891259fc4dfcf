// Bulk insertion of lines into an empty table with a primary key and a second index, in one
// statement; the cost per line as the table grows.
#include <benchmark/benchmark.h>

#include "bench/sample_files.h"
#include "bench/sqlite_rival.h"
#include "data/jet/creation.h"
#include "data/jet/engine.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

const fs::path& Source() {
  static const fs::path file = DatabaseOf(CopySite("large", "insert-source"));
  return file;
}

// The definition of Used_Lines in the sample site, under the same names.
jet::TableSpec LinesSpec() {
  const auto engine = jet::Engine::Open(FromUtf8(Source().string()));
  const jet::Engine::ReadScope scope(*engine);
  jet::TableSpec spec;
  spec.name = u"Used_Lines";
  for (const jet::Column& column : engine->Table(spec.name).columns) {
    const bool text = column.type == jet::ColumnType::Text;
    spec.columns.push_back({.name = column.name,
                            .type = column.type,
                            .length = static_cast<uint16_t>(text ? column.length / 2 : 0)});
  }
  spec.indexes.push_back(
      {.name = u"PrimaryKey",
       .columns = {{u"Config_ID"}, {u"Base_Slot_No"}, {u"Slot_Offset"}, {u"Line"}},
       .primary = true});
  spec.indexes.push_back({.name = u"ByPartition", .columns = {{u"Partition_ID"}, {u"Line"}}});
  return spec;
}

// The sample site's lines, again and again under configuration numbers of their own.
std::vector<jet::Assignment> LineNumber(size_t number) {
  const RowTable& lines = LinesOf(Source());
  std::vector<jet::Assignment> values;
  const auto& row = lines.rows[number % lines.rows.size()];
  for (size_t column = 0; column < row.size(); ++column) values.push_back({column, row[column]});
  const auto set = [&](TextView name, int16_t value) {
    for (size_t column = 0; column < lines.columns.size(); ++column) {
      if (lines.columns[column] == name) values[column].value = value;
    }
  };
  set(u"Config_ID", static_cast<int16_t>(number / 12 % 32767));
  set(u"Base_Slot_No", static_cast<int16_t>(1 + number / 12 / 32767));
  set(u"Line", static_cast<int16_t>(1 + number % 12));
  return values;
}

void Insert_Engine(benchmark::State& state) {
  const size_t count = static_cast<size_t>(state.range(0));
  const jet::TableSpec spec = LinesSpec();
  const fs::path file = WorkFolder() / "insert.mdb";
  LineNumber(0);
  for (auto _ : state) {
    state.PauseTiming();
    fs::remove(file);
    jet::Engine::Create(FromUtf8(file.string()));
    const auto engine = jet::Engine::Open(FromUtf8(file.string()));
    {
      jet::Engine::WriteScope scope(*engine);
      engine->CreateTable(spec);
      scope.Commit();
    }
    state.ResumeTiming();
    jet::Engine::WriteScope scope(*engine);
    const jet::TableDefinition& table = engine->Table(spec.name);
    for (size_t i = 0; i < count; ++i) engine->Insert(table, LineNumber(i));
    scope.Commit();
  }
  state.counters["time_per_row"] =
      benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(Insert_Engine)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void Insert_Sqlite(benchmark::State& state) {
  const size_t count = static_cast<size_t>(state.range(0));
  const RowTable& lines = LinesOf(Source());
  RowTable rows;
  rows.columns = lines.columns;
  for (size_t i = 0; i < count; ++i) {
    std::vector<Value>& row = rows.rows.emplace_back();
    for (jet::Assignment& value : LineNumber(i)) row.push_back(std::move(value.value));
  }
  for (auto _ : state) {
    MakeSqliteLines(WorkFolder() / "insert.sqlite", rows, {"Partition_ID, Line"});
  }
  state.counters["time_per_row"] =
      benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(Insert_Sqlite)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rdv::bench
