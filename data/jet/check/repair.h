// Mending what a check finds, as far as it can be mended without guessing.
#pragma once

#include <chrono>
#include <vector>

#include "data/jet/check/check.h"
#include "data/jet/file/file.h"

namespace rdv::jet {

struct RepairReport {
  std::vector<Finding> mended;
  CheckReport remaining;  // of a check after the repair
};

// All repairs are one statement: they are in the file together or not at all. A file in which a
// page has two owners is left alone, as either owner's rows may be the true ones; pages and rows
// that cannot be read stay where they are, and so does what may seem to be wrong only because of
// them. Raises when the file cannot be written or read at all.
RepairReport RepairDatabase(FileSystem& files, const Text& path,
                            std::chrono::milliseconds lock_wait);

}  // namespace rdv::jet
