// What a database holds, as text that is the same whichever way it was read.
#pragma once

#include <string>

#include "data/connection.h"

namespace rdv::verify {

// The rows of every table that the control needs, sorted; of a table that cannot be read the error.
std::string TextOfDatabase(Connection& connection);

}  // namespace rdv::verify
