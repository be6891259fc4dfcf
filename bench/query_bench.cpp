// The twelve lines of one configuration, by key: on a new connection and on an open one, in a
// small file and in a large one.
#include <benchmark/benchmark.h>

#include "bench/sample_files.h"
#include "bench/sqlite_rival.h"
#include "data/commands.h"
#include "data/database.h"
#include "data/jet/sql/jet_connection.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

constexpr char kSqliteStatement[] =
    "SELECT Used_Lines.* FROM Used_Lines WHERE Config_ID = ? AND Base_Slot_No = 1 AND "
    "Slot_Offset = 1 ORDER BY Line ";

const fs::path& Large() {
  static const fs::path site = CopySite("large", "query-large");
  return site;
}

const fs::path& Plain() {
  static const fs::path site = CopySite("plain", "query-plain");
  return site;
}

// A configuration that the file holds; another one at every call.
Text NextConfiguration(const fs::path& site) {
  static size_t turn = 0;
  const RowTable& lines = LinesOf(DatabaseOf(site));
  turn = (turn + 7919) % lines.rows.size();
  return ToText(lines.rows[turn][0]);
}

size_t WalkLines(Recordset& lines) {
  size_t rows = 0;
  for (; !lines.EndOfFile(); lines.MoveNext()) ++rows;
  lines.Close();
  return rows;
}

void OpenAndQuery(benchmark::State& state, const fs::path& site) {
  UseSite(site);
  LinesOf(DatabaseOf(site));
  for (auto _ : state) {
    DataBase database;
    database.Get_Used_Lines(NextConfiguration(site));
    benchmark::DoNotOptimize(WalkLines(database.rsGet_Used_Lines));
  }
}

void OpenQuery_Engine_Large(benchmark::State& state) {
  OpenAndQuery(state, Large());
}
BENCHMARK(OpenQuery_Engine_Large)->Unit(benchmark::kMicrosecond);

void OpenQuery_Engine_Plain(benchmark::State& state) {
  OpenAndQuery(state, Plain());
}
BENCHMARK(OpenQuery_Engine_Plain)->Unit(benchmark::kMicrosecond);

const fs::path& LargeSqlite() {
  static const fs::path file = [] {
    const fs::path made = WorkFolder() / "query.sqlite";
    MakeSqliteLines(made, LinesOf(DatabaseOf(Large())));
    return made;
  }();
  return file;
}

void OpenQuery_Sqlite_Large(benchmark::State& state) {
  LargeSqlite();
  for (auto _ : state) {
    const SqliteDatabase database = OpenSqlite(LargeSqlite());
    const SqliteStatement select = Prepare(database.get(), kSqliteStatement);
    BindText(select.get(), 1, ToUtf8(NextConfiguration(Large())));
    benchmark::DoNotOptimize(FetchAll(select.get()));
  }
}
BENCHMARK(OpenQuery_Sqlite_Large)->Unit(benchmark::kMicrosecond);

void WarmQuery_Engine_Large(benchmark::State& state) {
  UseSite(Large());
  LinesOf(DatabaseOf(Large()));
  DataBase database;
  for (auto _ : state) {
    database.Get_Used_Lines(NextConfiguration(Large()));
    benchmark::DoNotOptimize(WalkLines(database.rsGet_Used_Lines));
  }
}
BENCHMARK(WarmQuery_Engine_Large)->Unit(benchmark::kMicrosecond);

void WarmQuery_Sqlite_Large(benchmark::State& state) {
  const SqliteDatabase database = OpenSqlite(LargeSqlite());
  const SqliteStatement select = Prepare(database.get(), kSqliteStatement);
  for (auto _ : state) {
    BindText(select.get(), 1, ToUtf8(NextConfiguration(Large())));
    benchmark::DoNotOptimize(FetchAll(select.get()));
  }
}
BENCHMARK(WarmQuery_Sqlite_Large)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
