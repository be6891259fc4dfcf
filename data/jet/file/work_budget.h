// How much work one statement may make of a file.
#pragma once

#include <cstdint>
#include <limits>

namespace rdv::jet {

// Counted in bytes: those that are read, put together or gone through, and for each request for a
// page as many as could have been copied meanwhile. What a statement on a sound file costs is at
// most a multiple of the file's size, also where it changes every row and all indexes of a table;
// in a file that was made to hurt each step may lead to all pages once more. No limit before the
// first Begin.
class WorkBudget {
 public:
  static constexpr uint64_t kPageRequest = 64;
  // To delete all lines of a large site comes to eight times its file; to change each of 20,000
  // rows of one byte that 31 indexes have, to six hundred times.
  static constexpr uint64_t kTimesTheFile = 1024;
  // For small files, where a page more or less counts.
  static constexpr uint64_t kOfAnyFile = uint64_t{64} << 20;

  void Begin(uint64_t file_size) { left_ = kOfAnyFile + kTimesTheFile * file_size; }
  // The file has become larger by so much.
  void Grow(uint64_t size) { left_ += kTimesTheFile * size; }
  // False when there is less left. From then on there is nothing, whoever goes on after an error.
  bool Take(uint64_t bytes) {
    if (bytes > left_) {
      left_ = 0;
      return false;
    }
    left_ -= bytes;
    return true;
  }

 private:
  uint64_t left_ = std::numeric_limits<uint64_t>::max();
};

}  // namespace rdv::jet
