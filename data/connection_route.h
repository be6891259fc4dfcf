// Which way the configuration database is reached on this machine.
#pragma once

#include <memory>

#include "data/connection.h"
#include "runtime/text.h"

namespace rdv {

enum class DatabaseRoute {
  Ado,  // the platform's data access, with the provider that the connection string names
  Jet,  // the product's own engine
};

// What RDV_DATABASE_ROUTE ("ado" or "jet", in either case) says; without it ADO where its provider
// is registered, the engine everywhere else.
DatabaseRoute ChooseDatabaseRoute();

// Opens the database of a connection string "Provider=...;Data Source=PATH". Raises what the route
// raises; 429 for ADO on a system that has none.
std::unique_ptr<Connection> OpenConnection(const Text& connection_string);

}  // namespace rdv
