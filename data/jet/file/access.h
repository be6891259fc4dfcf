// Who may use a database file when: exclusion among the processes of this engine, and respect for
// programs that use the file through its own lock file.
//
// Among themselves the processes of this engine lock bytes of the database file far behind any page
// that it can have. As long as a reader is at work it shares the reading byte; a writer has it
// alone. Both come in through the waiting byte, which a writer keeps while it waits for the readers
// to leave: no new reader starts then, so writers are not starved. From before its first statement
// until it closes, a writer also shares the bytes of presence: a journal that nobody is present for
// was left behind. The operating system gives up the locks of a dead process.
//
// Other programs announce themselves in the lock file (".ldb"): each user holds a lock on one byte
// of it, as the documentation of the older versions says; that this version does the same is
// believed. A writer takes all those bytes for the time of its statement and, where the system
// knows that, opens the file so that nobody else can: a program that uses the database keeps its
// lock file open, wherever in it its locks may be. So a writer cannot come in while anyone is in
// there, and nobody comes in while it writes. What is written in the lock file does not matter, so
// one that was left behind hinders nobody. A program that has the database to itself makes no lock
// file: where the system does not refuse to open its database, it is not seen.
#pragma once

#include <chrono>
#include <memory>

#include "data/jet/file/file.h"

namespace rdv::jet {

// For giving something up at the end: an unlocking that fails leaves the lock to the closing of the
// file, a file beside the database that cannot be removed hinders nobody.
template <typename Action>
void Quietly(Action action) noexcept {
  try {
    action();
  } catch (const FileError&) {
    return;
  }
}

// Polls with growing pauses until a time is up.
class Patience {
 public:
  explicit Patience(std::chrono::milliseconds limit);

  // Sleeps a little; false, at once, when the time is up.
  bool Wait();

 private:
  std::chrono::steady_clock::time_point end_;
  int tries_ = 0;
};

// The engine's own exclusion. Raises FileError only; "false" means that others were in the way for
// as long as was waited.
class FileLock {
 public:
  FileLock(File& file, std::chrono::milliseconds wait) : file_(file), wait_(wait) {}
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock() = default;

  bool AcquireShared();
  bool AcquireExclusive();
  // No writer is there until Release, and none begins; readers may be.
  bool KeepWritersOut();
  void Release();
  bool IsExclusive() const { return held_ == Held::Exclusive; }

  // Until EndPresence. Requires that the exclusive lock is held.
  void BePresent();
  void EndPresence();
  bool IsPresent() const { return present_; }
  // With the lock held in any way. Requires that this one is not present: not every system tells
  // its lock from those of others.
  bool OthersArePresent();

 private:
  enum class Held { Nothing, Shared, Waiting, Exclusive };

  bool KeepWritersOut(Patience& patience);

  File& file_;
  std::chrono::milliseconds wait_;
  Held held_ = Held::Nothing;
  bool present_ = false;
};

// The other programs' lock file, beside the database.
class UserFile {
 public:
  UserFile(FileSystem& files, const Text& database_path);
  UserFile(const UserFile&) = delete;
  UserFile& operator=(const UserFile&) = delete;
  ~UserFile() = default;

  // Whether a lock file is there in which somebody else holds a lock, or which cannot be looked
  // into. Makes no file.
  bool HasUsers();

  // Keeps the other programs out until Release; makes the file when it is not there, as one that
  // belongs to the database. False when one is in. Raises FileError when the file cannot be made.
  bool TryExclude(File& database);
  void Release();

  // Removes a file of no use: one without any content, as only this engine makes them. To be called
  // while nobody else can be in TryExclude.
  void RemoveIfEmpty(File& database);

 private:
  FileSystem& files_;
  Text path_;
  std::unique_ptr<File> file_;
  bool excluding_ = false;
};

}  // namespace rdv::jet
