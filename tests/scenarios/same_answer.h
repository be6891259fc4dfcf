// Whether two answers of a player say the same.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace rdv::test {

// Real windows lie on whole pixels: each of the few lengths that a position is the sum of may be
// off by one. In-memory widgets are exact.
#ifdef _WIN32
inline constexpr long kPositionTolerance = 60;
#else
inline constexpr long kPositionTolerance = 0;
#endif

// Takes the member that gives a position or size off both answers; false when they do not both go
// on with one.
inline bool TakePosition(std::string_view& left, std::string_view& right, long& difference) {
  for (const std::string_view name : {"\"left\":", "\"top\":", "\"width\":", "\"height\":"}) {
    if (!left.starts_with(name) || !right.starts_with(name)) continue;
    long values[2];
    std::string_view* const texts[2] = {&left, &right};
    for (int side = 0; side < 2; ++side) {
      texts[side]->remove_prefix(name.size());
      const std::string number(texts[side]->substr(0, texts[side]->find_first_of(",}")));
      values[side] = std::strtol(number.c_str(), nullptr, 10);
      texts[side]->remove_prefix(number.size());
    }
    difference = std::labs(values[0] - values[1]);
    return true;
  }
  return false;
}

// Where the second answer stops saying what the first says; nothing when they say the same.
inline std::optional<size_t> FirstDifference(const std::string& first, const std::string& second) {
  std::string_view left = first;
  std::string_view right = second;
  while (!left.empty() || !right.empty()) {
    const size_t at = second.size() - right.size();
    if (left.empty() || right.empty()) return at;
    long difference = 0;
    if (TakePosition(left, right, difference)) {
      if (difference > kPositionTolerance) return at;
      continue;
    }
    if (left.front() != right.front()) return at;
    left.remove_prefix(1);
    right.remove_prefix(1);
  }
  return std::nullopt;
}

inline bool SameAnswer(const std::string& left, const std::string& right) {
  return !FirstDifference(left, right);
}

}  // namespace rdv::test
