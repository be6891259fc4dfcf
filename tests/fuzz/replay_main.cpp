// Runs a fuzz target without a fuzzer. What is done is the same in every run.
//   PATH...                      the inputs in files and folders, those cut off and changed, and
//                                made-up ones
//   --databases FOLDER...        the databases in folders as they are, and with single bytes
//   changed
//   --seeds INTO FOLDER...       runs nothing; writes those databases as inputs into a folder
//   --minutes N SEED LAST        made-up inputs for so long, other ones for each number SEED; the
//   last
//                                one lies in the file LAST, also when the program dies of it. One
//                                that takes longer than 20 seconds ends the program
#include <sys/time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

constexpr int kChangesOfEach = 40;
constexpr int kMadeUp = 200;
constexpr size_t kLongestMadeUp = 600;
constexpr long kLongestRun = 20;  // seconds
// Of each database: so many changed ones, and fewer of a large one.
constexpr size_t kChangesOfDatabase = 12;
constexpr size_t kBytesOfDatabase = size_t{2} << 20;
// What tells CTest that nothing was done.
constexpr int kSkipped = 77;

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

Bytes ReadFile(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Changes {
 public:
  Changes() = default;
  explicit Changes(unsigned seed) : random_(seed) {}

  // Not the first one, which says what the others are.
  void ChangeByteOfFile(Bytes& input) {
    if (input.size() > 1) input[1 + Below(input.size() - 1)] = Byte();
  }
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

struct Database {
  fs::path path;
  Bytes input;
};

std::vector<Database> DatabasesIn(std::span<char*> folders) {
  std::vector<Database> databases;
  for (const char* folder : folders) {
    if (!fs::exists(folder)) continue;
    for (const fs::path& path : InputsIn(folder)) {
      if (path.extension() != ".mdb") continue;
      databases.push_back({path, ReadFile(path)});
      Bytes& input = databases.back().input;
      input.insert(input.begin(), rdv::jet::fuzz::kWholeFile);
    }
  }
  return databases;
}

int RunInputs(std::span<char*> paths) {
  Changes changes;
  size_t runs = 0;
  for (const char* path : paths) {
    for (const fs::path& file : InputsIn(path)) {
      const Bytes input = ReadFile(file);
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

int RunDatabases(std::span<char*> folders) {
  Changes changes;
  size_t runs = 0;
  const std::vector<Database> databases = DatabasesIn(folders);
  for (const Database& database : databases) {
    // A finding ends the program: the last line says in which file.
    std::printf("%s\n", database.path.string().c_str());
    std::fflush(stdout);
    Run(database.input);
    const size_t count = std::min(kChangesOfDatabase, kBytesOfDatabase / database.input.size());
    for (size_t change = 0; change < count; ++change, ++runs) {
      Bytes changed = database.input;
      changes.ChangeByteOfFile(changed);
      Run(changed);
    }
    ++runs;
  }
  std::printf("%zu databases, %zu inputs, nothing found\n", databases.size(), runs);
  return databases.empty() ? kSkipped : 0;
}

// Of the processor's time: whoever else is at work does not count.
void EndAfter(long seconds) {
  itimerval timer{};
  timer.it_value.tv_sec = seconds;
  setitimer(ITIMER_VIRTUAL, &timer, nullptr);
}

int RunForMinutes(int minutes, unsigned seed, const fs::path& last) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(minutes);
  Changes changes(seed);
  size_t runs = 0;
  std::ofstream stream(last, std::ios::binary);
  for (; std::chrono::steady_clock::now() < end; ++runs) {
    const Bytes input = changes.MakeUp();
    fs::resize_file(last, 0);
    stream.seekp(0);
    stream.write(reinterpret_cast<const char*>(input.data()),
                 static_cast<std::streamsize>(input.size()));
    stream.flush();
    EndAfter(kLongestRun);
    Run(input);
    EndAfter(0);
    if (runs % 1000 == 999) std::printf("%zu\n", runs + 1), std::fflush(stdout);
  }
  std::printf("%zu inputs, nothing found\n", runs);
  return 0;
}

int WriteSeeds(const fs::path& into, std::span<char*> folders) {
  fs::create_directories(into);
  size_t count = 0;
  for (const Database& database : DatabasesIn(folders)) {
    const std::string name = std::to_string(++count) + "-" +
                             database.path.parent_path().filename().string() + "-" +
                             database.path.stem().string();
    std::ofstream stream(into / name, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(database.input.data()),
                 static_cast<std::streamsize>(database.input.size()));
    if (!stream.flush()) {
      std::fprintf(stderr, "cannot write %s\n", (into / name).string().c_str());
      return 1;
    }
  }
  std::printf("%zu seeds\n", count);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv + 1, static_cast<size_t>(argc) - 1);
  const std::string option = arguments.empty() ? "" : arguments[0];
  if (option == "--databases") return RunDatabases(arguments.subspan(1));
  if (option == "--seeds" && arguments.size() > 2)
    return WriteSeeds(arguments[1], arguments.subspan(2));
  if (option == "--minutes" && arguments.size() == 4) {
    return RunForMinutes(std::stoi(arguments[1]), static_cast<unsigned>(std::stoul(arguments[2])),
                         arguments[3]);
  }
  return RunInputs(arguments);
}
