// Databases of sites that were made to hurt: sound ones but for one structure each, which takes
// more than a single field.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace rdv::test {

struct HostileStructure {
  std::string name;
  std::function<std::vector<uint8_t>()> make;
  uint64_t pages = 0;  // that the file has, those behind what was made being holes; 0: no more
};

// For the messages of failed expectations.
inline void PrintTo(const HostileStructure& structure, std::ostream* out) {
  *out << structure.name;
}

const std::vector<HostileStructure>& HostileStructures();

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes);

}  // namespace rdv::test
