// Update_All_Lines by key: one statement on an open connection, locks and indexes included, the
// flush not; and ten of them as one Apply, with all flushes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

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

// What the measured statements are given is ready before the clock runs, but for the volume:
// another one every time, lest nothing changes. As many as are needed for each to meet other pages
// than the one before it.
constexpr size_t kTurns = 499;
constexpr size_t kVolume = 6;

// Goes on from run to run: what the runs before have written is in the file.
size_t NextTurn() {
  static size_t turn = 0;
  return ++turn;
}

Text VolumeOf(size_t turn) {
  return Decimal(static_cast<int64_t>(turn % 200));
}

// The arguments that leave a stored line as it is.
LineArguments ArgumentsFor(const std::vector<Value>& row) {
  const RowTable& lines = LinesOf(DatabaseOf(Site()));
  LineArguments arguments;
  for (size_t i = 0; i < arguments.size(); ++i) {
    for (size_t column = 0; column < lines.columns.size(); ++column) {
      if (lines.columns[column] != kLineColumns[i]) continue;
      arguments[i] = IsNull(row[column]) ? Text(u"0") : ToText(row[column]);
    }
  }
  return arguments;
}

// Another line at every turn. The first call takes long.
const LineArguments& LineToUpdate(size_t turn) {
  static std::vector<LineArguments> prepared = [] {
    const RowTable& stored = LinesOf(DatabaseOf(Site()));
    std::vector<LineArguments> lines;
    for (size_t i = 0; i < kTurns; ++i)
      lines.push_back(ArgumentsFor(stored.rows[i * 7919 % stored.rows.size()]));
    return lines;
  }();
  LineArguments& line = prepared[turn % prepared.size()];
  line[kVolume] = VolumeOf(turn);
  return line;
}

// All pages have been written before, so none is flushed for the first time.
void Update_Engine(benchmark::State& state) {
  UseSite(Site());
  DataBase database;
  for (size_t line = 0; line < kTurns; ++line) database.Update_All_Lines(LineToUpdate(NextTurn()));
  for (auto _ : state) database.Update_All_Lines(LineToUpdate(NextTurn()));
}
BENCHMARK(Update_Engine)->Unit(benchmark::kMicrosecond);

// SQLite writes positional parameters as "?"; the statement is otherwise the stored one.
std::string SqliteUpdate() {
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
  return text;
}

void RunUpdate(sqlite3_stmt* update, const LineArguments& arguments) {
  for (size_t i = 0; i < arguments.size(); ++i) {
    BindText(update, static_cast<int>(i) + 1, ToUtf8(arguments[i]));
  }
  benchmark::DoNotOptimize(FetchAll(update));
}

fs::path SqliteFile(SqlitePromise promise) {
  const fs::path file = WorkFolder() / (std::string("update-") + promise.journal_mode + ".sqlite");
  MakeSqliteLines(file, LinesOf(DatabaseOf(Site())));
  return file;
}

void Update_Sqlite(benchmark::State& state, SqlitePromise promise) {
  const SqliteDatabase database = OpenSqlite(SqliteFile(promise), promise);
  const SqliteStatement update = Prepare(database.get(), SqliteUpdate());
  LineToUpdate(NextTurn());
  for (auto _ : state) RunUpdate(update.get(), LineToUpdate(NextTurn()));
}
BENCHMARK_CAPTURE(Update_Sqlite, DELETE_OFF, {"DELETE", "OFF"})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Update_Sqlite, WAL_OFF, {"WAL", "OFF"})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Update_Sqlite, DELETE_FULL, {"DELETE", "FULL"})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Update_Sqlite, WAL_FULL, {"WAL", "FULL"})->Unit(benchmark::kMicrosecond);

// --- An Apply: ten lines of one configuration, and what was written is on the disk ---

constexpr size_t kRowsOfApply = 10;

using Lines = std::array<LineArguments, kRowsOfApply>;

std::vector<Lines> FirstLinesOfConfigurations() {
  const RowTable& stored = LinesOf(DatabaseOf(Site()));
  const auto number = std::ranges::find(stored.columns, u"Config_ID") - stored.columns.begin();
  const auto by_line = [](const LineArguments& one, const LineArguments& other) {
    return std::stoi(ToUtf8(one.back())) < std::stoi(ToUtf8(other.back()));
  };
  std::map<Text, std::vector<LineArguments>> by_configuration;
  for (const std::vector<Value>& row : stored.rows)
    by_configuration[ToText(row[static_cast<size_t>(number)])].push_back(ArgumentsFor(row));
  std::vector<Lines> found;
  for (auto& [configuration, lines] : by_configuration) {
    if (lines.size() < kRowsOfApply || found.size() == kTurns) continue;
    std::ranges::sort(lines, by_line);
    std::ranges::copy_n(lines.begin(), kRowsOfApply, found.emplace_back().begin());
  }
  return found;
}

// Those of another configuration at every turn. The first call takes long.
const Lines& LinesToApply(size_t turn) {
  static std::vector<Lines> prepared = FirstLinesOfConfigurations();
  Lines& lines = prepared[turn % prepared.size()];
  for (LineArguments& line : lines) line[kVolume] = VolumeOf(turn);
  return lines;
}

// As the control does it: a connection, ten statements, the connection closed with its flushes.
void Apply_Engine(benchmark::State& state) {
  UseSite(Site());
  LinesToApply(NextTurn());
  for (auto _ : state) {
    DataBase database;
    for (const LineArguments& line : LinesToApply(NextTurn())) database.Update_All_Lines(line);
    database.Close();
  }
}
BENCHMARK(Apply_Engine)->UseRealTime()->Unit(benchmark::kMicrosecond);

void ApplyTo(sqlite3* database, sqlite3_stmt* update) {
  Run(database, "BEGIN");
  for (const LineArguments& line : LinesToApply(NextTurn())) RunUpdate(update, line);
  Run(database, "COMMIT");
}

// On a connection of its own, as the engine's.
void Apply_Sqlite(benchmark::State& state, SqlitePromise promise) {
  const fs::path file = SqliteFile(promise);
  LinesToApply(NextTurn());
  for (auto _ : state) {
    const SqliteDatabase database = OpenSqlite(file, promise);
    ApplyTo(database.get(), Prepare(database.get(), SqliteUpdate()).get());
  }
}
BENCHMARK_CAPTURE(Apply_Sqlite, DELETE_FULL, {"DELETE", "FULL"})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Apply_Sqlite, WAL_FULL, {"WAL", "FULL"})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

// On a connection that stays open, with the statement prepared.
void ApplyOpen_Sqlite(benchmark::State& state, SqlitePromise promise) {
  const SqliteDatabase database = OpenSqlite(SqliteFile(promise), promise);
  const SqliteStatement update = Prepare(database.get(), SqliteUpdate());
  LinesToApply(NextTurn());
  for (auto _ : state) ApplyTo(database.get(), update.get());
}
BENCHMARK_CAPTURE(ApplyOpen_Sqlite, DELETE_FULL, {"DELETE", "FULL"})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ApplyOpen_Sqlite, WAL_FULL, {"WAL", "FULL"})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
