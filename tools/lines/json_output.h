// Results in JSON: one document, its members always in the same order.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/lines/findings.h"
#include "tools/lines/unit.h"

namespace rdv::lines {

using Json = nlohmann::ordered_json;

// A whole number as such, any other text as a text.
Json NumberOrText(const Text& text);

Json JsonOf(const Unit& unit);
Json JsonOf(const Finding& finding);
// A finding that concerns the site as a whole.
Json JsonOfSettings(const Text& failure);

// Indented, with a line feed at its end. What no JSON text may hold is replaced.
std::string Printed(const Json& document);

}  // namespace rdv::lines
