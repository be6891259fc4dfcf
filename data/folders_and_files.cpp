#include "data/folders_and_files.h"

#include "data/site_in_place.h"
#include "runtime/environment.h"

#ifdef _WIN32
#include <windows.h>
// The shell's headers need the declarations before them.
#include <shlobj.h>

#include "data/ansi_text.h"
#include "data/registry.h"
#else
#include <sys/stat.h>

#include "data/ini_file.h"
#endif

namespace rdv {
namespace {

namespace names = ORVANTPlusFilesAndFolders;

Text SuiteFolderIn(const Text& common_app_data) {
  Text folder = common_app_data;
  for (const TextView name : {names::kCompanyFolder, names::kSuiteFolder}) {
    folder += kPathSeparator;
    folder += name;
  }
  return folder += kPathSeparator;
}

#ifdef _WIN32

bool FolderExists(const Text& path) {
  const DWORD attributes = GetFileAttributesW(reinterpret_cast<const wchar_t*>(path.c_str()));
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// As the language turns any value into text: bytes are the text's own.
Text AsText(const RegistryValue& value) {
  if (const auto* text = std::get_if<Text>(&value)) return *text;
  if (const auto* number = std::get_if<int32_t>(&value)) return Decimal(*number);
  Text text;
  if (const auto* bytes = std::get_if<Binary>(&value)) {
    for (size_t i = 0; i + 1 < bytes->size(); i += 2)
      text.push_back(static_cast<char16_t>((*bytes)[i] | ((*bytes)[i + 1] << 8)));
  }
  return text;
}

#else

bool FolderExists(const Text& path) {
  struct stat status = {};
  return stat(ToUtf8(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

#endif

}  // namespace

#ifdef _WIN32

Text GetSpecialFolder(int32_t folder) {
  if (folder == kCommonAppDataFolder) {
    if (Text named = ValueOf(EnvironmentVariable::CommonAppData); !named.empty()) return named;
  }
  char path[MAX_PATH] = {};
  Text result;
  LPITEMIDLIST items = nullptr;
  if (SHGetSpecialFolderLocation(nullptr, folder, &items) == S_OK &&
      SHGetPathFromIDListA(items, path)) {
    result = FromAnsi(path);
  }
  CoTaskMemFree(items);
  return result;
}

Text GetCommonAppDataFolder() {
  if (Text named = ValueOf(EnvironmentVariable::CommonAppData); !named.empty()) return named;
  return AsText(ReadRegistryValue(
      kLocalMachine, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
      u"Common AppData", Text()));
}

#else

Text GetSpecialFolder(int32_t folder) {
  return folder == kCommonAppDataFolder ? ValueOf(EnvironmentVariable::CommonAppData) : Text();
}

Text GetCommonAppDataFolder() {
  Text file = ValueOf(EnvironmentVariable::ShellFolders);
  if (file.empty()) file = u"/etc/rdv/shell-folders.ini";
  // A path is what the file system has: UTF-8 like all its names.
  return FromUtf8(FindIniValue(file, u"Shell Folders", u"Common AppData").value_or(""));
}

#endif

Text GetSuiteFolder() {
  if (const SiteInPlace* site = SiteInPlace::Current()) return site->SuiteFolder();
  Text candidate = SuiteFolderIn(GetSpecialFolder(kCommonAppDataFolder));
  if (FolderExists(candidate)) return candidate;
  return SuiteFolderIn(GetCommonAppDataFolder());
}

Text GetDatabaseFolder() {
  return GetSuiteFolder() + Text(names::kDatabaseFolder) + Text(kPathSeparator);
}

}  // namespace rdv
