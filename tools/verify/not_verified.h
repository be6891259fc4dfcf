// What only Windows itself can tell, as docs/testing.md lists it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rdv::verify {

struct NotVerified {
  std::string what;
  std::string why;
  std::string told_by;             // as it stands there
  std::vector<std::string> steps;  // that tell of it; none where only a person can
};

// The table below the heading "Not verified": what, why not, and what tells, in which the steps
// stand in back quotes. Throws std::runtime_error when there is no such table, or a row of another
// shape.
std::vector<NotVerified> ReadNotVerified(std::string_view document);

}  // namespace rdv::verify
