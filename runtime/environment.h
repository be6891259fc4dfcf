// The environment variables that change what the product does. All are read here; none names code
// that would be loaded.
#pragma once

#include "runtime/text.h"

namespace rdv {

enum class EnvironmentVariable {
  DatabaseRoute,  // RDV_DATABASE_ROUTE: "ado" or "jet" forces one way to the database
  CommonAppData,  // RDV_COMMON_APPDATA: the folder that plays the common application data folder
  ShellFolders,   // RDV_SHELL_FOLDERS: the file that says, not on Windows, where that folder is
  Registration,   // RDV_REGISTRATION: "machine" or "user", whom the component is registered for
};

// What the process has for the variable now; "" where it has nothing. Whoever decides by it reads
// it once for the whole of what is decided: a connection, a search for the folder, a registration.
Text ValueOf(EnvironmentVariable variable);

// "RDV_DATABASE_ROUTE=ado, RDV_COMMON_APPDATA=/site" of those that are set; "" where none is.
Text EnvironmentInForce();

}  // namespace rdv
