#include "tools/lines/progress.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace rdv::lines {

Progress::Progress(std::ostream& terminal, bool on_terminal, std::string what, size_t total,
                   std::chrono::milliseconds patience, std::chrono::milliseconds interval)
    : terminal_(terminal),
      on_terminal_(on_terminal),
      what_(std::move(what)),
      total_(total),
      interval_(interval),
      next_(Clock::now() + patience) {}

// With blanks, which every terminal understands.
Progress::~Progress() {
  if (width_ > 0) terminal_ << '\r' << std::string(width_, ' ') << '\r' << std::flush;
}

void Progress::Done(size_t count) {
  if (!on_terminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + interval_;
  const std::string line = what_ + ' ' + std::to_string(count) + " of " + std::to_string(total_);
  terminal_ << '\r' << line << std::flush;
  width_ = std::max(width_, line.size());
}

}  // namespace rdv::lines
