// A process that uses a simulated disk and may be killed while others go on.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "tests/power_loss/simulated_disk.h"

namespace rdv::jet {

class SimulatedProcess : public FileSystem {
 public:
  explicit SimulatedProcess(SimulatedDisk& disk) : disk_(disk) {}

  // Killed before the write, resizing, flush, making, renaming or removal that `after` others come
  // before.
  void KillAfter(int after) { until_killed_ = after; }
  bool IsKilled() const { return killed_; }
  // The system closes its files: its locks are gone.
  void Kill() {
    killed_ = true;
    for (ProcessFile* file : files_) file->file.reset();
  }

  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    if (MayMake(access) && !disk_.Exists(path)) Act();
    RequireAlive();
    return std::make_unique<ProcessFile>(*this, disk_.Open(path, access));
  }
  std::unique_ptr<File> OpenBeside(File&, const Text& path, FileAccess access) override {
    return Open(path, access);
  }
  bool OpensAlone() const override { return disk_.OpensAlone(); }
  bool Exists(const Text& path) override {
    RequireAlive();
    return disk_.Exists(path);
  }
  Text CanonicalPath(const Text& path) override { return disk_.CanonicalPath(path); }
  void Remove(const Text& path) override {
    Act();
    disk_.Remove(path);
  }
  void Rename(const Text& from, const Text& to) override {
    Act();
    disk_.Rename(from, to);
  }
  void FlushFolder(const Text& path) override {
    Act();
    disk_.FlushFolder(path);
  }

 private:
  struct ProcessFile : File {
    ProcessFile(SimulatedProcess& of, std::unique_ptr<File> opened)
        : process(of), file(std::move(opened)) {
      process.files_.push_back(this);
    }
    ~ProcessFile() override { std::erase(process.files_, this); }

    size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
      return Alive().ReadAt(offset, into);
    }
    void WriteAt(uint64_t offset, Bytes from) override { Acting().WriteAt(offset, from); }
    FileStamp Stamp() override { return Alive().Stamp(); }
    void Resize(uint64_t size) override { Acting().Resize(size); }
    void Flush() override { Acting().Flush(); }
    bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
      return Alive().TryLock(offset, length, mode);
    }
    void Unlock(uint64_t offset, uint64_t length) override { Alive().Unlock(offset, length); }
    bool IsLocked(uint64_t offset) override { return Alive().IsLocked(offset); }
    FileOrigin Origin() override { return Alive().Origin(); }
    bool Bears(const Text& path) override { return Alive().Bears(path); }

    File& Alive() const {
      process.RequireAlive();
      return *file;
    }
    File& Acting() const {
      process.Act();
      return *file;
    }

    SimulatedProcess& process;
    std::unique_ptr<File> file;
  };

  void RequireAlive() const {
    if (killed_) throw FileError(FileProblem::Other, "the process was killed");
  }
  void Act() {
    if (until_killed_ >= 0 && until_killed_-- == 0) Kill();
    RequireAlive();
  }

  SimulatedDisk& disk_;
  std::vector<ProcessFile*> files_;
  int until_killed_ = -1;
  bool killed_ = false;
};

}  // namespace rdv::jet
