// Full scan: every column of every row of 36,000 lines as text.
#include <benchmark/benchmark.h>

#include "bench/libmdb_rival.h"
#include "bench/sample_files.h"
#include "bench/sqlite_rival.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

const fs::path& LargeDatabase() {
  static const fs::path file = DatabaseOf(CopySite("large", "scan"));
  return file;
}

void CountRows(benchmark::State& state, size_t rows) {
  state.SetItemsProcessed(static_cast<int64_t>(rows));
  state.counters["time_per_row"] = benchmark::Counter(
      static_cast<double>(rows), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

ScanTotals ScanWithEngine(const fs::path& file) {
  const auto engine = jet::Engine::Open(FromUtf8(file.string()));
  const jet::Engine::ReadScope scope(*engine);
  const jet::TableDefinition& table = engine->Table(u"Used_Lines");
  jet::TableScan scan(engine->File(), table);
  ScanTotals totals;
  Text field;
  while (scan.Next()) {
    ++totals.rows;
    for (const jet::Column& column : table.columns) {
      field.clear();
      scan.Row().AppendText(column, field);
      totals.bytes += field.size();
    }
  }
  return totals;
}

void Scan_Engine(benchmark::State& state) {
  size_t rows = 0;
  for (auto _ : state) rows += ScanWithEngine(LargeDatabase()).rows;
  CountRows(state, rows);
}
BENCHMARK(Scan_Engine)->Unit(benchmark::kMillisecond);

void Scan_Libmdb(benchmark::State& state) {
  size_t rows = 0;
  for (auto _ : state) rows += ScanWithLibmdb(LargeDatabase(), "Used_Lines").rows;
  CountRows(state, rows);
}
BENCHMARK(Scan_Libmdb)->Unit(benchmark::kMillisecond);

void Scan_Sqlite(benchmark::State& state) {
  const fs::path file = WorkFolder() / "scan.sqlite";
  MakeSqliteLines(file, LinesOf(LargeDatabase()));
  size_t rows = 0;
  for (auto _ : state) {
    const SqliteDatabase database = OpenSqlite(file);
    const SqliteStatement select = Prepare(database.get(), "SELECT * FROM Used_Lines");
    benchmark::DoNotOptimize(FetchAll(select.get()));
    rows += LinesOf(LargeDatabase()).rows.size();
  }
  CountRows(state, rows);
}
BENCHMARK(Scan_Sqlite)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rdv::bench
