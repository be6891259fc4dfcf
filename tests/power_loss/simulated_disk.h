// A disk that remembers what was asked of it and what of that it may have lost when the power went:
// everything that was not flushed, in any combination, a write also in part, sector by sector.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "data/jet/file/file.h"

namespace rdv::jet {

using DiskContents = std::map<Text, std::vector<uint8_t>>;  // by name

struct DiskOperation {
  // FailedFlush: what it should have brought to the disk never gets there, as a system has it that
  // takes for written what could not be.
  enum class Kind { Make, Write, Resize, Flush, FailedFlush, Remove, Rename, FlushFolder };
  Kind kind = Kind::Flush;
  size_t file = 0;      // all but names
  uint64_t offset = 0;  // also the size of Resize
  std::vector<uint8_t> bytes = {};
  Text name = {};
  Text new_name = {};
};

// One computer: several openers in one thread, whose locks exclude each other. All files lie in one
// folder.
class SimulatedDisk : public FileSystem {
 public:
  // `session`: that of another disk, which is this one at an earlier moment; 0 for the computer
  // started anew.
  explicit SimulatedDisk(DiskContents contents = {}, uint64_t session = 0);
  SimulatedDisk(const SimulatedDisk&) = delete;
  SimulatedDisk& operator=(const SimulatedDisk&) = delete;
  ~SimulatedDisk() override;

  // What a process sees.
  DiskContents Contents() const;
  Bytes ContentOf(const Text& path) const { return files_[names_.at(path)].bytes; }
  const std::vector<DiskOperation>& Operations() const { return operations_; }

  // The disk is full for `count` writes and resizes after `after` more that are done. A write of
  // more than a sector that fails is done in half.
  void FillAfter(int after, int count) {
    until_full_ = after;
    failures_ = count;
    was_full_ = false;
  }
  bool WasFull() const { return was_full_; }  // since then

  // The flush that `after` others come before fails. Names are flushed all the same.
  void FailFlushAfter(int after, FileProblem problem = FileProblem::Other) {
    until_flush_fails_ = after;
    flush_problem_ = problem;
  }
  // No name can be removed.
  void KeepNames() { keeps_names_ = true; }
  uint64_t Session() const { return session_; }

  std::unique_ptr<File> Open(const Text& path, FileAccess access) override;
  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override;
  bool OpensAlone() const override { return false; }
  bool Exists(const Text& path) override { return names_.contains(path); }
  Text CanonicalPath(const Text& path) override;
  void Remove(const Text& path) override;
  void Rename(const Text& from, const Text& to) override;
  void FlushFolder(const Text& path) override;

 private:
  bool IsFull();

  class OpenFile;
  struct Lock {
    const OpenFile* owner = nullptr;
    uint64_t offset = 0;
    uint64_t length = 0;
    LockMode mode = LockMode::Shared;
  };
  struct StoredFile {
    std::vector<uint8_t> bytes;
    std::vector<Lock> locks;
  };

  std::vector<StoredFile> files_;
  std::map<Text, size_t> names_;
  std::vector<DiskOperation> operations_;
  uint64_t session_;
  int until_flush_fails_ = -1;
  FileProblem flush_problem_ = FileProblem::Other;
  bool keeps_names_ = false;
  int until_full_ = 0;
  int failures_ = 0;
  bool was_full_ = false;
};

// What is left of the contents after each of the operations, if the power goes then.
class PowerLoss {
 public:
  PowerLoss(const DiskContents& contents, const std::vector<DiskOperation>& operations);

  // One operation further; false behind the last.
  bool Advance();
  size_t Position() const { return position_; }

  // What is not on the disk for certain: writes, sizes and names.
  size_t PendingCount() const { return pending_.size(); }

  // Whether a flush that failed has lost something, which those who still run see all the same.
  bool HasLost() const { return has_lost_; }

  enum class Fate : uint8_t { Kept, Dropped, Torn };
  // One for each of the pending operations. `chance` says which sectors of a torn write are there.
  DiskContents Left(const std::vector<Fate>& fates, std::mt19937& chance) const;

  // Calls for a bounded number of choices: nothing, everything, each one alone, all but each one,
  // each beginning (whole and torn), all choices where there are few, and `samples` by chance.
  // Of many pending operations, "each one" is some of them.
  void ForEachChoice(int samples, std::mt19937& chance,
                     const std::function<void(const std::vector<Fate>&)>& call) const;

 private:
  void Apply(const DiskOperation& operation);

  const std::vector<DiskOperation>& operations_;
  size_t position_ = 0;
  std::map<size_t, std::vector<uint8_t>> files_;  // as they are on the disk for certain
  std::map<Text, size_t> names_;
  std::vector<const DiskOperation*> pending_;
  bool has_lost_ = false;
};

}  // namespace rdv::jet
