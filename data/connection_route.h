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

// The connection string as ADO gets it: with that provider, and the path in quotes, as it may hold
// a semicolon, behind which a provider would read further attributes.
Text ForProvider(TextView connection_string, TextView provider);

// Opens the database of a connection string "Provider=...;Data Source=PATH". ADO gets it
// as ForProvider says. Where opening says that the
// provider is not there after all, the engine takes over, and that provider is not asked again by
// this process; only the variable forces its error. Raises what the route raises; 429 for ADO on a
// system that has none.
std::unique_ptr<Connection> OpenConnection(const Text& connection_string);

}  // namespace rdv
