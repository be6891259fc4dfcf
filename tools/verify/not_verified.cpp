#include "tools/verify/not_verified.h"

#include <algorithm>
#include <stdexcept>

namespace rdv::verify {
namespace {

constexpr std::string_view kHeading = "## Not verified";
constexpr size_t kColumns = 3;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

// Of "| a | b | c |".
std::vector<std::string> CellsOf(std::string_view row) {
  std::vector<std::string> cells;
  row.remove_prefix(1);
  for (size_t end = 0; (end = row.find('|')) != std::string_view::npos; row.remove_prefix(end + 1))
    cells.emplace_back(Trimmed(row.substr(0, end)));
  return cells;
}

std::vector<std::string> Quoted(std::string_view text) {
  std::vector<std::string> words;
  for (size_t begin = 0; (begin = text.find('`')) != std::string_view::npos;) {
    const size_t end = text.find('`', begin + 1);
    if (end == std::string_view::npos) break;
    words.emplace_back(text.substr(begin + 1, end - begin - 1));
    text.remove_prefix(end + 1);
  }
  return words;
}

}  // namespace

std::vector<NotVerified> ReadNotVerified(std::string_view document) {
  const size_t heading = document.find(kHeading);
  if (heading == std::string_view::npos)
    throw std::runtime_error("the document has no heading \"" + std::string(kHeading) + "\"");
  document.remove_prefix(heading + kHeading.size());
  document = document.substr(0, document.find("\n## "));
  std::vector<NotVerified> rows;
  bool below_head = false;
  while (!document.empty()) {
    const size_t end = std::min(document.find('\n'), document.size() - 1) + 1;
    const std::string_view line = Trimmed(document.substr(0, end - 1));
    document.remove_prefix(end);
    if (!line.starts_with('|')) continue;
    if (line.starts_with("| ---")) {
      below_head = true;
    } else if (below_head) {
      std::vector<std::string> cells = CellsOf(line);
      if (cells.size() != kColumns)
        throw std::runtime_error("a row without three cells: " + std::string(line));
      std::vector<std::string> steps = Quoted(cells[2]);
      rows.push_back({cells[0], cells[1], cells[2], std::move(steps)});
    }
  }
  if (rows.empty()) throw std::runtime_error("no table below \"" + std::string(kHeading) + "\"");
  return rows;
}

}  // namespace rdv::verify
