// Files that a command makes for its user.
#pragma once

#include <string>
#include <string_view>

#include "runtime/text.h"

namespace rdv::lines {

// The file is there whole or, when this throws std::runtime_error, as it was before. What is no
// file, a device or a pipe, is written to. A database is never written over: nobody who names one
// for a table or a page means it.
void WriteFile(const Text& path, std::string_view content);
// The same for what tells of the content of a database: it gets the database's rights.
void WriteFileBeside(const Text& database, const Text& path, std::string_view content);
// Throws std::runtime_error.
std::string ReadFile(const Text& path);

}  // namespace rdv::lines
