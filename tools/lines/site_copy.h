// A copy of the database from before a change.
#pragma once

#include <filesystem>

#include "runtime/text.h"

namespace rdv::lines {

// Copies the database to `copy` and does not return before the copy is on the disk, has been read
// back and compared, and was found sound as a database. The caller keeps other writers out. Raises
// why there is no such copy; nothing of it is left then.
void CopyDatabase(const Text& database, const std::filesystem::path& copy);

}  // namespace rdv::lines
