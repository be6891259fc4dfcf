// A copy of a database that others may be working on.
#pragma once

#include <chrono>

#include "data/jet/file/file.h"

namespace rdv::jet {

// Copies the pages of `from`, in one state, into a file that nothing bears the name of yet. It has
// its name when it is complete and on the disk, not before; nothing is left of it when this raises.
// Other programs go on reading meanwhile and wait with writing; what a dead writer left half done
// is not in the copy. Raises the engine's errors, of either file.
void CopyDatabase(FileSystem& files, const Text& from, const Text& to,
                  std::chrono::milliseconds lock_wait);

}  // namespace rdv::jet
