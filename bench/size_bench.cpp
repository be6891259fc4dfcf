// The same query on a new connection, in a file of 400,000 lines and in the small sample site.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "bench/sample_files.h"
#include "data/database.h"
#include "tools/rdvsite/demonstration_site.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kConfigurations = 25000;  // of sixteen lines each

const fs::path& HugeSite() {
  static const fs::path site = [] {
    const fs::path made = WorkFolder() / "huge";
    CreateDemonstrationSite(FromUtf8(made.string()), kConfigurations);
    return made;
  }();
  return site;
}

void OpenAndQuery(benchmark::State& state, const fs::path& site, int configurations) {
  UseSite(site);
  int turn = 0;
  for (auto _ : state) {
    turn = (turn + 7919) % configurations;
    DataBase database;
    database.Get_Used_Lines(Decimal(turn + 1));
    benchmark::DoNotOptimize(database.rsGet_Used_Lines.EndOfFile());
  }
}

void OpenQuery_400000Lines(benchmark::State& state) {
  OpenAndQuery(state, HugeSite(), kConfigurations);
}
BENCHMARK(OpenQuery_400000Lines)->Unit(benchmark::kMicrosecond);

// In KiB, as the system counts it: what is in memory now, or the most that was since `ForgetPeak`.
size_t MemoryInUse(const std::string& what) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(what + ":")) return std::stoul(line.substr(what.size() + 1));
  }
  return 0;
}
void ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

// What one query takes at most above the process as it was before; what others left to the
// allocator does not count as there.
void PeakMemory_400000Lines(benchmark::State& state) {
  UseSite(HugeSite());
  size_t peak = 0;
  for (auto _ : state) {
    state.PauseTiming();
    malloc_trim(0);
    ForgetPeak();
    const size_t before = MemoryInUse("VmRSS");
    state.ResumeTiming();
    DataBase database;
    database.Get_Used_Lines(u"12345");
    benchmark::DoNotOptimize(database.rsGet_Used_Lines.EndOfFile());
    state.PauseTiming();
    peak = std::max(peak, MemoryInUse("VmHWM") - before);
    state.ResumeTiming();
  }
  state.counters["KiB"] = static_cast<double>(peak);
  state.counters["file_MB"] = static_cast<double>(fs::file_size(DatabaseOf(HugeSite()))) / 1e6;
}
BENCHMARK(PeakMemory_400000Lines)->Iterations(20)->Unit(benchmark::kMicrosecond);

void OpenQuery_45Lines(benchmark::State& state) {
  OpenAndQuery(state, CopySite("plain", "size"), 1);
}
BENCHMARK(OpenQuery_45Lines)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
