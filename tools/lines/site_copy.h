// A copy of the database from before a change.
#pragma once

#include <filesystem>

#include "runtime/text.h"

namespace rdv::lines {

// Copies the database that the caller is about to write to, inside its Writing and before it writes
// anything. Returns when the copy is on the disk, was read back and compared, and was found sound
// as a database. Raises why there is no such copy; nothing of it is left then.
void CopySite(const Text& database, const std::filesystem::path& copy);

}  // namespace rdv::lines
