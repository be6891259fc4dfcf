// Files as the pager needs them: positioned access, locks on ranges of bytes, and what the
// operating system says when something does not work. Abstract, so that tests can make any single
// operation fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>

#include "data/jet/format/bytes.h"
#include "runtime/text.h"

namespace rdv::jet {

enum class FileProblem {
  NotFound,        // the folder is there
  FolderNotFound,  // or is no folder
  Exists,          // where a name was to be taken
  InUse,           // opened by another process in a way that excludes this one
  Denied,          // by permissions or a read-only medium
  DiskFull,
  Other,
};

class FileError : public std::exception {
 public:
  FileError(FileProblem problem, std::string reason)
      : problem_(problem), reason_(std::move(reason)) {}

  FileProblem Problem() const { return problem_; }
  // The operating system's own words, without a stop.
  const char* what() const noexcept override { return reason_.c_str(); }

 private:
  FileProblem problem_;
  std::string reason_;
};

// All but the first two are for files that are made beside a database, under names that anybody can
// foresee: none is opened through a link that bears the name, nor, but for drafts, a file that has
// other names as well.
enum class FileAccess {
  Read,
  ReadWrite,
  ReadBeside,
  ReadWriteBeside,
  Create,    // ReadWriteBeside; made empty when it is not there
  Draft,     // ReadWriteBeside; may be renamed and removed while drafts' are the only ways in which
             // it is open
  Alone,     // Create; refused while anybody has it open, and keeps everybody out, where the system
             // knows that (FileSystem::OpensAlone)
  NewDraft,  // Draft; made, and refused as Exists where anything bears the name, a link included
};

inline bool IsBeside(FileAccess access) {
  return access != FileAccess::Read && access != FileAccess::ReadWrite;
}
inline bool IsOfDraft(FileAccess access) {
  return access == FileAccess::Draft || access == FileAccess::NewDraft;
}
inline bool MayMake(FileAccess access) {
  return access == FileAccess::Create || access == FileAccess::NewDraft ||
         access == FileAccess::Alone;
}
inline bool MayWrite(FileAccess access) {
  return access != FileAccess::Read && access != FileAccess::ReadBeside;
}

enum class LockMode { Shared, Exclusive };

// What tells one state of a file from another, as far as the system keeps it.
struct FileStamp {
  uint64_t size = 0;
  int64_t modified = 0;        // in the system's own unit; 0 where it is not to be relied on
  bool linked = true;          // false when the file has been deleted while it was open
  bool several_names = false;  // hard links: no name tells what lies beside the others

  bool operator==(const FileStamp&) const = default;
};

// Which file it is, for as long as the computer runs. Each is 0 where it cannot be told.
struct FileOrigin {
  // The running of the computer from its start to its end, of a file whose disk loses nothing
  // before that end.
  uint64_t session = 0;
  uint64_t file = 0;  // another one for each file of a session that is there
};

// One open file. Every call raises FileError. Others may have the file open for reading and
// writing, too. Locks belong to the object: two objects exclude each other in one process as well
// as in two; they may lie beyond the end of the file, and end with the object or its process.
class File {
 public:
  File() = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  virtual ~File() = default;

  // The number of bytes read, which is smaller than asked for at the end of the file only.
  virtual size_t ReadAt(uint64_t offset, std::span<uint8_t> into) = 0;
  // All of it; a failure may leave a part written.
  virtual void WriteAt(uint64_t offset, Bytes from) = 0;
  virtual FileStamp Stamp() = 0;
  virtual void Resize(uint64_t size) = 0;
  // Returns when the content is on the disk.
  virtual void Flush() = 0;

  // False when another object holds a lock that excludes this one. Never waits. Exactly the ranges
  // that were locked are to be unlocked; a range that is locked already is not locked again.
  virtual bool TryLock(uint64_t offset, uint64_t length, LockMode mode) = 0;
  virtual void Unlock(uint64_t offset, uint64_t length) = 0;
  // Whether another object holds a lock on the byte. Where it has to be tried, two that try the
  // same byte at once may take each other for its holder.
  virtual bool IsLocked(uint64_t offset) = 0;

  virtual FileOrigin Origin() { return {}; }
  // Whether opening `path` now would open this very file.
  virtual bool Bears(const Text& path) = 0;
};

class FileSystem {
 public:
  FileSystem() = default;
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;
  virtual ~FileSystem() = default;

  virtual std::unique_ptr<File> Open(const Text& path, FileAccess access) = 0;
  // A file that belongs to `model`, which lies in the same folder. Where it is made (Create,
  // Alone), whoever may use the model may use it, as far as this user can give that.
  virtual std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) = 0;
  // Whether FileAccess::Alone keeps the others out.
  virtual bool OpensAlone() const = 0;
  // False only when it is certain that there is none; raises FileError when that cannot be told.
  virtual bool Exists(const Text& path) = 0;
  // The one spelling of the name of a file or folder that is there, whichever links lead to it.
  virtual Text CanonicalPath(const Text& path) = 0;
  // Also when it is open elsewhere, where the system allows that. Raises FileError.
  virtual void Remove(const Text& path) = 0;
  // To a name in the same folder that nothing bears. Raises FileError.
  virtual void Rename(const Text& from, const Text& to) = 0;
  // Returns when the names in the folder of `path` are on the disk as they are now.
  virtual void FlushFolder(const Text& path) = 0;
};

// That of the operating system. Lives as long as the process.
FileSystem& NativeFileSystem();

// Raises the engine's error for what happened to the file at `path`.
[[noreturn]] void RaiseFileError(const FileError& error, TextView path);

}  // namespace rdv::jet
