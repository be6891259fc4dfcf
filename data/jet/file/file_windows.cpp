#ifdef _WIN32

#include <windows.h>

#include <algorithm>
#include <vector>

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
  WindowsFile(HANDLE handle, const Text& path) : handle_(handle), path_(path) {}
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
    FILE_STANDARD_INFO info{};
    const bool known =
        GetFileInformationByHandleEx(handle_, FileStandardInfo, &info, sizeof info) != 0;
    return {.size = static_cast<uint64_t>(size.QuadPart),
            .several_names = known && info.NumberOfLinks > 1};
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

  // There is no asking, only trying.
  bool IsLocked(uint64_t offset) override {
    if (!TryLock(offset, 1, LockMode::Exclusive)) return true;
    Unlock(offset, 1);
    return false;
  }

  // The file is opened without leave to rename, replace or delete it, and its folders cannot be
  // renamed meanwhile either.
  bool Bears(const Text& path) override { return path == path_; }

  // Who may do what with it, in the system's own form; nothing where that cannot be read.
  std::vector<uint8_t> Rights() const {
    DWORD size = 0;
    GetKernelObjectSecurity(handle_, DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<uint8_t> rights(size);
    if (!GetKernelObjectSecurity(handle_, DACL_SECURITY_INFORMATION, rights.data(), size, &size))
      rights.clear();
    return rights;
  }

  // Of a file that was opened as what it is, not as what it leads to.
  bool IsReparsePoint() const { return (Tag().FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }
  bool IsLink() const { return IsReparsePoint() && IsReparseTagNameSurrogate(Tag().ReparseTag); }

 private:
  FILE_ATTRIBUTE_TAG_INFO Tag() const {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    // A file system that cannot tell has no links.
    GetFileInformationByHandleEx(handle_, FileAttributeTagInfo, &tag, sizeof tag);
    return tag;
  }

  static DWORD Piece(size_t size) {
    constexpr size_t kLargest = 1u << 30;
    return static_cast<DWORD>(std::min(size, kLargest));
  }

  HANDLE handle_;
  Text path_;  // that it was opened by
};

class WindowsFileSystem : public FileSystem {
 public:
  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    return IsBeside(access) ? OpenOwn(path, access, nullptr)
                            : OpenWith(path, access, OPEN_EXISTING, 0, nullptr);
  }

  // A new file gets the model's rights. Where they cannot be read, it inherits those that the
  // folder gives to its files, as the model may have done.
  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override {
    std::vector<uint8_t> rights = static_cast<WindowsFile&>(model).Rights();
    SECURITY_ATTRIBUTES attributes{
        .nLength = sizeof attributes, .lpSecurityDescriptor = rights.data(), .bInheritHandle = 0};
    return OpenOwn(path, access, rights.empty() ? nullptr : &attributes);
  }

  bool OpensAlone() const override { return true; }

  bool Exists(const Text& path) override {
    if (GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return false;
    RaiseLastError(error);
  }

  // Where a file system cannot tell the final name (some that come over a network), it is the full
  // one.
  Text CanonicalPath(const Text& path) override {
    const HANDLE handle =
        CreateFileW(Wide(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) RaiseLastError(GetLastError());
    std::wstring name = Asked([&](wchar_t* buffer, DWORD size) {
      return GetFinalPathNameByHandleW(handle, buffer, size, VOLUME_NAME_DOS);
    });
    CloseHandle(handle);
    if (name.empty()) {
      name = Asked([&](wchar_t* buffer, DWORD size) {
        return GetFullPathNameW(Wide(path).c_str(), size, buffer, nullptr);
      });
    }
    if (name.empty()) RaiseLastError(GetLastError());
    const Text text(name.begin(), name.end());
    constexpr TextView kShare = u"\\\\?\\UNC\\";
    constexpr TextView kLocal = u"\\\\?\\";
    if (text.starts_with(kShare)) return u"\\\\" + text.substr(kShare.size());
    return text.starts_with(kLocal) ? text.substr(kLocal.size()) : text;
  }

  void Remove(const Text& path) override {
    if (!DeleteFileW(Wide(path).c_str())) RaiseLastError(GetLastError());
  }

  // Documented: it does not replace what bears the name, nor return before the file is moved on the
  // disk.
  void Rename(const Text& from, const Text& to) override {
    if (!MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), MOVEFILE_WRITE_THROUGH))
      RaiseLastError(GetLastError());
  }

  // Believed: names are kept in the file system's own journal, in the order in which they were
  // given, and flushing a file flushes its name with it. There is no call for a folder alone that
  // needs no special rights.
  void FlushFolder(const Text&) override {}

 private:
  static std::unique_ptr<WindowsFile> OpenWith(const Text& path, FileAccess access, DWORD how,
                                               DWORD more_flags, SECURITY_ATTRIBUTES* rights) {
    const HANDLE handle = CreateFileW(
        Wide(path).c_str(), MayWrite(access) ? DWORD{GENERIC_READ | GENERIC_WRITE} : GENERIC_READ,
        Sharing(access), rights, how, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS | more_flags,
        nullptr);
    if (handle == INVALID_HANDLE_VALUE) RaiseLastError(GetLastError());
    return std::make_unique<WindowsFile>(handle, path);
  }

  // Made or found, never made over what is there: another process may make or remove it in between.
  static std::unique_ptr<File> OpenOwn(const Text& path, FileAccess access,
                                       SECURITY_ATTRIBUTES* rights) {
    for (;;) {
      if (MayMake(access)) {
        try {
          return OpenWith(path, access, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT, rights);
        } catch (const FileError& error) {
          if (error.Problem() != FileProblem::Exists || access == FileAccess::NewDraft) throw;
        }
      }
      try {
        return OpenFound(path, access);
      } catch (const FileError& error) {
        if (!MayMake(access) || error.Problem() != FileProblem::NotFound) throw;
      }
    }
  }

  // A link is opened as what it is, and refused. What else is opened this way (files that the
  // system keeps in a form of its own) has to be opened again.
  static std::unique_ptr<File> OpenFound(const Text& path, FileAccess access) {
    auto file = OpenWith(path, access, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file->IsLink()) throw FileError(FileProblem::Denied, "a link bears its name");
    if (file->IsReparsePoint()) file = OpenWith(path, access, OPEN_EXISTING, 0, nullptr);
    if (!IsOfDraft(access) && file->Stamp().several_names)
      throw FileError(FileProblem::Denied, "it has other names as well");
    return file;
  }

  static DWORD Sharing(FileAccess access) {
    if (access == FileAccess::Alone) return 0;
    const DWORD usual = FILE_SHARE_READ | FILE_SHARE_WRITE;
    return IsOfDraft(access) ? usual | FILE_SHARE_DELETE : usual;
  }

  // The text of a call that says how long it is; empty when it fails.
  template <typename Call>
  static std::wstring Asked(Call call) {
    std::wstring text(MAX_PATH, L'\0');
    DWORD size = call(text.data(), static_cast<DWORD>(text.size()));
    if (size > text.size()) {
      text.resize(size);
      size = call(text.data(), size);
    }
    text.resize(size <= text.size() ? size : 0);
    return text;
  }
};

}  // namespace

FileSystem& NativeFileSystem() {
  static WindowsFileSystem file_system;
  return file_system;
}

}  // namespace rdv::jet

#endif
