// The example host on this machine's screen.
#include <windows.h>

#include <optional>
#include <stdexcept>

#include "tools/verify/comparison.h"
#include "tools/verify/steps.h"
#include "tools/verify/win32/kit.h"
#include "tools/verify/win32/machine.h"
#include "tools/verify/win32/picture.h"
#include "tools/verify/win32/process.h"

namespace rdv::verify {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kPause = 100;        // milliseconds between two looks
constexpr int kLooks = 600;          // a minute
constexpr DWORD kTimeToPaint = 500;  // between two pictures
constexpr int kFewColours = 8;       // what is painted at all has more

struct Search {
  DWORD process;
  HWND found;
};

BOOL CALLBACK TakeIfMain(HWND window, LPARAM search_given) {
  auto& search = *reinterpret_cast<Search*>(search_given);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process != search.process || !IsWindowVisible(window) || GetWindow(window, GW_OWNER))
    return TRUE;
  search.found = window;
  return FALSE;
}

HWND MainWindowOf(DWORD process) {
  Search search = {process, nullptr};
  EnumWindows(&TakeIfMain, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// What the host has written into its file; "" when it ends without.
std::string WaitForHost(const RunningProgram& host, const fs::path& ready) {
  for (int look = 0; look < kLooks && !host.HasEnded(); ++look) {
    std::error_code error;
    if (fs::exists(ready, error) && fs::file_size(ready, error) > 0)
      return BytesOf(ready).substr(0, BytesOf(ready).find_first_of("\r\n"));
    Sleep(kPause);
  }
  return "";
}

// The first one that comes after the window was painted; the last one where it never is.
std::optional<Taken> TakePictureOfPainted(HWND window) {
  SetForegroundWindow(window);
  std::optional<Taken> taken;
  for (DWORD waited = 0; waited < kLooks * kPause; waited += kTimeToPaint) {
    Sleep(kTimeToPaint);
    taken = TakePicture(window);
    if (!taken || taken->colours >= kFewColours) break;
  }
  return taken;
}

}  // namespace

void Kit::ShowHost(int bits, const Probe& probe) {
  Step& step = Begin(step::kHost, bits);
  if (!probe.lists && !IsWindows()) {
    step.Add(Outcome::Skipped, "the host",
             "this Wine makes no drop-down lists for programs of this word size");
    return End(step);
  }
  const fs::path site = work_ / ("shown" + std::to_string(bits));
  const Printed made = RunProgram(bits, "rdvsite.exe", L"create \"" + site.wstring() + L'"');
  step.Check(made.code == 0, "the host's site", made.text);
  const Environment data(L"RDV_COMMON_APPDATA", site.c_str());
  ShowHostAt(bits, L"", "the host as it comes", step);
  ShowHostAt(bits, L"--size 1200x600", "the host with a control of 1200 x 600 pixels", step);
  End(step);
}

void Kit::ShowHostAt(int bits, const std::wstring& size, const std::string& caption, Step& step) {
  const fs::path ready = work_ / "ready.txt";
  fs::remove(ready);
  try {
    RunningProgram host(ProgramFolder(bits) / "rdvhost.exe",
                        L"1 " + size + L" --ready-file \"" + ready.wstring() + L'"',
                        work_ / "output" / "host.txt");
    const std::string told = WaitForHost(host, ready);
    step.Check(told == "shown", caption + " shows its lines", "it says \"" + told + "\"");
    const HWND window = MainWindowOf(host.Id());
    if (!window) throw std::runtime_error("it has no window");
    if (auto taken = TakePictureOfPainted(window)) {
      step.Check(taken->colours >= kFewColours, caption + " is painted",
                 "the picture has " + std::to_string(taken->colours) + " colours");
      step.pictures.push_back({caption, std::move(taken->png)});
    } else {
      step.Add(Outcome::Failed, caption + " is painted", "no picture can be taken");
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
    constexpr unsigned kSecondsToEnd = 60;
    const std::optional<unsigned> code = host.Wait(kSecondsToEnd);
    step.Check(code == 0u, caption + " ends",
               code ? "exit code " + std::to_string(*code) : "it is still there after a minute");
  } catch (const std::exception& error) {
    step.Add(Outcome::Failed, caption, error.what());
  }
}

}  // namespace rdv::verify
