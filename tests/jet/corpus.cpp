#include "tests/jet/corpus.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace rdv::jet {
namespace {

class CountingPageSource : public BufferPageSource {
 public:
  using BufferPageSource::BufferPageSource;
  Bytes Page(uint32_t number) override {
    ++count;
    return BufferPageSource::Page(number);
  }
  int count = 0;
};

std::vector<std::string> DatabasesIn(const std::string& folder) {
  std::vector<std::string> names;
  test::AtHand({folder});  // told where it is missing
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(SamplePath(folder), error)) {
    if (entry.path().extension() == ".mdb")
      names.push_back(folder + "/" + entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The page size by the version that the file says it has.
uint32_t PageSizeOf(const std::vector<uint8_t>& bytes) {
  const bool jet4 = bytes.size() > kHeaderVersion && bytes[kHeaderVersion] != 0;
  return jet4 ? kJet4.page_size : kJet3.page_size;
}

}  // namespace

RDV_TELL_MISSING_FILES()

std::vector<std::string> Jet4Files() {
  std::vector<std::string> files = sites::SoundDatabases();
  for (const char* folder : {"corpus/jet4", "corpus/blank", "foreign/plain", "foreign/plain2003",
                             "foreign/indexed", "foreign/large"}) {
    const std::vector<std::string> names = DatabasesIn(folder);
    files.insert(files.end(), names.begin(), names.end());
  }
  return files;
}

std::vector<std::string> Jet3Files() {
  return DatabasesIn("corpus/jet3");
}

std::vector<std::string> AllFiles() {
  std::vector<std::string> files = Jet4Files();
  const std::vector<std::string> jet3 = Jet3Files();
  files.insert(files.end(), jet3.begin(), jet3.end());
  return files;
}

std::vector<uint8_t> LoadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

OpenFile::OpenFile(const std::string& name) : OpenFile(LoadBytes(SamplePath(name)), name) {}

OpenFile::OpenFile(std::vector<uint8_t> bytes, const std::string& name) {
  const Text path = FromUtf8(name);
  const uint64_t size = bytes.size();
  const uint32_t page_size = PageSizeOf(bytes);
  Header header = ReadHeader(bytes, size, path);
  auto pages = std::make_unique<CountingPageSource>(std::move(bytes), page_size, path);
  count_ = &pages->count;
  pages_ = std::move(pages);
  reader_ = std::make_unique<FileReader>(*pages_, std::move(header));
}

}  // namespace rdv::jet
