// rdvlines on a large site: 3,000 configurations. What is wanted stands beside each.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "bench/sample_files.h"
#include "tools/lines/program.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

std::string RunLines(benchmark::State& state, const std::vector<std::string>& words, int wanted) {
  std::ostringstream out;
  std::ostringstream errors;
  if (lines::RunLines(words, out, errors) != wanted) state.SkipWithError(errors.str().c_str());
  return out.str();
}

std::string LargeSite(const char* name) {
  return CopySite("large", name).string();
}

std::string TableOf(benchmark::State& state, const std::string& site) {
  const std::string table = (WorkFolder() / "lines.csv").string();
  RunLines(state, {"export", site, "-o", table}, 0);
  return table;
}

// Under 1 s.
void Lines_Check(benchmark::State& state) {
  const std::string site = LargeSite("lines-check");
  for (auto _ : state) RunLines(state, {"check", site, "--json"}, 1);
}
BENCHMARK(Lines_Check)->Unit(benchmark::kMillisecond);

// Under 1 s.
void Lines_Export(benchmark::State& state) {
  const std::string site = LargeSite("lines-export");
  for (auto _ : state) TableOf(state, site);
}
BENCHMARK(Lines_Export)->Unit(benchmark::kMillisecond);

// Under 2 s.
void Lines_Report(benchmark::State& state) {
  const std::string site = LargeSite("lines-report");
  const std::string page = (WorkFolder() / "lines.html").string();
  for (auto _ : state) RunLines(state, {"report", site, "-o", page}, 1);
}
BENCHMARK(Lines_Report)->Unit(benchmark::kMillisecond);

// Under 2 s.
void Lines_ImportUnchanged(benchmark::State& state) {
  const std::string site = LargeSite("lines-unchanged");
  const std::string table = TableOf(state, site);
  for (auto _ : state) RunLines(state, {"import", site, table}, 0);
}
BENCHMARK(Lines_ImportUnchanged)->Unit(benchmark::kMillisecond);

// The label of every line that is installed gets another letter at its end. Under 5 s.
void WriteOtherLabels(const std::string& table, char letter) {
  std::ifstream file(table, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  file.close();
  std::string changed;
  size_t at = text.find("\r\n") + 2;
  changed.append(text, 0, at);
  for (size_t end; (end = text.find("\r\n", at)) != std::string::npos; at = end + 2) {
    std::string row = text.substr(at, end - at);
    if (row.find(",Not Installed,") == std::string::npos) {
      row.insert(row.size() - (row.back() == '"' ? 1 : 0), 1, letter);
    }
    changed += row + "\r\n";
  }
  std::ofstream(table, std::ios::binary) << changed;
}

void Lines_ImportChangeOnEveryLine(benchmark::State& state) {
  const std::string site = LargeSite("lines-changed");
  const std::string table = TableOf(state, site);
  for (auto _ : state) {
    state.PauseTiming();
    WriteOtherLabels(table, 'x');
    state.ResumeTiming();
    RunLines(state, {"import", site, table}, 0);
  }
}
BENCHMARK(Lines_ImportChangeOnEveryLine)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
}  // namespace rdv::bench
