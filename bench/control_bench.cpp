// The control on in-memory widgets: loading a unit, choosing for all rows, saving. Every procedure
// opens its own connection, as in use.
#include <benchmark/benchmark.h>

#include "bench/sample_files.h"
#include "control/line_config_control.h"
#include "widgets/memory/memory_form.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kVolumeColumn = 14;

void ShowControl(benchmark::State& state, const fs::path& site, int16_t configuration) {
  UseSite(site);
  memory::MemoryForm form;
  ucRDVLineConfig control(form.Widgets(), {});
  for (auto _ : state) {
    if (!control.ShowControl(configuration)) {
      state.SkipWithError("the unit did not load");
      break;
    }
  }
}

// Any configuration of the large site.
int16_t ConfigurationOf(const fs::path& site) {
  return ToInteger(LinesOf(DatabaseOf(site)).rows.front()[0]);
}

void Show_Plain(benchmark::State& state) {
  ShowControl(state, CopySite("plain", "show"), 1);
}
BENCHMARK(Show_Plain)->Unit(benchmark::kMicrosecond);

void Show_Large(benchmark::State& state) {
  const fs::path site = CopySite("large", "show-large");
  ShowControl(state, site, ConfigurationOf(site));
}
BENCHMARK(Show_Large)->Unit(benchmark::kMicrosecond);

// All rows selected and a volume picked for them.
void ChooseForAllRows(benchmark::State& state) {
  UseSite(CopySite("plain", "choose"));
  memory::MemoryForm form;
  ucRDVLineConfig control(form.Widgets(), {});
  control.ShowControl(1);
  form.LVRDVLineConfig.UserClickCell(1, kVolumeColumn, {});
  int entry = 0;
  for (auto _ : state) {
    form.LVRDVLineConfig.UserKey(1);
    entry = 1 - entry;
    form.cmbVolume.UserPick(entry);
  }
}
BENCHMARK(ChooseForAllRows)->Unit(benchmark::kMicrosecond);

// Ten rows written; the connection's one flush to disk included.
void ApplyTenRows(benchmark::State& state) {
  UseSite(CopySite("plain", "apply"));
  memory::MemoryForm form;
  ucRDVLineConfig control(form.Widgets(), {});
  control.ShowControl(1);
  int entry = 0;
  for (auto _ : state) {
    form.LVRDVLineConfig.UserClickCell(1, kVolumeColumn, {});
    entry = 1 - entry;
    form.cmbVolume.UserPick(entry);
    form.cmdApply.UserPress();
  }
  if (form.cmdApply.Enabled()) state.SkipWithError("the lines were not written");
}
BENCHMARK(ApplyTenRows)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
