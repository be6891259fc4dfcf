// What the tools say of a database that cannot be used.
#pragma once

#include <string>

#include "runtime/error.h"
#include "runtime/text.h"

namespace rdv {

// The sentence for an error of the engine that concerns the file at `path`: what is wrong and what
// can be done. Looks at the file and its folder.
std::string Explained(const RuntimeError& error, const Text& path);

// Whether the system keeps this user from writing the file or beside it.
bool IsMissingRight(const RuntimeError& error);

// In single quotes, in UTF-8.
std::string Quoted(const Text& name);

}  // namespace rdv
