#ifdef _WIN32

#include <windows.h>

#include <algorithm>

#include "data/jet/file/file.h"
#include "runtime/system_error.h"

namespace rdv::jet {
namespace {

std::wstring Wide(TextView text) {
  return std::wstring(text.begin(), text.end());
}

[[noreturn]] void RaiseLastError(DWORD error) {
  FileProblem problem = FileProblem::Other;
  if (error == ERROR_FILE_NOT_FOUND) problem = FileProblem::NotFound;
  if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) problem = FileProblem::Exists;
  if (error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME || error == ERROR_BAD_PATHNAME)
    problem = FileProblem::FolderNotFound;
  if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION)
    problem = FileProblem::InUse;
  if (error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT) problem = FileProblem::Denied;
  if (error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL) problem = FileProblem::DiskFull;
  throw FileError(problem, ToUtf8(SystemErrorText(error)));
}

OVERLAPPED At(uint64_t offset) {
  OVERLAPPED position{};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return position;
}

class WindowsFile : public File {
 public:
  explicit WindowsFile(HANDLE handle) : handle_(handle) {}
  ~WindowsFile() override { CloseHandle(handle_); }

  size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
    size_t done = 0;
    while (done < into.size()) {
      OVERLAPPED position = At(offset + done);
      DWORD count = 0;
      if (!ReadFile(handle_, into.data() + done, Piece(into.size() - done), &count, &position)) {
        if (GetLastError() == ERROR_HANDLE_EOF) break;
        RaiseLastError(GetLastError());
      }
      if (count == 0) break;
      done += count;
    }
    return done;
  }

  void WriteAt(uint64_t offset, Bytes from) override {
    size_t done = 0;
    while (done < from.size()) {
      OVERLAPPED position = At(offset + done);
      DWORD count = 0;
      if (!WriteFile(handle_, from.data() + done, Piece(from.size() - done), &count, &position))
        RaiseLastError(GetLastError());
      done += count;
    }
  }

  // The time of the last write is kept lazily here, so it says nothing. A file that is open cannot
  // be deleted, as it is opened without leave for that.
  FileStamp Stamp() override {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(handle_, &size)) RaiseLastError(GetLastError());
    return {.size = static_cast<uint64_t>(size.QuadPart)};
  }

  void Resize(uint64_t size) override {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (!SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end))
      RaiseLastError(GetLastError());
  }

  void Flush() override {
    if (!FlushFileBuffers(handle_)) RaiseLastError(GetLastError());
  }

  bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
    OVERLAPPED position = At(offset);
    const DWORD flags =
        LOCKFILE_FAIL_IMMEDIATELY | (mode == LockMode::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0u);
    if (LockFileEx(handle_, flags, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32),
                   &position))
      return true;
    const DWORD error = GetLastError();
    if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING) return false;
    RaiseLastError(error);
  }

  void Unlock(uint64_t offset, uint64_t length) override {
    OVERLAPPED position = At(offset);
    if (!UnlockFileEx(handle_, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32),
                      &position))
      RaiseLastError(GetLastError());
  }

 private:
  static DWORD Piece(size_t size) {
    constexpr size_t kLargest = 1u << 30;
    return static_cast<DWORD>(std::min(size, kLargest));
  }

  HANDLE handle_;
};

class WindowsFileSystem : public FileSystem {
 public:
  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    const DWORD rights =
        access == FileAccess::Read ? GENERIC_READ : DWORD{GENERIC_READ | GENERIC_WRITE};
    const bool draft = access == FileAccess::Draft;
    const DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | (draft ? FILE_SHARE_DELETE : 0u);
    const HANDLE handle =
        CreateFileW(Wide(path).c_str(), rights, sharing, nullptr,
                    draft || access == FileAccess::Create ? OPEN_ALWAYS : OPEN_EXISTING,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) RaiseLastError(GetLastError());
    return std::make_unique<WindowsFile>(handle);
  }

  bool Exists(const Text& path) override {
    return GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
  }

  void Remove(const Text& path) override {
    if (!DeleteFileW(Wide(path).c_str())) RaiseLastError(GetLastError());
  }

  void Rename(const Text& from, const Text& to) override {
    if (!MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), 0)) RaiseLastError(GetLastError());
  }
};

}  // namespace

FileSystem& NativeFileSystem() {
  static WindowsFileSystem file_system;
  return file_system;
}

}  // namespace rdv::jet

#endif
