// Who may use a database file when: exclusion among the processes of this engine, and respect for
// programs that use the file through its own lock file.
//
// Among themselves the processes of this engine lock bytes of the database file far behind any page
// that it can have. As long as a reader is at work it shares the reading byte; a writer has it
// alone. Both come in through the waiting byte, which a writer keeps while it waits for the readers
// to leave: no new reader starts then, so writers are not starved. The operating system gives up
// the locks of a dead process.
//
// Other programs announce themselves in the lock file (".ldb"): each user holds a lock on one byte
// of it. A writer takes all those bytes for the time of its statement; it cannot while anyone is in
// there, and nobody comes in while it writes. What is written in the lock file does not matter, so
// one that was left behind hinders nobody.
#pragma once

#include <chrono>
#include <memory>

#include "data/jet/file/file.h"

namespace rdv::jet {

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

  bool AcquireShared();
  bool AcquireExclusive();
  void Release();

 private:
  enum class Held { Nothing, Shared, Exclusive };

  File& file_;
  std::chrono::milliseconds wait_;
  Held held_ = Held::Nothing;
};

// The other programs' lock file, beside the database.
class UserFile {
 public:
  UserFile(FileSystem& files, const Text& database_path);
  UserFile(const UserFile&) = delete;
  UserFile& operator=(const UserFile&) = delete;

  // Whether a lock file is there in which somebody else holds a lock. Makes no file.
  bool HasUsers();

  // Keeps the other programs out until Release; makes the file when it is not there. False when
  // one is in. Raises FileError when the file cannot be made.
  bool TryExclude();
  void Release();

  // Removes a file of no use: one without any content, as only this engine makes them. To be called
  // while nobody else can be in TryExclude.
  void RemoveIfEmpty();

 private:
  FileSystem& files_;
  Text path_;
  std::unique_ptr<File> file_;
  bool excluding_ = false;
};

}  // namespace rdv::jet
