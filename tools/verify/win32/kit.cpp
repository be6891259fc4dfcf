#include "tools/verify/win32/kit.h"

#include <windows.h>

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "tools/verify/comparison.h"
#include "tools/verify/database_text.h"
#include "tools/verify/steps.h"
#include "tools/verify/suite_output.h"
#include "tools/verify/win32/machine.h"
#include "tools/verify/win32/process.h"
#include "tools/verify/win32/traces.h"

namespace rdv::verify {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kScenarios = "scenario_tests";
constexpr std::string_view kComponent = "component_tests";
constexpr std::string_view kSuiteEnding = "_tests.exe";
// In the place of the exit code of a program that had to be ended.
constexpr unsigned kNeverEnded = 0xFFFFFFFF;
constexpr std::string_view kNoLists =
    "this Wine makes no drop-down lists for programs of this word size";

std::wstring Wide(std::string_view text) {
  const Text units = FromUtf8(text);
  return {reinterpret_cast<const wchar_t*>(units.data()), units.size()};
}

std::wstring Quoted(const fs::path& path) {
  return L'"' + path.wstring() + L'"';
}

// Of programs of that word size, whatever this program's is.
fs::path SystemProgram(int bits, const wchar_t* name) {
  wchar_t folder[MAX_PATH] = L"";
  if (bits == 32 && GetSystemWow64DirectoryW(folder, MAX_PATH) != 0) return fs::path(folder) / name;
  GetSystemDirectoryW(folder, MAX_PATH);
  return fs::path(folder) / name;
}

std::string ByEngine(const fs::path& database) {
  try {
    return TextOfDatabase(*jet::OpenJetConnection(database.u16string()));
  } catch (const RuntimeError& error) {
    return "error " + std::to_string(error.Number());
  }
}

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

// A folder of the kit's that is removed with all that is in it.
class WorkFolder {
 public:
  explicit WorkFolder(fs::path path) : path_(std::move(path)) {
    fs::remove_all(path_);
    for (const char* folder : {"output", "temp", "nowhere"}) fs::create_directories(path_ / folder);
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

 private:
  const fs::path path_;
};

}  // namespace

Kit::Kit(fs::path folder, Options options, std::ostream& progress)
    : folder_(std::move(folder)),
      work_(folder_ / "scratch"),
      options_(std::move(options)),
      progress_(progress) {}

Report Kit::Run() {
  if (IsRegistered()) {
    throw std::runtime_error(
        "the control is registered on this machine, and the tests would take that away: uninstall "
        "it first");
  }
  report_.began = Now();
  report_.machine = AboutTheMachine();
  report_.not_verified = ReadNotVerified(BytesOf(folder_ / "docs" / "testing.md"));
  if (!options_.suites.empty()) {
    std::string names;
    for (const std::string& name : options_.suites) names += ' ' + name;
    report_.limits.push_back("of the test programs only these were run:" + names);
  }
  if (options_.tests_only) report_.limits.emplace_back("nothing but the test programs was run");
  if (!options_.only.empty())
    report_.limits.push_back("only the tests that match " + options_.only + " were run");
  const std::vector<int> possible = WordSizes();
  const std::vector<int>& bits_tried = options_.bits.empty() ? possible : options_.bits;
  if (bits_tried.size() < possible.size()) {
    report_.limits.push_back("only programs of " + std::to_string(bits_tried.front()) +
                             " bits were tried");
  }
  const Snapshot before = TakeSnapshot();
  {
    const WorkFolder work(work_);
    // Programs of the kit never come to the machine's own site, and leave their files here.
    const Environment site(L"RDV_COMMON_APPDATA", (work_ / "nowhere").c_str());
    const Environment temp(L"TEMP", (work_ / "temp").c_str());
    const Environment tmp(L"TMP", (work_ / "temp").c_str());
    for (const int bits : bits_tried) RunWordSize(bits);
  }
  LookForTraces(before);
  return report_;
}

void Kit::RunWordSize(int bits) {
  Probe probe;
  try {
    probe = Ask(bits);
  } catch (const std::exception& error) {
    Step& step = Begin(step::kSites, bits);
    step.Add(Outcome::Failed, "programs of this word size", error.what());
    return End(step);
  }
  report_.machine.emplace_back("provider for programs of " + std::to_string(bits) + " bits",
                               probe.provider.empty() ? "none can be created" : probe.provider);
  RunSuites(bits);
  if (options_.tests_only) return;
  CompareRoutes(bits, probe);
  ReadWithProvider(bits, probe);
  Register(bits, probe);
}

void Kit::RunSuites(int bits) {
  {
    Step& step = Begin(step::kSites, bits);
    Attempt(step, "the sites of the tests", [&] {
      const Printed made = RunProgram(bits, "make_sites.exe", L"");
      step.Check(made.code == 0, "the sites of the tests", made.text);
    });
    End(step);
  }
  std::vector<std::string> programs;
  for (const fs::directory_entry& entry : fs::directory_iterator(ProgramFolder(bits))) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(kSuiteEnding)) programs.push_back(name);
  }
  std::sort(programs.begin(), programs.end());
  for (const std::string& program : programs) {
    const std::string suite = fs::path(program).stem().string();
    if (!IsChosen(suite)) continue;
    RunSuite(bits, program, suite, suite == kScenarios ? Kept("chosen", bits) : fs::path());
    if (suite == kComponent)
      RunSuite(bits, "component_current.exe", suite + std::string(kCurrentControls), {});
  }
}

bool Kit::IsChosen(const std::string& suite) const {
  const std::vector<std::string>& chosen = options_.suites;
  return chosen.empty() || std::find(chosen.begin(), chosen.end(), suite) != chosen.end();
}

void Kit::RunSuite(int bits, const std::string& program, const std::string& name,
                   const fs::path& kept) {
  if (!kept.empty()) fs::create_directories(kept);
  const Environment keep(L"RDV_SCENARIO_OUTPUT", kept.empty() ? nullptr : kept.c_str());
  Step& step = Begin(name, bits);
  Attempt(step, "the program", [&] {
    const std::wstring filter =
        options_.only.empty() ? L"" : L" \"--gtest_filter=" + Wide(options_.only) + L'"';
    const Printed ended = RunProgram(bits, program, L"--gtest_color=no" + filter);
    step.findings = FindingsOf(ended.text, ended.code);
  });
  End(step);
}

// Where there is a provider, the scenarios have been played through it: once more by the engine.
void Kit::CompareRoutes(int bits, const Probe& probe) {
  if (probe.provider.empty()) {
    Step& step = Begin(step::kRoutes, bits);
    step.Add(Outcome::Skipped, "all scenarios", "no provider can be created");
    return End(step);
  }
  if (!IsChosen(std::string(kScenarios))) {
    Step& step = Begin(step::kRoutes, bits);
    step.Add(Outcome::Skipped, "all scenarios", std::string(kScenarios) + " was not to be run");
    return End(step);
  }
  {
    const Environment route(L"RDV_DATABASE_ROUTE", L"jet");
    RunSuite(bits, std::string(kScenarios) + ".exe", std::string(kScenarios) + " by the engine",
             Kept("engine", bits));
  }
  Step& step = Begin(step::kRoutes, bits);
  Attempt(step, "all scenarios", [&] {
    step.findings = CompareRuns(Kept("chosen", bits), Kept("engine", bits), &ByEngine);
  });
  if (step.findings.empty()) step.Add(Outcome::Skipped, "all scenarios", "none was played");
  End(step);
}

void Kit::ReadWithProvider(int bits, const Probe& probe) {
  Step& step = Begin(step::kProvider, bits);
  if (probe.provider.empty()) {
    step.Add(Outcome::Skipped, "all files", "no provider can be created");
    return End(step);
  }
  for (const char* route : {"chosen", "engine"}) {
    for (const fs::path& database : FilesOf(Kept(route, bits), ".mdb")) {
      const std::string name = std::string(route) + ", " + database.stem().string();
      Attempt(step, name, [&] {
        const Printed read = RunProgram(bits, "rdvverify.exe",
                                        L"read " + Wide(probe.provider) + L' ' + Quoted(database));
        const auto answer = nlohmann::json::parse(read.text, nullptr, false);
        if (!answer.is_object()) throw std::runtime_error(read.text);
        const std::string difference = answer.value("difference", "");
        step.Check(difference.empty(), name, difference);
      });
    }
  }
  if (step.findings.empty()) step.Add(Outcome::Skipped, "all files", "none was written");
  End(step);
}

void Kit::Register(int bits, const Probe& probe) {
  const fs::path regsvr32 = SystemProgram(bits, L"regsvr32.exe");
  const std::wstring library = Quoted(ProgramFolder(bits) / "TLV_RDV_Line_Config.dll");
  Step& step = Begin(step::kRegistering, bits);
  bool is_registered = false;
  Attempt(step, "registering", [&] {
    const Snapshot before = TakeSnapshot();
    const Printed registered = RunProgram(regsvr32, L"/s " + library);
    written_.merge(WrittenBetween(before, TakeSnapshot()));
    is_registered = registered.code == 0;
    step.Check(is_registered, "registering",
               "exit code " + std::to_string(registered.code) + ' ' + registered.text);
  });
  const bool usable = probe.lists || IsWindows();
  if (is_registered && usable) Attempt(step, "playing", [&] { PlayOnce(bits, step); });
  if (is_registered && !usable) step.Add(Outcome::Skipped, "playing", std::string(kNoLists));
  End(step);
  if (is_registered) ShowHost(bits, probe);
  // Also after a registering that failed in its midst.
  Step& last = Begin(step::kRegistering, bits);
  Attempt(last, "unregistering", [&] {
    const Printed gone = RunProgram(regsvr32, L"/s /u " + library);
    last.Check(gone.code == 0, "unregistering", "exit code " + std::to_string(gone.code));
    last.Check(!IsRegistered(), "nothing is registered afterwards", "the control still is");
  });
  End(last);
}

// A host's process creates the control by its name, and a user changes a line.
void Kit::PlayOnce(int bits, Step& step) {
  const fs::path site = work_ / ("played" + std::to_string(bits));
  const Printed made = RunProgram(bits, "rdvsite.exe", L"create " + Quoted(site));
  const Printed played = RunProgram(
      bits, "rdvplay.exe", L"--site " + Quoted(site) + L' ' + Quoted(folder_ / "change.rdv"));
  std::istringstream lines(played.text);
  std::vector<nlohmann::json> answers;
  for (std::string line; std::getline(lines, line);)
    answers.push_back(nlohmann::json::parse(line, nullptr, false));
  const bool changed = made.code == 0 && played.code == 0 && !answers.empty() &&
                       answers.back().dump().find("\"High\"") != std::string::npos;
  step.Check(changed, "a line is changed through the registered control", made.text + played.text);
}

Kit::Probe Kit::Ask(int bits) {
  const Printed told = RunProgram(bits, "rdvverify.exe", L"probe");
  const auto answer = nlohmann::json::parse(told.text, nullptr, false);
  if (!answer.is_object()) throw std::runtime_error("rdvverify probe says " + told.text);
  return {answer.value("provider", ""), answer.value("lists", false)};
}

Kit::Printed Kit::RunProgram(int bits, const std::string& program, const std::wstring& arguments) {
  return RunProgram(ProgramFolder(bits) / program, arguments);
}

Kit::Printed Kit::RunProgram(const fs::path& program, const std::wstring& arguments) {
  const fs::path output = work_ / "output" / (std::to_string(++outputs_) + ".txt");
  std::optional<unsigned> code;
  {
    RunningProgram running(program, arguments, output);
    constexpr unsigned kSecondsPerMinute = 60;
    code = running.Wait(options_.minutes * kSecondsPerMinute);
  }
  // What it had printed until it was ended tells where it stood.
  const std::string late =
      code ? ""
           : "\nended, as it still ran after " + std::to_string(options_.minutes) + " minutes\n";
  return {code.value_or(kNeverEnded), BytesOf(output) + late};
}

// Whatever goes wrong in one step, the others are run and the report is written.
void Kit::Attempt(Step& step, std::string_view what, const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    step.Add(Outcome::Failed, std::string(what), error.what());
  }
}

Step& Kit::Begin(std::string_view name, int bits) {
  Step& step = report_.steps.emplace_back();
  step.name = name;
  step.bits = bits;
  progress_ << name << (bits == 0 ? "" : ", " + std::to_string(bits) + " bits") << " ... "
            << std::flush;
  return step;
}

void Kit::End(const Step& step) {
  progress_ << NameOf(step.Result()) << " (" << step.Count(Outcome::Passed) << " passed, "
            << step.Count(Outcome::Failed) << " failed, " << step.Count(Outcome::Skipped)
            << " skipped)\n"
            << std::flush;
}

fs::path Kit::ProgramFolder(int bits) const {
  return folder_ / ("win" + std::to_string(bits));
}

fs::path Kit::Kept(const std::string& route, int bits) const {
  return work_ / (route + std::to_string(bits));
}

void Kit::LookForTraces(const Snapshot& before) {
  Step& step = Begin(step::kTraces, 0);
  Attempt(step, "registry and site", [&] {
    const Traces traces = SortTraces(Differences(before, TakeSnapshot()), written_);
    step.Check(traces.ours.empty(), "registry and site", Lines(traces.ours));
    // In half an hour other programs write into the registry, too.
    if (!traces.others.empty())
      step.Add(Outcome::Skipped, "what other programs changed meanwhile", Lines(traces.others));
  });
  step.Check(!fs::exists(work_), "the kit's own working folder", "is still there");
  End(step);
}

}  // namespace rdv::verify
