// rdvverify: proves the product on the machine that it is started on; verify.cmd starts it.
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "tools/command_line/command_line.h"
#include "tools/command_line/program.h"
#include "tools/verify/win32/kit.h"
#include "tools/verify/win32/probe.h"

namespace {

namespace fs = std::filesystem;
using rdv::tools::ExitCode;

// The folder above the one that this program lies in.
fs::path KitFolder() {
  std::wstring path(32767, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return fs::path(path).parent_path().parent_path();
}

int Run(const rdv::verify::Options& options, std::ostream& out) {
  // Pictures in the pixels that the screen has.
  SetProcessDPIAware();
  const fs::path page = KitFolder() / "report.html";
  // A run that cannot begin leaves none, so that nobody takes an earlier one's for its own.
  fs::remove(page);
  rdv::verify::Kit kit(KitFolder(), options, out);
  const rdv::verify::Report report = kit.Run();
  std::ofstream file(page, std::ios::binary | std::ios::trunc);
  WriteHtml(report, file);
  file.close();
  if (!file) throw std::runtime_error("cannot write " + page.string());
  out << Verdict(report) << "\nsee " << page.string() << '\n';
  return AnyFailed(report) ? ExitCode::kFindings : ExitCode::kDone;
}

}  // namespace

int rdv::tools::Program(std::span<const std::string> arguments, std::ostream& out,
                        std::ostream& errors) {
  verify::Options options;
  std::string provider;
  std::vector<std::string> files;
  CommandLine line("rdvverify", "proves the product on this machine and writes report.html");
  CLI::App& run = line.Add("run", "runs every step", [&] { return Run(options, out); });
  run.add_option("--bits", options.bits, "The word sizes to try; all of the system otherwise")
      ->delimiter(',')
      ->check(CLI::IsMember({64, 32}));
  run.add_option("--suites", options.suites, "The test programs to run")->delimiter(',');
  run.add_option("--only", options.only, "The tests to run, as GoogleTest's filter names them");
  run.add_flag("--tests-only", options.tests_only,
               "Nothing but the test programs: nothing is registered by itself, no host is shown");
  run.add_option("--minutes", options.minutes, "How long each program may take")
      ->check(CLI::Range(1, 1440));
  line.Add("probe", "tells what a program of this word size finds", [&] {
    verify::PrintProbe(out);
    return static_cast<int>(kDone);
  });
  CLI::App& read = line.Add("read", "reads databases with a provider and with the engine", [&] {
    verify::PrintReadings(provider, files, out);
    return static_cast<int>(kDone);
  });
  read.add_option("PROVIDER", provider, "Its name")->required();
  read.add_option("FILE", files, "Databases")->required();
  return line.Execute(arguments, out, errors);
}
