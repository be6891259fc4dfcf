// What the tests of writing share: files of their own to write to, and a file system that fails or
// dies at a chosen operation.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "data/jet/file/file.h"
#include "tests/support/sites/sample_sites.h"

namespace rdv::jet {

inline Text PathText(const std::filesystem::path& path) {
  return FromUtf8(path.string());
}

using sites::SamplePath;

// A folder of the test's own, removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    static std::atomic<int> count{0};
    const auto stamp = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
    path_ = std::filesystem::temp_directory_path() /
            ("rdv-" + std::to_string(stamp) + "-" + std::to_string(++count));
    std::filesystem::create_directories(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& Path() const { return path_; }

  // A copy that can be written, under the same name or another one.
  std::filesystem::path Copy(const std::filesystem::path& from,
                             const std::string& name = {}) const {
    auto to = path_ / (name.empty() ? from.filename().string() : name);
    // Not left to copy_file, which on Windows does not overwrite whatever it is told.
    std::filesystem::remove(to);
    std::filesystem::copy_file(from, to);
    std::filesystem::permissions(to, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    return to;
  }

 private:
  std::filesystem::path path_;
};

inline std::vector<uint8_t> ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteWholeFile(const std::filesystem::path& path, Bytes bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  const std::string text(bytes.begin(), bytes.end());
  stream << text;
}

enum class Fault {
  None,
  FailingWrite,  // once, without writing anything
  ShortWrite,    // once, after half of it
  FullDisk,      // from then on
  Death,         // after half of it, and nothing works any more
  DeathBefore,   // likewise, but before any of it
  FailingRead,   // once
  FailingFlush,  // always
};

// The native file system, but for the operation that `after` operations of its kind come before.
// Writing, resizing, renaming and removing count as one kind, reading as another.
class FaultyFileSystem : public FileSystem {
 public:
  void Arm(Fault fault, int after) {
    fault_ = fault;
    left_ = after;
    struck_ = false;
  }
  // Whether the fault has happened.
  bool Struck() const { return struck_; }

  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    if (dead_) Fail();
    return std::make_unique<FaultyFile>(*this, NativeFileSystem().Open(path, access));
  }
  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override {
    if (dead_) Fail();
    File& native = *dynamic_cast<FaultyFile&>(model).file_;
    return std::make_unique<FaultyFile>(*this, NativeFileSystem().OpenBeside(native, path, access));
  }
  bool OpensAlone() const override { return NativeFileSystem().OpensAlone(); }
  bool Exists(const Text& path) override { return NativeFileSystem().Exists(path); }
  Text CanonicalPath(const Text& path) override { return NativeFileSystem().CanonicalPath(path); }
  void Remove(const Text& path) override {
    if (Strikes(Kind::Write)) Fail();
    NativeFileSystem().Remove(path);
  }
  void Rename(const Text& from, const Text& to) override {
    if (Strikes(Kind::Write)) Fail();
    NativeFileSystem().Rename(from, to);
  }
  void FlushFolder(const Text& path) override {
    if (dead_ || fault_ == Fault::FailingFlush) Fail();
    NativeFileSystem().FlushFolder(path);
  }

 private:
  enum class Kind { Write, Read };

  class FaultyFile : public File {
   public:
    FaultyFile(FaultyFileSystem& owner, std::unique_ptr<File> file)
        : owner_(owner), file_(std::move(file)) {}

    size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
      if (owner_.Strikes(Kind::Read)) owner_.Fail();
      return file_->ReadAt(offset, into);
    }
    void WriteAt(uint64_t offset, Bytes from) override {
      const bool was_dead = owner_.dead_;
      if (!owner_.Strikes(Kind::Write)) return file_->WriteAt(offset, from);
      const bool half = owner_.fault_ == Fault::ShortWrite || owner_.fault_ == Fault::Death;
      if (half && !was_dead) file_->WriteAt(offset, from.first(from.size() / 2));
      owner_.Fail();
    }
    FileStamp Stamp() override {
      if (owner_.dead_) owner_.Fail();
      return file_->Stamp();
    }
    void Resize(uint64_t size) override {
      if (owner_.Strikes(Kind::Write)) owner_.Fail();
      file_->Resize(size);
    }
    void Flush() override {
      if (owner_.dead_ || owner_.fault_ == Fault::FailingFlush) owner_.Fail();
      file_->Flush();
    }
    bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
      if (owner_.dead_) owner_.Fail();
      return file_->TryLock(offset, length, mode);
    }
    void Unlock(uint64_t offset, uint64_t length) override { file_->Unlock(offset, length); }

    bool IsLocked(uint64_t offset) override { return file_->IsLocked(offset); }
    FileOrigin Origin() override { return file_->Origin(); }
    bool Bears(const Text& path) override {
      if (owner_.dead_) owner_.Fail();
      return file_->Bears(path);
    }

   private:
    friend FaultyFileSystem;
    FaultyFileSystem& owner_;
    std::unique_ptr<File> file_;
  };

  bool Strikes(Kind kind) {
    if (dead_) return true;
    if (struck_) return fault_ == Fault::FullDisk && kind == Kind::Write;
    const bool counts = (fault_ == Fault::FailingRead) == (kind == Kind::Read);
    if (fault_ == Fault::None || fault_ == Fault::FailingFlush || !counts || left_-- > 0)
      return false;
    struck_ = true;
    dead_ = fault_ == Fault::Death || fault_ == Fault::DeathBefore;
    return true;
  }
  [[noreturn]] void Fail() const {
    throw FileError(fault_ == Fault::FullDisk ? FileProblem::DiskFull : FileProblem::Other,
                    "a fault of the test");
  }

  Fault fault_ = Fault::None;
  int left_ = 0;
  bool struck_ = false;
  bool dead_ = false;
};

}  // namespace rdv::jet
