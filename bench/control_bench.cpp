// The control on in-memory widgets: loading a unit, choosing for all rows, saving. Every procedure
// opens its own connection, as in use.
#include <benchmark/benchmark.h>

#include "bench/sample_files.h"
#include "control/line_config_control.h"
#include "rules/grid_columns.h"
#include "widgets/memory/memory_form.h"

namespace rdv::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kVolumeColumn = 14;

void ShowControl(benchmark::State& state, const fs::path& site, int16_t configuration) {
  UseSite(site);
  memory::MemoryForm form(kGridContent);
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

// An action that is refused would be a measurement of nothing.
void Require(benchmark::State& state, Refusal refusal) {
  if (refusal) state.SkipWithError(ToUtf8(*refusal).c_str());
}

// How many rows show the volume: lines of another type keep their own.
int RowsThatShow(const memory::MemoryLineGrid& grid, TextView volume) {
  int rows = 0;
  for (int row = 1; row <= grid.RowCount(); ++row)
    rows += grid.Cell(row, kVolumeColumn) == volume ? 1 : 0;
  return rows;
}

// All rows selected and a volume picked for them, another one each time.
void PickForAllRows(benchmark::State& state, memory::MemoryForm& form, int entry) {
  Require(state, form.LVRDVLineConfig.UserKey(1));
  Require(state, form.cmbVolume.UserPick(entry));
}

void ChooseForAllRows(benchmark::State& state) {
  UseSite(CopySite("plain", "choose"));
  memory::MemoryForm form(kGridContent);
  ucRDVLineConfig control(form.Widgets(), {});
  control.ShowControl(1);
  Require(state, form.LVRDVLineConfig.UserClickCell(1, kVolumeColumn));
  int entry = 0;
  for (auto _ : state) {
    entry = 1 - entry;
    PickForAllRows(state, form, entry);
  }
  const int rows = RowsThatShow(form.LVRDVLineConfig, form.cmbVolume.Text());
  if (rows < 2) state.SkipWithError("the choice reached one row only");
  state.counters["rows"] = rows;
}
BENCHMARK(ChooseForAllRows)->Unit(benchmark::kMicrosecond);

// All rows of the unit chosen for and written; the connection's one flush to disk included.
void ApplyAllRows(benchmark::State& state) {
  UseSite(CopySite("plain", "apply"));
  memory::MemoryForm form(kGridContent);
  ucRDVLineConfig control(form.Widgets(), {});
  control.ShowControl(1);
  int entry = 0;
  for (auto _ : state) {
    Require(state, form.LVRDVLineConfig.UserClickCell(1, kVolumeColumn));
    entry = 1 - entry;
    PickForAllRows(state, form, entry);
    Require(state, form.cmdApply.UserPress());
  }
  if (form.cmdApply.Enabled()) state.SkipWithError("the lines were not written");
}
BENCHMARK(ApplyAllRows)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace rdv::bench
