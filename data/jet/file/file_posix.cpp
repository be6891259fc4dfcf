#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "data/jet/file/file.h"

namespace rdv::jet {
namespace {

[[noreturn]] void RaiseErrno(int error) {
  FileProblem problem = FileProblem::Other;
  if (error == ENOENT) problem = FileProblem::NotFound;
  if (error == EEXIST) problem = FileProblem::Exists;
  if (error == ENOTDIR) problem = FileProblem::FolderNotFound;
  if (error == EACCES || error == EPERM || error == EROFS) problem = FileProblem::Denied;
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) problem = FileProblem::DiskFull;
  throw FileError(problem, std::strerror(error));
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool FolderOfExists(const std::string& path) {
  struct stat status {};
  return stat(FolderOf(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The system makes another one each time that it starts. 0 where it does not tell.
uint64_t Session() {
  static const uint64_t session = [] {
    std::array<char, 64> text{};
    const int file = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    if (file < 0) return uint64_t{0};
    const ssize_t size = read(file, text.data(), text.size());
    close(file);
    if (size <= 0) return uint64_t{0};
    uint64_t sum = 0;
    for (const char digit : std::string_view(text.data(), static_cast<size_t>(size)))
      sum = std::rotl(sum, 5) * 31 + static_cast<uint8_t>(digit);
    return sum;
  }();
  return session;
}

// Of kinds that lie on disks of the computer's own, which end with its power; those of sticks and
// of networks may lose what they were given and the computer runs on.
bool EndsWithTheComputer(decltype(statfs::f_type) kind) {
  constexpr std::array<uint32_t, 8> kKinds = {
      0xEF53,      // ext
      0x58465342,  // XFS
      0x9123683E,  // Btrfs
      0x2FC12FC1,  // ZFS
      0xF2F52010,  // F2FS
      0x01021994,  // in memory
      0x794C7630,  // several in one
      0x52654973,  // ReiserFS
  };
  return std::ranges::find(kKinds, static_cast<uint32_t>(kind)) != kKinds.end();
}

class PosixFile : public File {
 public:
  // `status`: that of the descriptor.
  PosixFile(int descriptor, const struct stat& status)
      : descriptor_(descriptor), device_(status.st_dev), number_(status.st_ino) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { close(descriptor_); }

  size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
    size_t done = 0;
    while (done < into.size()) {
      const ssize_t count = pread(descriptor_, into.data() + done, into.size() - done,
                                  static_cast<off_t>(offset + done));
      if (count == 0) break;
      if (count > 0) done += static_cast<size_t>(count);
      if (count < 0 && errno != EINTR) RaiseErrno(errno);
    }
    return done;
  }

  void WriteAt(uint64_t offset, Bytes from) override {
    size_t done = 0;
    while (done < from.size()) {
      const ssize_t count = pwrite(descriptor_, from.data() + done, from.size() - done,
                                   static_cast<off_t>(offset + done));
      if (count >= 0) done += static_cast<size_t>(count);
      if (count < 0 && errno != EINTR) RaiseErrno(errno);
    }
  }

  FileStamp Stamp() override {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) RaiseErrno(errno);
    constexpr int64_t kNanoseconds = 1'000'000'000;
    return {.size = static_cast<uint64_t>(status.st_size),
            .modified = int64_t{status.st_mtim.tv_sec} * kNanoseconds + status.st_mtim.tv_nsec,
            .linked = status.st_nlink != 0,
            .several_names = status.st_nlink > 1};
  }

  void Resize(uint64_t size) override {
    if (ftruncate(descriptor_, static_cast<off_t>(size)) != 0) RaiseErrno(errno);
  }

  void Flush() override {
    if (fdatasync(descriptor_) != 0) RaiseErrno(errno);
  }

  bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
    return SetLock(offset, length, mode == LockMode::Shared ? F_RDLCK : F_WRLCK);
  }
  void Unlock(uint64_t offset, uint64_t length) override { SetLock(offset, length, F_UNLCK); }

  bool IsLocked(uint64_t offset) override {
    struct flock lock = LockOf(offset, 1, F_WRLCK);
    if (fcntl(descriptor_, F_OFD_GETLK, &lock) != 0) RaiseErrno(errno);
    return lock.l_type != F_UNLCK;
  }

  FileOrigin Origin() override {
    struct statfs system {};
    if (fstatfs(descriptor_, &system) != 0) RaiseErrno(errno);
    if (!EndsWithTheComputer(system.f_type)) return {};
    return {.session = Session(), .file = uint64_t{device_} << 48 ^ number_};
  }

  bool Bears(const Text& path) override {
    struct stat named {};
    if (stat(ToUtf8(path).c_str(), &named) != 0) {
      if (errno == ENOENT || errno == ENOTDIR) return false;
      RaiseErrno(errno);
    }
    return device_ == named.st_dev && number_ == named.st_ino;
  }

  // As far as they can be given. The owner only where the superuser makes the file; where the group
  // cannot be given, its own gets no more than everybody has.
  void TakeRightsOf(int model) const {
    struct stat status {};
    if (fstat(model, &status) != 0) RaiseErrno(errno);
    constexpr mode_t kReadAndWrite = 0666;
    constexpr mode_t kGroup = 0060;
    constexpr mode_t kEverybody = 0006;
    mode_t mode = status.st_mode & kReadAndWrite;
    const bool given = fchown(descriptor_, status.st_uid, status.st_gid) == 0 ||
                       fchown(descriptor_, static_cast<uid_t>(-1), status.st_gid) == 0;
    if (!given) mode &= ~kGroup | (mode & kEverybody) << 3;
    (void)fchmod(descriptor_, mode);
  }
  int Descriptor() const { return descriptor_; }

 private:
  using LockType = decltype(flock::l_type);

  static struct flock LockOf(uint64_t offset, uint64_t length, LockType type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(offset);
    lock.l_len = static_cast<off_t>(length);
    return lock;
  }

  // Locks of the open file description: unlike a process' own, they exclude other descriptors of
  // the same process and are not lost when one of those is closed.
  bool SetLock(uint64_t offset, uint64_t length, LockType type) const {
    struct flock lock = LockOf(offset, length, type);
    while (fcntl(descriptor_, F_OFD_SETLK, &lock) != 0) {
      if (errno == EAGAIN || errno == EACCES) return false;
      if (errno != EINTR) RaiseErrno(errno);
    }
    return true;
  }

  int descriptor_;
  dev_t device_;  // these two are the file, whatever it is called
  ino_t number_;
};

class PosixFileSystem : public FileSystem {
 public:
  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    const int must_be_new = access == FileAccess::NewDraft ? O_EXCL : 0;
    return OpenWith(path, access, MayMake(access) ? O_CREAT | must_be_new : 0);
  }

  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override {
    if (!MayMake(access)) return OpenWith(path, access, 0);
    // Made or found: another process may make or remove it in between.
    for (;;) {
      try {
        auto file = OpenWith(path, access, O_CREAT | O_EXCL);
        file->TakeRightsOf(dynamic_cast<const PosixFile&>(model).Descriptor());
        return file;
      } catch (const FileError& error) {
        if (error.Problem() != FileProblem::Exists || access == FileAccess::NewDraft) throw;
      }
      try {
        return OpenWith(path, access, 0);
      } catch (const FileError& error) {
        if (error.Problem() != FileProblem::NotFound) throw;
      }
    }
  }

  bool OpensAlone() const override { return false; }

  bool Exists(const Text& path) override {
    struct stat status {};
    if (lstat(ToUtf8(path).c_str(), &status) == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    RaiseErrno(errno);
  }

  Text CanonicalPath(const Text& path) override {
    const std::string name = ToUtf8(path);
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(name, error);
    if (error) {
      if (error.value() == ENOENT && !FolderOfExists(name))
        throw FileError(FileProblem::FolderNotFound, std::strerror(ENOENT));
      RaiseErrno(error.value());
    }
    return FromUtf8(real.native());
  }

  void Remove(const Text& path) override {
    if (unlink(ToUtf8(path).c_str()) != 0) RaiseErrno(errno);
  }

  void Rename(const Text& from, const Text& to) override {
    const std::string old_name = ToUtf8(from);
    const std::string new_name = ToUtf8(to);
    if (renameat2(AT_FDCWD, old_name.c_str(), AT_FDCWD, new_name.c_str(), RENAME_NOREPLACE) == 0)
      return;
    if (errno != EINVAL && errno != ENOSYS) RaiseErrno(errno);
    // Some network file systems cannot do it in one step.
    if (link(old_name.c_str(), new_name.c_str()) != 0) RaiseErrno(errno);
    if (unlink(old_name.c_str()) != 0) RaiseErrno(errno);
  }

  void FlushFolder(const Text& path) override {
    const int folder = open(FolderOf(ToUtf8(path)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) RaiseErrno(errno);
    // The names are the folder's data.
    const bool failed = fdatasync(folder) != 0;
    const int error = errno;
    close(folder);
    // EINVAL: a file system that knows no flushing of folders.
    if (failed && error != EINVAL) RaiseErrno(error);
  }

 private:
  // Never one of the three that a program reads from and prints to: where its caller has closed
  // those, what it prints would be written over the database.
  static int AwayFromStandardStreams(int descriptor) {
    if (descriptor > STDERR_FILENO) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    if (moved < 0) RaiseErrno(error);
    return moved;
  }

  static std::unique_ptr<PosixFile> OpenWith(const Text& path, FileAccess access, int extra) {
    // Nothing is waited for: not for somebody at the other end of a pipe that bears the name.
    const int flags = O_CLOEXEC | O_NONBLOCK | extra | (IsBeside(access) ? O_NOFOLLOW : 0) |
                      (MayWrite(access) ? O_RDWR : O_RDONLY);
    const std::string name = ToUtf8(path);
    const int descriptor = open(name.c_str(), flags, 0666);
    if (descriptor < 0) {
      if (errno == ELOOP && IsBeside(access))
        throw FileError(FileProblem::Denied, "a link bears its name");
      if (errno == ENOENT && !FolderOfExists(name))
        throw FileError(FileProblem::FolderNotFound, std::strerror(ENOENT));
      RaiseErrno(errno);
    }
    const int kept = AwayFromStandardStreams(descriptor);
    struct stat status {};
    const int failure = fstat(kept, &status) != 0 ? errno : 0;
    auto file = std::make_unique<PosixFile>(kept, status);
    if (failure != 0) RaiseErrno(failure);
    if (S_ISDIR(status.st_mode)) RaiseErrno(EISDIR);
    if (!S_ISREG(status.st_mode)) throw FileError(FileProblem::Other, "it is no ordinary file");
    if (IsBeside(access) && !IsOfDraft(access) && status.st_nlink > 1)
      throw FileError(FileProblem::Denied, "it has other names as well");
    return file;
  }
};

}  // namespace

FileSystem& NativeFileSystem() {
  static PosixFileSystem file_system;
  return file_system;
}

}  // namespace rdv::jet

#endif
