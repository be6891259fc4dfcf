#include "tests/power_loss/disk_recorder.h"

#include <algorithm>

#include "data/jet/engine.h"

namespace rdv::jet {

DatabasePages PagesOf(const DiskContents& contents) {
  DatabasePages pages;
  for (const auto& [name, bytes] : contents) {
    if (name.ends_with(u".mdb") && bytes.size() >= kPageSize)
      pages[name].assign(bytes.begin() + kPageSize, bytes.end());
  }
  return pages;
}

DiskRecorder::DiskRecorder(DiskContents start)
    : start_(std::move(start)),
      disk_(std::make_unique<SimulatedDisk>(start_)),
      states_{PagesOf(start_)},
      finished_{0},
      durable_{{0, 0}} {}

bool DiskRecorder::Succeeds(const std::function<void()>& action, bool may_be_there) const {
  try {
    action();
    return true;
  } catch (const RuntimeError& error) {
    if (!on_refusal) throw;
    on_refusal(error, may_be_there);
    return false;
  }
}

bool DiskRecorder::Do(const std::function<void()>& statement) {
  if (!Succeeds(statement, false)) return false;
  // Of a file that the statement is not about, what was refused before may not be put back yet.
  SimulatedDisk next(disk_->Contents(), disk_->Session());
  for (const auto& [path, pages] : states_.back()) {
    const auto engine = Engine::Open(path, {.files = &next});
    const Engine::ReadScope scope(*engine);
  }
  Finished(PagesOf(next.Contents()));
  return true;
}

void DiskRecorder::Close(const std::function<void()>& close, bool promises) {
  if (Succeeds(close, false) && promises) Durable();
}

void DiskRecorder::DoAndClose(const std::function<void()>& action) {
  if (!Succeeds(action, true)) return;
  Finished(PagesOf(disk_->Contents()));
  Durable();
}

std::pair<size_t, size_t> DiskRecorder::Allowed(size_t position, bool killed) const {
  size_t last = 0;
  while (last + 1 < finished_.size() && finished_[last + 1] <= position) ++last;
  size_t first = 0;
  for (const auto& [since, state] : durable_) {
    if (since <= position) first = state;
  }
  return {killed ? last : first, std::min(last + 1, states_.size() - 1)};
}

void DiskRecorder::Finished(DatabasePages pages) {
  states_.push_back(std::move(pages));
  finished_.push_back(disk_->Operations().size());
}

void DiskRecorder::Durable() {
  durable_.emplace_back(disk_->Operations().size(), states_.size() - 1);
}

}  // namespace rdv::jet
