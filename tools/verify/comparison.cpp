#include "tools/verify/comparison.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace rdv::verify {
namespace {

namespace fs = std::filesystem;

// Without the ending, of all files of answers.
std::set<std::string> ScenariosIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const fs::path& file : FilesOf(folder, ".jsonl")) names.insert(file.stem().string());
  return names;
}

std::string FirstDifference(const std::string& one, const std::string& other) {
  size_t at = 0;
  size_t line = 1;
  for (; at < one.size() && at < other.size() && one[at] == other[at]; ++at) {
    if (one[at] == '\n') ++line;
  }
  constexpr size_t kShown = 160;
  const auto around = [&](const std::string& text) {
    const size_t begin = at > kShown / 2 ? at - kShown / 2 : 0;
    return text.substr(std::min(begin, text.size()), kShown);
  };
  return "line " + std::to_string(line) + "\n" + around(one) + "\n" + around(other);
}

// Why the scenario's two runs differ; "" when they do not.
std::string Difference(const std::string& name, const fs::path& one, const fs::path& other,
                       const ContentsOfDatabase& contents) {
  for (const fs::path& folder : {one, other}) {
    if (!fs::exists(folder / (name + ".jsonl"))) return "was not played in " + folder.string();
  }
  const std::string answers = BytesOf(one / (name + ".jsonl"));
  const std::string other_answers = BytesOf(other / (name + ".jsonl"));
  if (answers != other_answers) return "answers: " + FirstDifference(answers, other_answers);
  const fs::path database = name + ".mdb";
  if (fs::exists(one / database) != fs::exists(other / database))
    return "only one of the runs has left a database";
  if (!fs::exists(one / database)) return "";
  const std::string rows = contents(one / database);
  const std::string other_rows = contents(other / database);
  return rows == other_rows ? "" : "databases: " + FirstDifference(rows, other_rows);
}

// Whether one of the product's names stands in it, in letters of either size.
bool HasOwnName(std::string text) {
  constexpr std::string_view kOwnNames[] = {"tlv_rdv", "tolvane", "orvant", "rdvhost"};
  std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return std::any_of(std::begin(kOwnNames), std::end(kOwnNames),
                     [&](std::string_view name) { return text.find(name) != std::string::npos; });
}

}  // namespace

std::set<std::string> WrittenBetween(const Snapshot& before, const Snapshot& after) {
  std::set<std::string> names;
  for (const auto& [name, digest] : after) {
    const auto then = before.find(name);
    if (then == before.end() || then->second != digest) names.insert(name);
  }
  return names;
}

Traces SortTraces(const std::vector<std::string>& differences,
                  const std::set<std::string>& written) {
  Traces traces;
  for (const std::string& line : differences) {
    const std::string name = line.substr(line.find(' ') + 1);
    const bool own = HasOwnName(name) || written.contains(name);
    (own ? traces.ours : traces.others).push_back(line);
  }
  return traces;
}

std::vector<std::string> Differences(const Snapshot& before, const Snapshot& after) {
  std::map<std::string, std::string> found;
  for (const auto& [name, digest] : before) {
    const auto now = after.find(name);
    if (now == after.end()) {
      found[name] = "gone " + name;
    } else if (now->second != digest) {
      found[name] = "changed " + name;
    }
  }
  for (const auto& [name, digest] : after) {
    if (!before.contains(name)) found[name] = "added " + name;
  }
  std::vector<std::string> lines;
  for (const auto& [name, line] : found) lines.push_back(line);
  return lines;
}

uint64_t Digest(uint64_t before, const void* bytes, size_t size) {
  constexpr uint64_t kPrime = 0x100000001b3;
  const auto* byte = static_cast<const unsigned char*>(bytes);
  for (size_t i = 0; i < size; ++i) before = (before ^ byte[i]) * kPrime;
  return before;
}

std::vector<Finding> CompareRuns(const fs::path& one, const fs::path& other,
                                 const ContentsOfDatabase& contents) {
  std::set<std::string> names = ScenariosIn(one);
  names.merge(ScenariosIn(other));
  std::vector<Finding> findings;
  for (const std::string& name : names) {
    const std::string difference = Difference(name, one, other, contents);
    findings.push_back({difference.empty() ? Outcome::Passed : Outcome::Failed, name, difference});
  }
  return findings;
}

std::vector<fs::path> FilesOf(const fs::path& folder, std::string_view extension) {
  std::vector<fs::path> files;
  std::error_code none;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
    if (entry.path().extension() == extension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string BytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace rdv::verify
