// How far long work has come, for a person who waits.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace rdv::lines {

// One line that is written over and over, a few times a second, and taken away at the end. Nothing
// where nobody looks, and nothing for work that is done at once.
class Progress {
 public:
  Progress(std::ostream& terminal, bool on_terminal, std::string what, size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void Done(size_t count);

 private:
  using Clock = std::chrono::steady_clock;

  std::ostream& terminal_;
  const bool on_terminal_;
  const std::string what_;
  const size_t total_;
  Clock::time_point next_;
  bool shown_ = false;
};

}  // namespace rdv::lines
