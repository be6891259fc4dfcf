// How far long work has come, for a person who waits.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace rdv::lines {

// One line that is written over and over, a few times a second, and taken away at the end. Nothing
// where nobody looks, and nothing for work that is done before anybody's patience ends.
class Progress {
 public:
  static constexpr std::chrono::milliseconds kPatience{400};
  static constexpr std::chrono::milliseconds kInterval{100};

  Progress(std::ostream& terminal, bool on_terminal, std::string what, size_t total,
           std::chrono::milliseconds patience = kPatience,
           std::chrono::milliseconds interval = kInterval);
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
  const std::chrono::milliseconds interval_;
  Clock::time_point next_;
  size_t width_ = 0;  // of what is shown
};

}  // namespace rdv::lines
