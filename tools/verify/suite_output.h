// What a test program printed, as findings.
#pragma once

#include <string_view>
#include <vector>

#include "tools/verify/result.h"

namespace rdv::verify {

// One finding for each test that was begun. A program that did not come to its end, ended with a
// code that its tests do not explain, or had no test at all, has a finding of its own that says so.
std::vector<Finding> FindingsOf(std::string_view printed, unsigned exit_code);

}  // namespace rdv::verify
