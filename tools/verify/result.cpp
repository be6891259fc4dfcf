#include "tools/verify/result.h"

#include <algorithm>

namespace rdv::verify {

std::string_view NameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Passed:
      return "passed";
    case Outcome::Failed:
      return "failed";
    case Outcome::Skipped:
      break;
  }
  return "skipped";
}

int Step::Count(Outcome outcome) const {
  return static_cast<int>(std::count_if(findings.begin(), findings.end(), [&](const Finding& each) {
    return each.outcome == outcome;
  }));
}

Outcome Step::Result() const {
  if (Count(Outcome::Failed) > 0) return Outcome::Failed;
  return Count(Outcome::Passed) > 0 ? Outcome::Passed : Outcome::Skipped;
}

void Step::Add(Outcome outcome, std::string finding, std::string text) {
  findings.push_back({outcome, std::move(finding), std::move(text)});
}

void Step::Check(bool passed, std::string finding, std::string text_of_failure) {
  if (passed) {
    Add(Outcome::Passed, std::move(finding));
  } else {
    Add(Outcome::Failed, std::move(finding), std::move(text_of_failure));
  }
}

}  // namespace rdv::verify
