// The real database files that the tests read, and ways to open them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/file/page_source.h"

namespace rdv::jet {

// Below the folder of shared data: "corpus/jet4/indexTestV2000.mdb".
std::filesystem::path SharedPath(const std::string& name);

#define RDV_REQUIRE_SHARED_FILE(name)                         \
  if (!std::filesystem::exists(SharedPath(name))) {           \
    GTEST_SKIP() << "the shared data does not hold " << name; \
  }

// All sound files of a kind, sorted; empty without the shared data.
std::vector<std::string> Jet4Files();
std::vector<std::string> Jet3Files();
std::vector<std::string> AllFiles();

std::vector<uint8_t> LoadBytes(const std::filesystem::path& path);

// A file in memory with a reader on it that counts the pages it is asked for.
class OpenFile {
 public:
  // Raises what FileReader raises.
  explicit OpenFile(const std::string& name);
  OpenFile(std::vector<uint8_t> bytes, const std::string& name);

  FileReader& Reader() { return *reader_; }
  PageSource& Pages() { return *pages_; }
  int PagesRead() const { return *count_; }
  void ResetCount() { *count_ = 0; }

 private:
  std::unique_ptr<PageSource> pages_;
  std::unique_ptr<FileReader> reader_;
  int* count_ = nullptr;
};

// A name that a parameterized test may bear.
std::string TestName(const std::string& file);

}  // namespace rdv::jet
