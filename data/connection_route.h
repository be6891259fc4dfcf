// Which way the configuration database is reached on this machine.
#pragma once

#include <memory>

#include "data/connection.h"
#include "runtime/text.h"

namespace rdv {

enum class DatabaseRoute {
  Ado,  // the platform's data access, with a provider for such files
  Jet,  // the product's own engine
};

// What RDV_DATABASE_ROUTE ("ado" or "jet", in either case) says; without it ADO where this process
// can create the provider that the connection string names, or a successor of it, and the engine
// everywhere else.
DatabaseRoute ChooseDatabaseRoute(TextView connection_string);

// Opens the database of a connection string "Provider=...;Data Source=PATH". The string goes to a
// successor with that provider's name in it and is otherwise the same. Where opening says that the
// provider is not there after all, the engine takes over, and that provider is not asked again by
// this process; only the variable forces its error. Raises what the route raises; 429 for ADO on a
// system that has none.
std::unique_ptr<Connection> OpenConnection(const Text& connection_string);

}  // namespace rdv
