// Files that lie in memory: a fuzzer makes and forgets thousands in a second.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "data/jet/file/file.h"

namespace rdv::jet::fuzz {

// One process with one opener of each file: locks are always granted.
class MemoryFiles : public FileSystem {
 public:
  using Content = std::shared_ptr<std::vector<uint8_t>>;

  void Put(const Text& path, std::vector<uint8_t> bytes) {
    files_[path] = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
  }
  const std::vector<uint8_t>& Get(const Text& path) const { return *files_.at(path); }

  std::unique_ptr<File> Open(const Text& path, FileAccess access) override;
  std::unique_ptr<File> OpenBeside(File&, const Text& path, FileAccess access) override {
    return Open(path, access);
  }
  bool OpensAlone() const override { return false; }
  bool Exists(const Text& path) override { return files_.contains(path); }
  Text CanonicalPath(const Text& path) override;
  void Remove(const Text& path) override { files_.erase(path); }
  void Rename(const Text& from, const Text& to) override;
  void FlushFolder(const Text&) override {}

 private:
  std::map<Text, Content> files_;
};

}  // namespace rdv::jet::fuzz
