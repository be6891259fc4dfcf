// Whose is a window? A message names windows by handles that any process of the desktop can put
// into it, and what a window itself holds for its owner any process can change: so neither says
// anything. This does.
#pragma once

#include <unordered_map>

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// For any thread: each control lives on one of its own. What it points to is not its own.
template <typename Owner>
class WindowMap {
 public:
  void Add(HWND window, Owner* owner) {
    AcquireSRWLockExclusive(&lock_);
    owners_[window] = owner;
    ReleaseSRWLockExclusive(&lock_);
  }
  void Remove(HWND window) {
    AcquireSRWLockExclusive(&lock_);
    owners_.erase(window);
    ReleaseSRWLockExclusive(&lock_);
  }
  void RemoveAllOf(Owner* owner) {
    AcquireSRWLockExclusive(&lock_);
    std::erase_if(owners_, [owner](const auto& entry) { return entry.second == owner; });
    ReleaseSRWLockExclusive(&lock_);
  }
  // Null for a window that is not here.
  Owner* Find(HWND window) {
    AcquireSRWLockShared(&lock_);
    const auto found = owners_.find(window);
    Owner* owner = found == owners_.end() ? nullptr : found->second;
    ReleaseSRWLockShared(&lock_);
    return owner;
  }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::unordered_map<HWND, Owner*> owners_;
};

}  // namespace rdv::win32
