// A copy of a database to try something on.
#pragma once

#include "data/jet/file/pager.h"
#include "runtime/text.h"

namespace rdv {

// In the system's folder for temporary files; goes with the object.
class TemporaryCopy {
 public:
  // Raises what CopyDatabase does.
  TemporaryCopy(const Text& path, jet::Suspects suspects);
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;
  ~TemporaryCopy();

  const Text& Path() const { return path_; }

 private:
  Text path_;
};

}  // namespace rdv
