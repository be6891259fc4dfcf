#include "tools/verify/win32/machine.h"

#include <windows.h>
// The shell's headers need the platform's before them.
#include <shellapi.h>
#include <shlobj.h>

#include <cstdio>

#include "tools/verify/win32/process.h"

namespace rdv::verify {
namespace {

constexpr const wchar_t* kVersionKey = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
// That hosts and the control ask for.
constexpr const wchar_t* kFonts[] = {
    L"MS Sans Serif", L"Microsoft Sans Serif", L"MS Shell Dlg", L"Tahoma", L"Segoe UI", L"Arial"};

template <class Function>
Function* Imported(const wchar_t* library, const char* name) {
  const auto address = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name));
  return reinterpret_cast<Function*>(address);
}

std::string RegistryText(HKEY root, const wchar_t* key, const wchar_t* name) {
  wchar_t text[256] = L"";
  DWORD size = sizeof text;
  if (RegGetValueW(root, key, name, RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, text, &size) !=
      ERROR_SUCCESS)
    return "";
  return Utf8(text);
}

std::string System() {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (auto* get = Imported<LONG WINAPI(OSVERSIONINFOW*)>(L"ntdll.dll", "RtlGetVersion"))
    get(&version);
  std::string text = RegistryText(HKEY_LOCAL_MACHINE, kVersionKey, L"ProductName") + ' ' +
                     RegistryText(HKEY_LOCAL_MACHINE, kVersionKey, L"DisplayVersion") +
                     ", version " + std::to_string(version.dwMajorVersion) + '.' +
                     std::to_string(version.dwMinorVersion) + '.' +
                     std::to_string(version.dwBuildNumber);
  if (auto* wine = Imported<const char * CDECL()>(L"ntdll.dll", "wine_get_version"))
    text += "; this is Wine " + std::string(wine()) + ", not Windows";
  return text;
}

std::string Processor() {
  SYSTEM_INFO info = {};
  GetNativeSystemInfo(&info);
  switch (info.wProcessorArchitecture) {
    case PROCESSOR_ARCHITECTURE_AMD64:
      return "x64";
    case PROCESSOR_ARCHITECTURE_INTEL:
      return "x86";
    case PROCESSOR_ARCHITECTURE_ARM64:
      return "ARM64";
    default:
      return std::to_string(info.wProcessorArchitecture);
  }
}

std::string Languages() {
  wchar_t user[LOCALE_NAME_MAX_LENGTH] = L"";
  GetUserDefaultLocaleName(user, LOCALE_NAME_MAX_LENGTH);
  return Utf8(user) + ", code page " + std::to_string(GetACP());
}

BOOL CALLBACK AddScreen(HMONITOR monitor, HDC, RECT*, LPARAM text) {
  MONITORINFO info = {};
  info.cbSize = sizeof info;
  GetMonitorInfoW(monitor, &info);
  auto& screens = *reinterpret_cast<std::string*>(text);
  if (!screens.empty()) screens += "; ";
  screens += std::to_string(info.rcMonitor.right - info.rcMonitor.left) + " x " +
             std::to_string(info.rcMonitor.bottom - info.rcMonitor.top);
  using GetDots = HRESULT WINAPI(HMONITOR, int, UINT*, UINT*);
  UINT across = 0;
  UINT down = 0;
  LoadLibraryW(L"shcore.dll");
  if (auto* dots = Imported<GetDots>(L"shcore.dll", "GetDpiForMonitor"))
    dots(monitor, 0, &across, &down);
  if (across != 0) screens += " at " + std::to_string(across) + " dots per inch";
  return TRUE;
}

std::string Screens() {
  std::string text;
  EnumDisplayMonitors(nullptr, nullptr, &AddScreen, reinterpret_cast<LPARAM>(&text));
  return text;
}

int CALLBACK Found(const LOGFONTW*, const TEXTMETRICW*, DWORD, LPARAM found) {
  *reinterpret_cast<bool*>(found) = true;
  return 0;
}

std::string Fonts() {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  std::string text = "messages in " + Utf8(metrics.lfMessageFont.lfFaceName) + " of height " +
                     std::to_string(metrics.lfMessageFont.lfHeight);
  const HDC screen = GetDC(nullptr);
  for (const wchar_t* name : kFonts) {
    LOGFONTW font = {};
    font.lfCharSet = DEFAULT_CHARSET;
    std::wstring(name).copy(font.lfFaceName, LF_FACESIZE - 1);
    bool found = false;
    EnumFontFamiliesExW(screen, &font, &Found, reinterpret_cast<LPARAM>(&found), 0);
    text += "; " + Utf8(name) + (found ? "" : " is missing");
  }
  ReleaseDC(nullptr, screen);
  return text;
}

std::string Appearance() {
  HIGHCONTRASTW contrast = {};
  contrast.cbSize = sizeof contrast;
  SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0);
  DWORD percent = 100;
  DWORD size = sizeof percent;
  RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Accessibility", L"TextScaleFactor",
               RRF_RT_REG_DWORD, nullptr, &percent, &size);
  return std::string((contrast.dwFlags & HCF_HIGHCONTRASTON) != 0 ? "contrast theme"
                                                                  : "no contrast theme") +
         ", text size " + std::to_string(percent) + " percent";
}

}  // namespace

std::vector<int> WordSizes() {
  // Only 64-bit systems have a folder for the libraries of 32-bit programs.
  wchar_t folder[MAX_PATH] = L"";
  if (GetSystemWow64DirectoryW(folder, MAX_PATH) == 0) return {32};
  return {64, 32};
}

bool IsWindows() {
  return Imported<const char * CDECL()>(L"ntdll.dll", "wine_get_version") == nullptr;
}

Facts AboutTheMachine() {
  return {{"system", System()},
          {"processor", Processor()},
          {"rights", IsUserAnAdmin() != FALSE ? "administrator, elevated" : "a user's"},
          {"language", Languages()},
          {"screens", Screens()},
          {"fonts", Fonts()},
          {"appearance", Appearance()}};
}

std::string Now() {
  SYSTEMTIME now = {};
  GetLocalTime(&now);
  char text[32] = "";
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute);
  return text;
}

}  // namespace rdv::verify
