#include "tests/fuzz/memory_files.h"

#include <algorithm>
#include <cstring>

namespace rdv::jet::fuzz {
namespace {

class MemoryFile : public File {
 public:
  explicit MemoryFile(MemoryFiles::Content content) : content_(std::move(content)) {}

  size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
    if (offset >= content_->size()) return 0;
    const auto start = static_cast<size_t>(offset);
    const size_t count = std::min(into.size(), content_->size() - start);
    std::memcpy(into.data(), content_->data() + start, count);
    return count;
  }
  void WriteAt(uint64_t offset, Bytes from) override {
    const auto start = static_cast<size_t>(offset);
    if (start + from.size() > content_->size()) content_->resize(start + from.size());
    std::copy(from.begin(), from.end(), content_->begin() + static_cast<ptrdiff_t>(start));
  }
  FileStamp Stamp() override { return {.size = content_->size()}; }
  void Resize(uint64_t size) override { content_->resize(static_cast<size_t>(size)); }
  void Flush() override {}
  bool TryLock(uint64_t, uint64_t, LockMode) override { return true; }
  void Unlock(uint64_t, uint64_t) override {}
  bool IsLocked(uint64_t) override { return false; }
  bool Bears(const Text&) override { return true; }

 private:
  MemoryFiles::Content content_;
};

}  // namespace

std::unique_ptr<File> MemoryFiles::Open(const Text& path, FileAccess access) {
  const auto found = files_.find(path);
  if (found != files_.end()) {
    if (access == FileAccess::NewDraft) throw FileError(FileProblem::Exists, "there is one");
    return std::make_unique<MemoryFile>(found->second);
  }
  if (!MayMake(access)) throw FileError(FileProblem::NotFound, "there is none");
  Content content = std::make_shared<std::vector<uint8_t>>();
  files_.emplace(path, content);
  return std::make_unique<MemoryFile>(std::move(content));
}

Text MemoryFiles::CanonicalPath(const Text& path) {
  if (!Exists(path)) throw FileError(FileProblem::NotFound, "there is none");
  return path;
}

void MemoryFiles::Rename(const Text& from, const Text& to) {
  if (Exists(to)) throw FileError(FileProblem::Exists, "there is one");
  auto node = files_.extract(from);
  if (node.empty()) throw FileError(FileProblem::NotFound, "there is none");
  node.key() = to;
  files_.insert(std::move(node));
}

}  // namespace rdv::jet::fuzz
