// Where the suite keeps its shared data on this machine. Nothing here creates a folder.
#pragma once

#include "runtime/text.h"

namespace rdv {

// Names that make up the paths; the suite's programs share them.
namespace ORVANTPlusFilesAndFolders {
inline constexpr TextView kCompanyFolder = u"Tolvane";
inline constexpr TextView kSuiteFolder = u"ORVANT+";
inline constexpr TextView kDatabaseFolder = u"Database";
inline constexpr TextView kDatabaseFile = u"NewDB.mdb";
inline constexpr TextView kSettingsFile = u"ORVANTPlus.ini";
}  // namespace ORVANTPlusFilesAndFolders

// "\" on Windows, "/" elsewhere.
#ifdef _WIN32
inline constexpr TextView kPathSeparator = u"\\";
#else
inline constexpr TextView kPathSeparator = u"/";
#endif

// The identifier of the common application data folder for GetSpecialFolder.
inline constexpr int32_t kCommonAppDataFolder = 35;

// The folder's path without a trailing separator, "" on failure. Off Windows only
// kCommonAppDataFolder is known; its path is the value of RDV_COMMON_APPDATA.
Text GetSpecialFolder(int32_t folder);

// The second source of the same folder: the registry on Windows, the value "Common AppData" of
// section [Shell Folders] in /etc/rdv/shell-folders.ini (RDV_SHELL_FOLDERS names another file)
// elsewhere; "" if absent.
Text GetCommonAppDataFolder();

// Both end with the separator. The suite folder is that of the first source when it exists there,
// otherwise that of the second, whether it exists or not; that of a site in place (site_in_place.h)
// before both.
Text GetSuiteFolder();
Text GetDatabaseFolder();

}  // namespace rdv
