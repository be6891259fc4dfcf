// Bulk insertion of lines into an empty table with a primary key and a second index, in one
// statement; the cost per line as the table grows.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "bench/sample_files.h"
#include "bench/sqlite_rival.h"
#include "data/jet/catalog/table_spec.h"
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
RowTable Lines(size_t count) {
  const RowTable& lines = LinesOf(Source());
  const auto place = [&](TextView name) {
    return static_cast<size_t>(std::ranges::find(lines.columns, name) - lines.columns.begin());
  };
  const size_t configuration = place(u"Config_ID");
  const size_t slot = place(u"Base_Slot_No");
  const size_t line = place(u"Line");
  RowTable made;
  made.columns = lines.columns;
  for (size_t i = 0; i < count; ++i) {
    std::vector<Value>& row = made.rows.emplace_back(lines.rows[i % lines.rows.size()]);
    row[configuration] = static_cast<int16_t>(i / 12 % 32767);
    row[slot] = static_cast<int16_t>(1 + i / 12 / 32767);
    row[line] = static_cast<int16_t>(1 + i % 12);
  }
  return made;
}

std::vector<std::vector<jet::Assignment>> ToEngine(RowTable lines) {
  std::vector<std::vector<jet::Assignment>> rows;
  for (auto& line : lines.rows) {
    std::vector<jet::Assignment>& row = rows.emplace_back();
    for (size_t column = 0; column < line.size(); ++column)
      row.push_back({column, std::move(line[column])});
  }
  return rows;
}

void CountRows(benchmark::State& state, size_t count) {
  state.counters["time_per_row"] =
      benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

// Both get rows that are ready in the form that they take, and an empty table; what is measured is
// the insertion and the writing to the file, without the flush.
void Insert_Engine(benchmark::State& state) {
  const jet::TableSpec spec = LinesSpec();
  const auto rows = ToEngine(Lines(static_cast<size_t>(state.range(0))));
  const fs::path file = WorkFolder() / "insert.mdb";
  for (auto _ : state) {
    state.PauseTiming();
    fs::remove(file);
    jet::Engine::Create(FromUtf8(file.string()));
    auto engine = jet::Engine::Open(FromUtf8(file.string()));
    {
      jet::Engine::WriteScope scope(*engine);
      engine->CreateTable(spec);
      scope.Commit();
    }
    state.ResumeTiming();
    {
      jet::Engine::WriteScope scope(*engine);
      const jet::TableDefinition& table = engine->Table(spec.name);
      for (const auto& row : rows) engine->Insert(table, row);
      scope.Commit();
    }
    state.PauseTiming();
    engine.reset();
    state.ResumeTiming();
  }
  CountRows(state, rows.size());
}
BENCHMARK(Insert_Engine)->Apply(Sizes);

void Insert_Sqlite(benchmark::State& state, SqlitePromise promise) {
  const RowTable lines = Lines(static_cast<size_t>(state.range(0)));
  const SqliteRows rows = ToSqlite(lines);
  for (auto _ : state) {
    state.PauseTiming();
    SqliteDatabase database =
        CreateSqliteLines(WorkFolder() / "insert.sqlite", lines, {"Partition_ID, Line"}, promise);
    state.ResumeTiming();
    InsertSqliteLines(database.get(), rows);
    state.PauseTiming();
    database.reset();
    state.ResumeTiming();
  }
  CountRows(state, rows.size());
}
BENCHMARK_CAPTURE(Insert_Sqlite, DELETE_OFF, {"DELETE", "OFF"})->Apply(Sizes);
BENCHMARK_CAPTURE(Insert_Sqlite, WAL_OFF, {"WAL", "OFF"})->Apply(Sizes);

}  // namespace
}  // namespace rdv::bench
