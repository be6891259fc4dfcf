// What a database holds, as text that is the same whichever way it was read.
#pragma once

#include <string>

#include "data/connection.h"

namespace rdv::verify {

// The rows of every table that the control needs, sorted; of a table that cannot be read the error.
std::string TextOfDatabase(Connection& connection);

// What came of opening a file and reading it: its text, or why it was refused.
struct Reading {
  bool read = false;
  std::string text;
};

// How the engine's reading and the provider's differ; "" where both read the same, and where both
// refuse the file: in which words is for each to say.
std::string DifferenceOf(const Reading& engine, const Reading& provider);

}  // namespace rdv::verify
