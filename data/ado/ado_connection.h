// The configuration database through the platform's data access. Windows only.
#pragma once

#include <memory>

#include "data/connection.h"
#include "runtime/text.h"

namespace rdv::ado {

// Opens a connection with exactly this connection string; the calling thread must have initialised
// COM. Errors carry the number, description and source of the data access; 429 when it cannot be
// created.
std::unique_ptr<Connection> OpenAdoConnection(const Text& connection_string);

}  // namespace rdv::ado
