#include "tests/power_loss/simulated_disk.h"

#include <algorithm>
#include <utility>

namespace rdv::jet {
namespace {

using Kind = DiskOperation::Kind;
using Fate = PowerLoss::Fate;

constexpr size_t kSector = 512;
// Up to here every combination of pending operations is tried.
constexpr size_t kFew = 6;
// From here on not every one of them is tried alone.
constexpr size_t kMany = 24;

void Put(std::vector<uint8_t>& content, uint64_t offset, Bytes bytes) {
  const auto end = static_cast<size_t>(offset) + bytes.size();
  if (content.size() < end) content.resize(end);
  std::ranges::copy(bytes, content.begin() + static_cast<ptrdiff_t>(offset));
}

// Some of the sectors that the write touches; the file may have grown all the same.
void PutTorn(std::vector<uint8_t>& content, uint64_t offset, Bytes bytes, std::mt19937& chance) {
  const uint64_t end = offset + bytes.size();
  if (end > content.size() && chance() % 2 == 0) content.resize(static_cast<size_t>(end));
  for (uint64_t at = offset; at < end;) {
    const uint64_t next = std::min<uint64_t>((at / kSector + 1) * kSector, end);
    if (chance() % 2 == 0)
      Put(content, at,
          bytes.subspan(static_cast<size_t>(at - offset), static_cast<size_t>(next - at)));
    at = next;
  }
}

}  // namespace

class SimulatedDisk::OpenFile : public File {
 public:
  OpenFile(SimulatedDisk& disk, size_t file) : disk_(disk), file_(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() override {
    std::erase_if(Locks(), [this](const Lock& lock) { return lock.owner == this; });
  }

  size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
    const std::vector<uint8_t>& bytes = disk_.files_[file_].bytes;
    if (offset >= bytes.size()) return 0;
    const auto start = static_cast<size_t>(offset);
    const size_t count = std::min(into.size(), bytes.size() - start);
    std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(start), count, into.begin());
    return count;
  }
  void WriteAt(uint64_t offset, Bytes from) override {
    const bool full = disk_.IsFull();
    if (full) from = from.first(from.size() > kSector ? from.size() / 2 : 0);
    Put(disk_.files_[file_].bytes, offset, from);
    Note({.kind = Kind::Write, .offset = offset, .bytes = {from.begin(), from.end()}});
    if (full) throw FileError(FileProblem::DiskFull, "the disk is full");
  }
  FileStamp Stamp() override {
    const bool linked = std::ranges::any_of(
        disk_.names_, [this](const auto& name) { return name.second == file_; });
    return {.size = disk_.files_[file_].bytes.size(), .linked = linked};
  }
  void Resize(uint64_t size) override {
    if (disk_.IsFull()) throw FileError(FileProblem::DiskFull, "the disk is full");
    disk_.files_[file_].bytes.resize(static_cast<size_t>(size));
    Note({.kind = Kind::Resize, .offset = size});
  }
  void Flush() override {
    const bool fails = disk_.until_flush_fails_ >= 0 && disk_.until_flush_fails_-- == 0;
    Note({.kind = fails ? Kind::FailedFlush : Kind::Flush});
    if (fails) throw FileError(disk_.flush_problem_, "the disk did not take it");
  }
  FileOrigin Origin() override { return {.session = disk_.session_, .file = 1}; }
  bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
    if (Excludes(offset, length, mode)) return false;
    Locks().push_back({this, offset, length, mode});
    return true;
  }
  void Unlock(uint64_t offset, uint64_t length) override {
    std::erase_if(Locks(), [&](const Lock& lock) {
      return lock.owner == this && lock.offset == offset && lock.length == length;
    });
  }
  bool IsLocked(uint64_t offset) override { return Excludes(offset, 1, LockMode::Exclusive); }
  bool Bears(const Text& path) override {
    const auto found = disk_.names_.find(path);
    return found != disk_.names_.end() && found->second == file_;
  }

 private:
  std::vector<Lock>& Locks() { return disk_.files_[file_].locks; }
  bool Excludes(uint64_t offset, uint64_t length, LockMode mode) {
    return std::ranges::any_of(Locks(), [&](const Lock& lock) {
      const bool meets = lock.offset < offset + length && offset < lock.offset + lock.length;
      const bool shared = lock.mode == LockMode::Shared && mode == LockMode::Shared;
      return lock.owner != this && meets && !shared;
    });
  }
  void Note(DiskOperation operation) {
    operation.file = file_;
    disk_.operations_.push_back(std::move(operation));
  }

  SimulatedDisk& disk_;
  size_t file_;
};

SimulatedDisk::SimulatedDisk(DiskContents contents, uint64_t session) : session_(session) {
  static uint64_t sessions = 0;
  if (session_ == 0) session_ = ++sessions;
  for (DiskContents::value_type& file : contents) {
    names_[file.first] = files_.size();
    files_.push_back({.bytes = std::move(file.second), .locks = {}});
  }
}
SimulatedDisk::~SimulatedDisk() = default;

bool SimulatedDisk::IsFull() {
  if (failures_ == 0 || until_full_-- > 0) return false;
  until_full_ = 0;
  --failures_;
  was_full_ = true;
  return true;
}

DiskContents SimulatedDisk::Contents() const {
  DiskContents contents;
  for (const auto& [name, file] : names_) contents[name] = files_[file].bytes;
  return contents;
}

std::unique_ptr<File> SimulatedDisk::Open(const Text& path, FileAccess access) {
  const auto found = names_.find(path);
  if (found != names_.end()) {
    if (access == FileAccess::NewDraft) throw FileError(FileProblem::Exists, "there is one");
    return std::make_unique<OpenFile>(*this, found->second);
  }
  if (!MayMake(access)) throw FileError(FileProblem::NotFound, "there is none");
  names_[path] = files_.size();
  files_.emplace_back();
  operations_.push_back({.kind = Kind::Make, .file = files_.size() - 1, .name = path});
  return std::make_unique<OpenFile>(*this, files_.size() - 1);
}

std::unique_ptr<File> SimulatedDisk::OpenBeside(File&, const Text& path, FileAccess access) {
  return Open(path, access);
}

Text SimulatedDisk::CanonicalPath(const Text& path) {
  if (!Exists(path)) throw FileError(FileProblem::NotFound, "there is none");
  return path;
}

void SimulatedDisk::Remove(const Text& path) {
  if (keeps_names_) throw FileError(FileProblem::InUse, "somebody has it open");
  if (names_.erase(path) == 0) throw FileError(FileProblem::NotFound, "there is none");
  operations_.push_back({.kind = Kind::Remove, .name = path});
}

void SimulatedDisk::Rename(const Text& from, const Text& to) {
  if (names_.contains(to)) throw FileError(FileProblem::Exists, "there is one");
  const auto found = names_.find(from);
  if (found == names_.end()) throw FileError(FileProblem::NotFound, "there is none");
  const size_t file = found->second;
  names_.erase(found);
  names_[to] = file;
  operations_.push_back({.kind = Kind::Rename, .file = file, .name = from, .new_name = to});
}

void SimulatedDisk::FlushFolder(const Text&) {
  operations_.push_back({.kind = Kind::FlushFolder});
}

PowerLoss::PowerLoss(const DiskContents& contents, const std::vector<DiskOperation>& operations)
    : operations_(operations) {
  for (const auto& [name, bytes] : contents) {  // numbered as the disk does
    const size_t file = files_.size();
    files_[file] = bytes;
    names_[name] = file;
  }
}

namespace {

bool IsOfNames(Kind kind) {
  return kind == Kind::Make || kind == Kind::Remove || kind == Kind::Rename;
}

void ApplyName(const DiskOperation& operation, std::map<Text, size_t>& names) {
  switch (operation.kind) {
    case Kind::Make:
      names[operation.name] = operation.file;
      break;
    case Kind::Remove:
      names.erase(operation.name);
      break;
    case Kind::Rename:
      names.erase(operation.name);
      names[operation.new_name] = operation.file;
      break;
    default:
      break;
  }
}

void ApplyContent(const DiskOperation& operation, std::vector<uint8_t>& content) {
  if (operation.kind == Kind::Write) Put(content, operation.offset, operation.bytes);
  if (operation.kind == Kind::Resize) content.resize(static_cast<size_t>(operation.offset));
}

}  // namespace

bool PowerLoss::Advance() {
  if (position_ == operations_.size()) return false;
  const DiskOperation& operation = operations_[position_++];
  const bool of_names = operation.kind == Kind::FlushFolder;
  if (operation.kind != Kind::Flush && operation.kind != Kind::FailedFlush && !of_names) {
    pending_.push_back(&operation);
    return true;
  }
  std::erase_if(pending_, [&](const DiskOperation* pending) {
    if (IsOfNames(pending->kind) != of_names) return false;
    if (!of_names && pending->file != operation.file) return false;
    if (operation.kind == Kind::FailedFlush) return has_lost_ = true;
    if (of_names) {
      ApplyName(*pending, names_);
    } else {
      ApplyContent(*pending, files_[pending->file]);
    }
    return true;
  });
  return true;
}

DiskContents PowerLoss::Left(const std::vector<Fate>& fates, std::mt19937& chance) const {
  std::map<size_t, std::vector<uint8_t>> files = files_;
  std::map<Text, size_t> names = names_;
  for (size_t i = 0; i < pending_.size(); ++i) {
    const DiskOperation& operation = *pending_[i];
    if (fates[i] == Fate::Dropped) continue;
    if (IsOfNames(operation.kind)) {
      ApplyName(operation, names);
    } else if (fates[i] == Fate::Torn && operation.kind == Kind::Write) {
      PutTorn(files[operation.file], operation.offset, operation.bytes, chance);
    } else {
      ApplyContent(operation, files[operation.file]);
    }
  }
  DiskContents contents;
  for (const auto& [name, file] : names) contents[name] = files[file];
  return contents;
}

void PowerLoss::ForEachChoice(int samples, std::mt19937& chance,
                              const std::function<void(const std::vector<Fate>&)>& call) const {
  const size_t count = pending_.size();
  call(std::vector<Fate>(count, Fate::Kept));
  if (count == 0) return;
  call(std::vector<Fate>(count, Fate::Dropped));
  for (size_t i = 0; i < count; i += count / kMany + 1) {
    std::vector<Fate> fates(count, Fate::Dropped);
    fates[i] = Fate::Kept;
    call(fates);
    fates.assign(count, Fate::Kept);
    fates[i] = Fate::Dropped;
    call(fates);
    std::fill(fates.begin() + static_cast<ptrdiff_t>(i), fates.end(), Fate::Dropped);
    call(fates);
    fates[i] = Fate::Torn;
    call(fates);
  }
  for (size_t choice = 0; count <= kFew && choice < size_t{1} << count; ++choice) {
    std::vector<Fate> fates(count, Fate::Dropped);
    for (size_t i = 0; i < count; ++i) {
      if ((choice >> i & 1) != 0) fates[i] = Fate::Kept;
    }
    call(fates);
  }
  for (int sample = 0; sample < samples; ++sample) {
    const auto likely = 1 + chance() % 9;  // of ten
    std::vector<Fate> fates(count);
    for (Fate& fate : fates) {
      const bool torn = chance() % 5 == 0;
      fate = torn ? Fate::Torn : (chance() % 10 < likely ? Fate::Kept : Fate::Dropped);
    }
    call(fates);
  }
}

}  // namespace rdv::jet
