// The page that the kit leaves: one file that needs no other.
#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "tools/verify/not_verified.h"
#include "tools/verify/result.h"

namespace rdv::verify {

struct Report {
  std::string began;                // date and time, as text
  std::vector<std::string> limits;  // what this run has left out by request; none: the whole
  std::vector<std::pair<std::string, std::string>> machine;  // name and value of what is known
  std::vector<Step> steps;
  std::vector<NotVerified> not_verified;
};

bool AnyFailed(const Report& report);

// In one line: whether all passed, and whether that was all.
std::string Verdict(const Report& report);

// What the machine's steps say of one row of the list: a line for each step and word size.
std::vector<std::string> ToldAbout(const NotVerified& row, const std::vector<Step>& steps);

void WriteHtml(const Report& report, std::ostream& out);

}  // namespace rdv::verify
