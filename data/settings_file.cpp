#include "data/settings_file.h"

#include "data/failure_report.h"
#include "data/folders_and_files.h"
#include "data/ini_file.h"

#ifdef _WIN32
#include <windows.h>

#include "data/ansi_text.h"
#endif

namespace rdv {
namespace {

// With the terminator that the Windows function adds.
constexpr size_t kBufferSize = 255;

Text ReadSetting(TextView section, TextView key, TextView otherwise) {
  const Text file = GetSuiteFolder() + Text(ORVANTPlusFilesAndFolders::kSettingsFile);
#ifdef _WIN32
  RequireSettingsFile(file);
  char buffer[kBufferSize] = {};
  const DWORD length = GetPrivateProfileStringA(
      ToAnsi(section).c_str(), ToAnsi(key).c_str(), ToAnsi(otherwise).c_str(), buffer,
      static_cast<DWORD>(kBufferSize), ToAnsi(file).c_str());
  return FromAnsi(std::string_view(buffer, length));
#else
  const auto stored = FindIniValue(file, section, key);
  const Text value = stored ? FromWindows1252(*stored) : Text(otherwise);
  return value.substr(0, kBufferSize - 1);
#endif
}

}  // namespace

Text GetMOHVolumeCaptionfromINI(const Text& caption, const MessageReporter& report) {
  return ReportingFailure(u"GetMOHVolumeCaptionfromINI", report, Text(),
                          [&] { return ReadSetting(u"MOHLINEVOLUME", caption, caption); });
}

bool GetHasImplementedImpedanceForChinaFromINI(const MessageReporter& report) {
  return ReportingFailure(u"GetHasImplementedImpedanceForChinaFromINI", report, false, [] {
    return UpperCase(ReadSetting(u"IMPEDANCE", u"IMPLEMENTEDCHINA", u"N")) != u"N";
  });
}

}  // namespace rdv
