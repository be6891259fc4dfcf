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

// The folder's path without a trailing separator, "" on failure. The common application data folder
// is the value of RDV_COMMON_APPDATA where the environment has it, otherwise, on Windows, what the
// shell says; off Windows no other folder is known.
Text GetSpecialFolder(int32_t folder);

// The second source of the same folder: on Windows RDV_COMMON_APPDATA once more, so that a process
// that was given a folder never comes to the machine's, otherwise the registry; elsewhere the value
// "Common AppData" of section [Shell Folders] in /etc/rdv/shell-folders.ini (RDV_SHELL_FOLDERS
// names another file). "" if absent.
Text GetCommonAppDataFolder();

// Both end with the separator. The suite folder is that of the first source when it exists there,
// otherwise that of the second, whether it exists or not; that of a site in place (site_in_place.h)
// before both.
Text GetSuiteFolder();
Text GetDatabaseFolder();

}  // namespace rdv
