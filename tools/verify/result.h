// What the kit has found out, step by step: for the report and for the exit code.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rdv::verify {

enum class Outcome { Passed, Failed, Skipped };

// "passed", "failed", "skipped".
std::string_view NameOf(Outcome outcome);

// One thing that was tried. The text says why it failed or was skipped; UTF-8.
struct Finding {
  Outcome outcome = Outcome::Passed;
  std::string name;
  std::string text;
};

struct Picture {
  std::string caption;
  std::string png;  // the file's bytes
};

struct Step {
  std::string name;  // one of those in steps.h
  int bits = 0;      // of the programs that were tried, 64 or 32; 0: of neither
  std::vector<Finding> findings;
  std::vector<Picture> pictures;

  int Count(Outcome outcome) const;
  // Failed when something failed, skipped when nothing was tried.
  Outcome Result() const;
  void Add(Outcome outcome, std::string finding, std::string text = {});
  void Check(bool passed, std::string finding, std::string text_of_failure);
};

}  // namespace rdv::verify
