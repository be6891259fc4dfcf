#include "tools/lines/progress.h"

#include <ostream>
#include <utility>

namespace rdv::lines {
namespace {

constexpr std::chrono::milliseconds kPatience{400};
constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::ostream& terminal, bool on_terminal, std::string what, size_t total)
    : terminal_(terminal),
      on_terminal_(on_terminal),
      what_(std::move(what)),
      total_(total),
      next_(Clock::now() + kPatience) {}

Progress::~Progress() {
  if (shown_) terminal_ << kEraseLine << std::flush;
}

void Progress::Done(size_t count) {
  if (!on_terminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + kInterval;
  shown_ = true;
  terminal_ << kEraseLine << what_ << ' ' << count << " of " << total_ << std::flush;
}

}  // namespace rdv::lines
