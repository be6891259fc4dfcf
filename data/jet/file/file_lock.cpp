#include "data/jet/file/file_lock.h"

#include <algorithm>
#include <thread>

namespace rdv::jet {
namespace {

// Behind everything that a file system lets a file grow to in practice, within what a 64-bit signed
// offset can say.
constexpr uint64_t kWaitingByte = 0x4000'0000'0000;
constexpr uint64_t kReadingByte = kWaitingByte + 1;

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

bool FileLock::AcquireExclusive() {
  Patience patience(wait_);
  while (!file_.TryLock(kWaitingByte, 1, LockMode::Exclusive)) {
    if (!patience.Wait()) return false;
  }
  while (!file_.TryLock(kReadingByte, 1, LockMode::Exclusive)) {
    if (patience.Wait()) continue;
    file_.Unlock(kWaitingByte, 1);
    return false;
  }
  held_ = Held::Exclusive;
  return true;
}

void FileLock::Release() {
  if (held_ == Held::Nothing) return;
  file_.Unlock(kReadingByte, 1);
  if (held_ == Held::Exclusive) file_.Unlock(kWaitingByte, 1);
  held_ = Held::Nothing;
}

UserFile::UserFile(FileSystem& files, const Text& database_path)
    : files_(files), path_(LockFilePath(database_path)) {}

bool UserFile::HasUsers() {
  if (excluding_ || !files_.Exists(path_)) return false;
  try {
    const std::unique_ptr<File> file = files_.Open(path_, FileAccess::Read);
    if (!file->TryLock(kFirstUser, kUserCount, LockMode::Shared)) return true;
    file->Unlock(kFirstUser, kUserCount);
    return false;
  } catch (const FileError& error) {
    return error.Problem() == FileProblem::InUse;
  }
}

bool UserFile::TryExclude() {
  if (file_ && !file_->Stamp().linked) file_.reset();
  try {
    if (!file_) file_ = files_.Open(path_, FileAccess::Create);
  } catch (const FileError& error) {
    if (error.Problem() == FileProblem::InUse) return false;
    throw;
  }
  excluding_ = file_->TryLock(kFirstUser, kUserCount, LockMode::Exclusive);
  return excluding_;
}

void UserFile::Release() {
  if (!excluding_) return;
  excluding_ = false;
  file_->Unlock(kFirstUser, kUserCount);
}

void UserFile::RemoveIfEmpty() {
  if (!file_ || !TryExclude()) return;
  const bool empty = file_->Stamp().size == 0;
  // Removed under the lock where the system removes files that are open; where it does not, it does
  // not remove one that another program has opened meanwhile either.
  if (empty) {
    try {
      files_.Remove(path_);
    } catch (const FileError&) {
      file_.reset();
      files_.Remove(path_);
    }
  }
  file_.reset();
  excluding_ = false;
}

}  // namespace rdv::jet
