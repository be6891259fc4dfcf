// Update_All_Lines by key on an open connection: locks and indexes included, the flush not.
#include <benchmark/benchmark.h>

#include "bench/sample_files.h"
#include "bench/sqlite_rival.h"
#include "data/commands.h"
#include "data/database.h"
#include "tests/support/line_columns.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

const fs::path& Site() {
  static const fs::path site = CopySite("large", "update");
  return site;
}

// The arguments that leave a stored line as it is but for its volume, which changes every time.
LineArguments ArgumentsFor(size_t turn) {
  const RowTable& lines = LinesOf(DatabaseOf(Site()));
  const auto& row = lines.rows[turn * 7919 % lines.rows.size()];
  LineArguments arguments;
  for (size_t i = 0; i < arguments.size(); ++i) {
    for (size_t column = 0; column < lines.columns.size(); ++column) {
      if (lines.columns[column] != kLineColumns[i]) continue;
      arguments[i] = IsNull(row[column]) ? Text(u"0") : ToText(row[column]);
    }
  }
  arguments[6] = Decimal(static_cast<int64_t>(turn % 200));
  return arguments;
}

void Update_Engine(benchmark::State& state) {
  UseSite(Site());
  ArgumentsFor(0);
  DataBase database;
  size_t turn = 0;
  for (auto _ : state) database.Update_All_Lines(ArgumentsFor(++turn));
}
BENCHMARK(Update_Engine)->Unit(benchmark::kMicrosecond);

void Update_Sqlite(benchmark::State& state) {
  const fs::path file = WorkFolder() / "update.sqlite";
  MakeSqliteLines(file, LinesOf(DatabaseOf(Site())));
  const SqliteDatabase database = OpenSqlite(file);
  // SQLite writes positional parameters as "?"; the statement is otherwise the stored one.
  std::string text;
  bool quoted = false;
  for (const char unit : ToUtf8(DefinitionOf(Command::Update_All_Lines).statement)) {
    if (unit == '`') {
      quoted = !quoted;
      if (quoted) text += '?';
    } else if (!quoted) {
      text += unit;
    }
  }
  const SqliteStatement update = Prepare(database.get(), text);
  size_t turn = 0;
  for (auto _ : state) {
    const LineArguments arguments = ArgumentsFor(++turn);
    for (size_t i = 0; i < arguments.size(); ++i) {
      BindText(update.get(), static_cast<int>(i) + 1, ToUtf8(arguments[i]));
    }
    benchmark::DoNotOptimize(FetchAll(update.get()));
  }
}
BENCHMARK(Update_Sqlite)->Unit(benchmark::kMicrosecond);

void PrepareArguments_Both(benchmark::State& state) {
  ArgumentsFor(0);
  size_t turn = 0;
  for (auto _ : state) benchmark::DoNotOptimize(ArgumentsFor(++turn));
}
BENCHMARK(PrepareArguments_Both)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
