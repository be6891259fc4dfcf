// Bytes written as hexadecimal digits, blanks between them as one likes.
#pragma once

#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rdv::jet {

inline std::vector<uint8_t> BytesOf(std::string_view digits) {
  std::vector<uint8_t> bytes;
  std::string pair;
  for (const char digit : digits) {
    if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) continue;
    pair.push_back(digit);
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<uint8_t>(std::stoul(pair, nullptr, 16)));
    pair.clear();
  }
  return bytes;
}

}  // namespace rdv::jet
