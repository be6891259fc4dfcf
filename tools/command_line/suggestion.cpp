#include "tools/command_line/suggestion.h"

#include <algorithm>
#include <vector>

namespace rdv::tools {
namespace {

// How many letters have to be put in, taken out, replaced or exchanged with their neighbour.
size_t Distance(std::string_view left, std::string_view right) {
  std::vector<std::vector<size_t>> cost(left.size() + 1, std::vector<size_t>(right.size() + 1));
  for (size_t i = 0; i <= left.size(); ++i) cost[i][0] = i;
  for (size_t j = 0; j <= right.size(); ++j) cost[0][j] = j;
  for (size_t i = 1; i <= left.size(); ++i) {
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t replaced = cost[i - 1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[left.size()][right.size()];
}

// The letters that make a word; capitals and the dashes of an option are no difference.
std::string Letters(std::string_view word) {
  std::string letters;
  for (const char letter : word) {
    if (letter == '-' && letters.empty()) continue;
    letters += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return letters;
}

}  // namespace

std::string Nearest(std::string_view word, std::span<const std::string> known) {
  const std::string given = Letters(word);
  if (given.empty()) return "";
  std::string nearest;
  size_t least = std::min<size_t>(3, given.size() / 3 + 2);
  size_t beginning_with = 0;
  std::string completed;
  for (const std::string& candidate : known) {
    const std::string letters = Letters(candidate);
    const size_t distance = Distance(given, letters);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
    if (letters.starts_with(given)) {
      ++beginning_with;
      completed = candidate;
    }
  }
  if (beginning_with == 1) return completed;
  return nearest;
}

}  // namespace rdv::tools
