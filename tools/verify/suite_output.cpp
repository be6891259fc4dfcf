#include "tools/verify/suite_output.h"

#include <algorithm>
#include <optional>
#include <string>

namespace rdv::verify {
namespace {

constexpr std::string_view kBegun = "[ RUN      ] ";
constexpr std::string_view kTotal = "[==========] ";
constexpr std::string_view kSkipMark = ": Skipped";
constexpr std::string_view kProgramSkipped = "skipped: ";
constexpr unsigned kSkippedCode = 77;  // as CTest knows it

struct Ending {
  std::string_view mark;
  Outcome outcome;
};
constexpr Ending kEndings[] = {{"[       OK ] ", Outcome::Passed},
                               {"[  FAILED  ] ", Outcome::Failed},
                               {"[  SKIPPED ] ", Outcome::Skipped}};

std::string_view Stripped(std::string_view line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.remove_suffix(1);
  return line;
}

class OutputReader {
 public:
  explicit OutputReader(std::string_view printed) {
    while (!printed.empty() && !ended_) {
      const size_t end = std::min(printed.find('\n'), printed.size() - 1) + 1;
      Take(Stripped(printed.substr(0, end)));
      printed.remove_prefix(end);
    }
  }

  bool Ended() const { return ended_; }
  const std::optional<std::string>& SkippedAsAWhole() const { return program_skipped_; }

  std::vector<Finding> TakeFindings() {
    // The program went away inside of it.
    if (test_) findings_.push_back({Outcome::Failed, *test_, "did not end\n" + text_});
    return std::move(findings_);
  }

 private:
  void Take(std::string_view line) {
    if (line.starts_with(kBegun)) {
      test_ = line.substr(kBegun.size());
      text_.clear();
      return;
    }
    if (!test_) {
      if (line.starts_with(kProgramSkipped)) program_skipped_ = line.substr(kProgramSkipped.size());
      ended_ = line.starts_with(kTotal) && line.find(" ran.") != std::string_view::npos;
      return;
    }
    for (const Ending& ending : kEndings) {
      const size_t at = line.find(std::string(ending.mark) + *test_);
      if (at == std::string_view::npos) continue;
      text_ += line.substr(0, at);
      End(ending.outcome);
      return;
    }
    (text_ += line) += '\n';
  }

  void End(Outcome outcome) {
    const size_t skip = outcome == Outcome::Skipped ? text_.find(kSkipMark) : std::string::npos;
    if (skip != std::string::npos) text_.erase(0, skip + kSkipMark.size());
    if (outcome == Outcome::Passed) text_.clear();
    const size_t begin = std::min(text_.find_first_not_of("\r\n"), text_.size());
    const size_t end = text_.find_last_not_of("\r\n");
    findings_.push_back(
        {outcome, *test_, end == std::string::npos ? "" : text_.substr(begin, end + 1 - begin)});
    test_.reset();
  }

  std::vector<Finding> findings_;
  std::optional<std::string> test_;  // that has begun and not ended
  std::string text_;                 // what it has printed
  std::optional<std::string> program_skipped_;
  bool ended_ = false;
};

bool AnyFailed(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& each) { return each.outcome == Outcome::Failed; });
}

}  // namespace

std::vector<Finding> FindingsOf(std::string_view printed, unsigned exit_code) {
  OutputReader reader(printed);
  std::vector<Finding> findings = reader.TakeFindings();
  const std::string code = "exit code " + std::to_string(exit_code);
  if (exit_code == kSkippedCode && reader.SkippedAsAWhole() && findings.empty()) {
    findings.push_back({Outcome::Skipped, "the whole program", *reader.SkippedAsAWhole()});
  } else if (!reader.Ended()) {
    constexpr size_t kTail = 2000;
    const std::string_view tail = printed.substr(printed.size() - std::min(printed.size(), kTail));
    findings.push_back({Outcome::Failed, "the program",
                        "did not come to its end; " + code + "\n" + std::string(tail)});
  } else if ((exit_code != 0) != AnyFailed(findings)) {
    findings.push_back({Outcome::Failed, "the program", "its tests do not explain its " + code});
  } else if (findings.empty()) {
    findings.push_back({Outcome::Skipped, "the whole program", "no test of it was chosen"});
  }
  return findings;
}

}  // namespace rdv::verify
