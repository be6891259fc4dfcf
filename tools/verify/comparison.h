// What two runs have left behind, compared.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tools/verify/result.h"

namespace rdv::verify {

// Names with a digest of what each holds.
using Snapshot = std::map<std::string, uint64_t>;

// "added NAME", "gone NAME", "changed NAME", by name.
std::vector<std::string> Differences(const Snapshot& before, const Snapshot& after);

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

// All bytes of a file; throws std::runtime_error when it cannot be read.
std::string BytesOf(const std::filesystem::path& file);

}  // namespace rdv::verify
