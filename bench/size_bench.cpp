// The same query on a new connection, in a file of 400,000 lines and in the small sample site.
#include <benchmark/benchmark.h>

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

void OpenQuery_45Lines(benchmark::State& state) {
  OpenAndQuery(state, CopySite("plain", "size"), 1);
}
BENCHMARK(OpenQuery_45Lines)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
