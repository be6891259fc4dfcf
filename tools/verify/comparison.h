// What two runs have left behind, compared.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/verify/result.h"

namespace rdv::verify {

// Names with a digest of what each holds.
using Snapshot = std::map<std::string, uint64_t>;

// "added NAME", "gone NAME", "changed NAME", by name.
std::vector<std::string> Differences(const Snapshot& before, const Snapshot& after);

// The differences that the product has to answer for, and those that other programs may have made
// meanwhile. The product's own are told by its names, or by being among the `written` ones.
struct Traces {
  std::vector<std::string> ours;
  std::vector<std::string> others;
};
Traces SortTraces(const std::vector<std::string>& differences,
                  const std::set<std::string>& written);

// The names in `after` that `before` does not have, or has otherwise.
std::set<std::string> WrittenBetween(const Snapshot& before, const Snapshot& after);

// Continues a digest over further bytes; begin with kEmptyDigest.
inline constexpr uint64_t kEmptyDigest = 0xcbf29ce484222325;
uint64_t Digest(uint64_t before, const void* bytes, size_t size);

// Compares the scenarios' answers (NAME.jsonl, byte by byte) and databases (NAME.mdb, by what
// `contents` says of each) that two runs have kept in their folders: a finding for each scenario,
// failed also where only one of the runs has it.
using ContentsOfDatabase = std::function<std::string(const std::filesystem::path&)>;
std::vector<Finding> CompareRuns(const std::filesystem::path& one,
                                 const std::filesystem::path& other,
                                 const ContentsOfDatabase& contents);

// The files of a folder with that extension, by name; none where there is no such folder.
std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& folder,
                                           std::string_view extension);

// All bytes of a file; throws std::runtime_error when it cannot be read.
std::string BytesOf(const std::filesystem::path& file);

}  // namespace rdv::verify
