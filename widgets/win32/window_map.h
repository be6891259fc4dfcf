// What belongs to windows of other people's classes.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Found by the window in its procedure, for every message: a property of the window would make each
// of them a question to the system. Any thread.
template <class Owner>
class WindowMap {
 public:
  void Add(HWND window, Owner* owner) {
    AcquireSRWLockExclusive(&lock_);
    owners_.emplace_back(window, owner);
    ReleaseSRWLockExclusive(&lock_);
  }
  void Remove(HWND window) {
    AcquireSRWLockExclusive(&lock_);
    std::erase_if(owners_, [&](const auto& entry) { return entry.first == window; });
    ReleaseSRWLockExclusive(&lock_);
  }
  // Null for a window that nobody has added.
  Owner* Find(HWND window) {
    AcquireSRWLockShared(&lock_);
    const auto found = std::find_if(owners_.begin(), owners_.end(),
                                    [&](const auto& entry) { return entry.first == window; });
    Owner* const owner = found == owners_.end() ? nullptr : found->second;
    ReleaseSRWLockShared(&lock_);
    return owner;
  }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::vector<std::pair<HWND, Owner*>> owners_;
};

}  // namespace rdv::win32
