// What the control needs and a database lacks.
#pragma once

#include <string>
#include <vector>

#include "data/jet/engine.h"

namespace rdv {

// Whether a table may lie in another database, to which this one has a link.
enum class Links { Allowed, Refused };

// Sentences for people, "table Used_Cards is missing", and none for a database that has it all. The
// engine is in a scope.
std::vector<std::string> MissingParts(jet::Engine& engine, Links links);

}  // namespace rdv
