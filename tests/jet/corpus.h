// The database files that the tests read, and ways to open them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/file/page_source.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {

using sites::SamplePath;

// All sound files of a kind: those of the texts and those of others that are at hand.
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

inline std::string TestName(const std::string& file) {
  return test::TestNameOf(file);
}

}  // namespace rdv::jet
