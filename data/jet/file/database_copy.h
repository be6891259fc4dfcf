// A copy of a database that others may be working on. It has its name when it is complete, on the
// disk and the same when it is read back, not before; nothing is left of it when one of these
// raises: the engine's errors, of either file.
#pragma once

#include <chrono>
#include <functional>

#include "data/jet/file/file.h"
#include "data/jet/file/pager.h"

namespace rdv::jet {

// Copies the pages of `from`, in one state, into a file that nothing bears the name of yet. Other
// programs go on reading meanwhile and wait with writing; what a dead writer left half done is not
// in the copy. A file that was left in the middle of a write and cannot be put right is copied as
// it is where it is to be `Suspects::Read`, else refused.
void CopyDatabase(FileSystem& files, const Text& from, const Text& to,
                  std::chrono::milliseconds lock_wait, Suspects suspects = Suspects::Refused);

// The same for a caller who has `from` to itself, in a writing statement that has changed nothing
// yet. `check` is told where the copy lies until it has its name, and raises what keeps it from
// getting it.
void CopyHeldDatabase(FileSystem& files, const Text& from, const Text& to,
                      const std::function<void(const Text& draft)>& check);

}  // namespace rdv::jet
