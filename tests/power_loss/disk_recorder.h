// What finished when on a simulated disk, and with that what may be found on it after a loss of
// power, a kill or a failure of any write.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "runtime/error.h"
#include "tests/power_loss/simulated_disk.h"

namespace rdv::jet {

inline constexpr size_t kPageSize = 4096;  // of the databases here

// The pages of each database behind its header page, whose commit words count on.
using DatabasePages = std::map<Text, std::vector<uint8_t>>;

DatabasePages PagesOf(const DiskContents& contents);

class DiskRecorder {
 public:
  explicit DiskRecorder(DiskContents start);

  SimulatedDisk& Disk() { return *disk_; }
  const DiskContents& Start() const { return start_; }

  // A statement: what the files are afterwards is a state that they may be found in. False when it
  // was refused.
  bool Do(const std::function<void()>& statement);
  // The end of a connection: everything that was finished is there from now on. One of which no
  // statement finished `promises` nothing for those of others.
  void Close(const std::function<void()>& close, bool promises = true);
  // Both at once: it may be there though it was refused.
  void DoAndClose(const std::function<void()>& action);

  // Is told what was refused, and whether it may be there all the same. Empty: nothing may be
  // refused, and what raises does so.
  std::function<void(const RuntimeError&, bool may_be_there)> on_refusal;

  size_t StateCount() const { return states_.size(); }
  // From 0, which is the start.
  const DatabasePages& State(size_t number) const { return states_[number]; }

  // The states that may be found when `position` operations of the disk were done: from the last
  // one that is there for certain to the one that a statement at work leads to. A process that was
  // killed has lost none that was finished.
  std::pair<size_t, size_t> Allowed(size_t position, bool killed) const;

  // This is the last state now ...
  void Finished(DatabasePages pages);
  // ... and it is there for certain.
  void Durable();

 private:
  bool Succeeds(const std::function<void()>& action, bool may_be_there) const;

  DiskContents start_;
  std::unique_ptr<SimulatedDisk> disk_;
  std::vector<DatabasePages> states_;
  std::vector<size_t> finished_;                    // after which operation each was
  std::vector<std::pair<size_t, size_t>> durable_;  // since which operation which state
};

}  // namespace rdv::jet
