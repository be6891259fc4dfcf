// Runs a fuzz target without a fuzzer: over the inputs in the given files and folders, over those
// cut off and changed in ways that are the same in every run, and over made-up ones.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

constexpr int kChangesOfEach = 40;
constexpr int kMadeUp = 200;
constexpr size_t kLongestMadeUp = 600;

void Run(const Bytes& input) {
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::vector<fs::path> InputsIn(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  // The order decides about the changes that follow.
  std::sort(files.begin(), files.end());
  return files;
}

class Changes {
 public:
  void Apply(Bytes& input) {
    for (size_t count = 1 + Below(4); count > 0 && !input.empty(); --count) {
      switch (Below(4)) {
        case 0:
          input.resize(Below(input.size() + 1));
          break;
        case 1:
          input.insert(input.begin() + static_cast<ptrdiff_t>(Below(input.size())), Byte());
          break;
        default:
          input[Below(input.size())] = Byte();
      }
    }
  }
  Bytes MakeUp() {
    Bytes input(Below(kLongestMadeUp));
    for (uint8_t& byte : input) byte = Byte();
    return input;
  }

 private:
  size_t Below(size_t limit) { return random_() % limit; }
  uint8_t Byte() { return static_cast<uint8_t>(random_()); }

  std::mt19937 random_{20021};
};

}  // namespace

int main(int argc, char** argv) {
  Changes changes;
  size_t runs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : InputsIn(argv[i])) {
      std::ifstream stream(file, std::ios::binary);
      const Bytes input{std::istreambuf_iterator<char>(stream), {}};
      Run(input);
      for (int change = 0; change < kChangesOfEach; ++change, ++runs) {
        Bytes changed = input;
        changes.Apply(changed);
        Run(changed);
      }
      ++runs;
    }
  }
  for (int i = 0; i < kMadeUp; ++i, ++runs) Run(changes.MakeUp());
  std::printf("%zu inputs, nothing found\n", runs);
  return 0;
}
