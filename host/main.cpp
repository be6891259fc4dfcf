// rdvhost: a small site-administration program that shows how any program places the line
// configuration control on one of its windows. It knows the control by its registered name alone.
//
//   rdvhost [CONFIGURATION] [--size WIDTHxHEIGHT] [--ready-file FILE]
//
// CONFIGURATION  shows that configuration at once
// --size         the control's size in pixels
// --ready-file   a file that receives "shown" or "failed" when ShowControl has returned
#include <cstdio>
#include <string_view>

#include "host/main_window.h"

namespace {

constexpr const wchar_t* kUsage =
    L"rdvhost [CONFIGURATION] [--size WIDTHxHEIGHT] [--ready-file FILE]";

bool Parse(int count, wchar_t** arguments, rdvhost::Options& options) {
  for (int index = 1; index < count; ++index) {
    const std::wstring_view name = arguments[index];
    if (!name.starts_with(L"--")) {
      options.configuration = name;
      continue;
    }
    if (++index == count) return false;
    const wchar_t* value = arguments[index];
    if (name == L"--ready-file") {
      options.ready_file = value;
    } else if (name != L"--size" ||
               swscanf(value, L"%dx%d", &options.width, &options.height) != 2) {
      return false;
    }
  }
  return true;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE /*module*/, HINSTANCE /*previous*/, LPWSTR /*command_line*/,
                    int /*show*/) {
  rdvhost::Options options;
  if (!Parse(__argc, __wargv, options)) {
    MessageBoxW(nullptr, kUsage, L"rdvhost", MB_OK | MB_ICONERROR);
    return 2;
  }
  // Controls live on a single-threaded apartment.
  if (FAILED(OleInitialize(nullptr))) return 1;
  int status = 0;
  {
    rdvhost::MainWindow window(options);
    status = window.Run();
  }
  OleUninitialize();
  return status;
}
