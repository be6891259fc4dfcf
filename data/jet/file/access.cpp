#include "data/jet/file/access.h"

#include <algorithm>
#include <cassert>
#include <thread>

namespace rdv::jet {
namespace {

// Behind everything that a file system lets a file grow to in practice, within what a 64-bit signed
// offset can say.
constexpr uint64_t kWaitingByte = 0x4000'0000'0000;
constexpr uint64_t kReadingByte = kWaitingByte + 1;

// Shared as a whole by whoever is present. Whoever wants to know tries one of them, each another
// one, so that those who try do not meet each other.
constexpr uint64_t kFirstPresence = kWaitingByte + 0x1000'0000;
constexpr uint64_t kPresenceCount = 1 << 20;

// One byte for each of the 255 users.
constexpr uint64_t kFirstUser = 0x10000001;
constexpr uint64_t kUserCount = 255;

Text LockFilePath(const Text& database_path) {
  const size_t name = database_path.find_last_of(u"/\\") + 1;  // 0 where there is no folder
  const size_t dot = database_path.rfind(u'.');
  const bool has_extension = dot != Text::npos && dot >= name;
  return database_path.substr(0, has_extension ? dot : Text::npos) + u".ldb";
}

}  // namespace

Patience::Patience(std::chrono::milliseconds limit)
    : end_(std::chrono::steady_clock::now() + limit) {}

bool Patience::Wait() {
  constexpr int kYields = 4;
  constexpr std::chrono::microseconds kLongest{5000};
  if (std::chrono::steady_clock::now() >= end_) return false;
  if (tries_ < kYields) {
    std::this_thread::yield();
  } else {
    const std::chrono::microseconds pause{50 << std::min(tries_ - kYields, 7)};
    std::this_thread::sleep_for(std::min(pause, kLongest));
  }
  ++tries_;
  return true;
}

bool FileLock::AcquireShared() {
  Patience patience(wait_);
  do {
    if (!file_.TryLock(kWaitingByte, 1, LockMode::Shared)) continue;
    const bool in = file_.TryLock(kReadingByte, 1, LockMode::Shared);
    file_.Unlock(kWaitingByte, 1);
    if (in) {
      held_ = Held::Shared;
      return true;
    }
  } while (patience.Wait());
  return false;
}

bool FileLock::KeepWritersOut() {
  Patience patience(wait_);
  return KeepWritersOut(patience);
}

bool FileLock::KeepWritersOut(Patience& patience) {
  while (!file_.TryLock(kWaitingByte, 1, LockMode::Exclusive)) {
    if (!patience.Wait()) return false;
  }
  held_ = Held::Waiting;
  return true;
}

bool FileLock::AcquireExclusive() {
  Patience patience(wait_);
  if (!KeepWritersOut(patience)) return false;
  while (!file_.TryLock(kReadingByte, 1, LockMode::Exclusive)) {
    if (patience.Wait()) continue;
    Release();
    return false;
  }
  held_ = Held::Exclusive;
  return true;
}

void FileLock::Release() {
  if (held_ == Held::Nothing) return;
  if (held_ != Held::Waiting) file_.Unlock(kReadingByte, 1);
  if (held_ != Held::Shared) file_.Unlock(kWaitingByte, 1);
  held_ = Held::Nothing;
}

void FileLock::BePresent() {
  assert(held_ == Held::Exclusive);
  if (present_) return;
  if (!file_.TryLock(kFirstPresence, kPresenceCount, LockMode::Shared))
    throw FileError(FileProblem::InUse, "others look for those who are present");
  present_ = true;
}

void FileLock::EndPresence() {
  if (!present_) return;
  file_.Unlock(kFirstPresence, kPresenceCount);
  present_ = false;
}

bool FileLock::OthersArePresent() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15;
  uint64_t place = (static_cast<uint64_t>(now) ^ reinterpret_cast<uintptr_t>(this)) * kFactor;
  // Twice, lest two that try have met by chance.
  for (int i = 0; i < 2; ++i, place *= kFactor) {
    if (!file_.IsLocked(kFirstPresence + (place >> 32) % kPresenceCount)) return false;
  }
  return true;
}

UserFile::UserFile(FileSystem& files, const Text& database_path)
    : files_(files), path_(LockFilePath(database_path)) {}

bool UserFile::HasUsers() {
  if (excluding_) return false;
  try {
    if (!files_.Exists(path_)) return false;
    const std::unique_ptr<File> file = files_.Open(path_, FileAccess::ReadBeside);
    if (!file->TryLock(kFirstUser, kUserCount, LockMode::Shared)) return true;
    file->Unlock(kFirstUser, kUserCount);
    return false;
  } catch (const FileError& error) {
    return error.Problem() != FileProblem::NotFound;  // what is not known is not free
  }
}

bool UserFile::TryExclude(File& database) {
  if (excluding_) return true;
  try {
    for (;;) {
      if (!file_) file_ = files_.OpenBeside(database, path_, FileAccess::Alone);
      if (!file_->TryLock(kFirstUser, kUserCount, LockMode::Exclusive)) {
        if (files_.OpensAlone()) file_.reset();
        return false;
      }
      excluding_ = true;
      if (file_->Bears(path_)) return true;
      // Somebody removed it before it was locked.
      excluding_ = false;
      file_.reset();
    }
  } catch (const FileError& error) {
    if (error.Problem() == FileProblem::InUse) return false;
    throw;
  }
}

void UserFile::Release() {
  if (!excluding_) return;
  excluding_ = false;
  if (files_.OpensAlone()) {
    file_.reset();
  } else {
    file_->Unlock(kFirstUser, kUserCount);
  }
}

void UserFile::RemoveIfEmpty(File& database) {
  if (!TryExclude(database)) return;
  std::unique_ptr<File> file = std::move(file_);
  excluding_ = false;
  if (file->Stamp().size != 0) return;
  // Removed under the lock where the system removes files that are open; where it does not, it does
  // not remove one that another program has opened meanwhile either.
  try {
    files_.Remove(path_);
  } catch (const FileError&) {
    file.reset();
    files_.Remove(path_);
  }
}

}  // namespace rdv::jet
