// The kit: all steps on this machine, from the folder that it lies in. Whatever it changes it takes
// back, and the last step looks whether it did.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "tools/verify/comparison.h"
#include "tools/verify/report.h"

namespace rdv::verify {

struct Options {
  std::vector<int> bits;            // the word sizes that are tried; none for all of the system
  std::vector<std::string> suites;  // the test programs that are run; none for all
  std::string only;                 // the pattern of their tests that are run; "" for all
  bool tests_only = false;          // nothing is registered, no host is shown
  unsigned minutes = 45;            // that each program may take
};

class Kit {
 public:
  // The folder with win64, win32, scenarios and docs. Tells its progress on `progress`.
  Kit(std::filesystem::path folder, Options options, std::ostream& progress);

  // Runs every step and gives what came out. Throws std::runtime_error, before anything was done,
  // when the control is registered on this machine: the tests would take that away.
  Report Run();

 private:
  struct Printed {
    unsigned code = 0;
    std::string text;
  };
  // What a program of a word size says of itself; see probe.h.
  struct Probe {
    std::string provider;
    bool lists = false;
  };

  void RunWordSize(int bits);
  void RunSuites(int bits);
  bool IsChosen(const std::string& suite) const;
  void RunSuite(int bits, const std::string& program, const std::string& name,
                const std::filesystem::path& kept);
  void CompareRoutes(int bits, const Probe& probe);
  void ReadWithProvider(int bits, const Probe& probe);
  void Register(int bits, const Probe& probe);
  void PlayOnce(int bits, Step& step);
  void ShowHost(int bits, const Probe& probe);
  void ShowHostAt(int bits, const std::wstring& size, const std::string& caption, Step& step);
  void LookForTraces(const Snapshot& before);

  Probe Ask(int bits);
  Printed RunProgram(int bits, const std::string& program, const std::wstring& arguments);
  Printed RunProgram(const std::filesystem::path& program, const std::wstring& arguments);
  static void Attempt(Step& step, std::string_view what, const std::function<void()>& action);
  Step& Begin(std::string_view name, int bits);
  void End(const Step& step);
  std::filesystem::path ProgramFolder(int bits) const;
  std::filesystem::path Kept(const std::string& route, int bits) const;

  const std::filesystem::path folder_;
  const std::filesystem::path work_;  // goes at the end
  const Options options_;
  std::ostream& progress_;
  Report report_;
  int outputs_ = 0;
  std::set<std::string> written_;  // in the registry, by registering
};

}  // namespace rdv::verify
