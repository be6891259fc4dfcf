// The patterns of LIKE, as the platform's data access knows them:
//
//   %       any characters, also none
//   _       any one character
//   [abc]   one of these, [a-z] one from the first to the last, [!abc] none of these
//
// All else stands for itself, without regard to case.
#pragma once

#include <vector>

#include "runtime/text.h"

namespace rdv::jet::sql {

class LikePattern {
 public:
  LikePattern() = default;
  // Raises "Invalid pattern string." for brackets that are not closed.
  explicit LikePattern(TextView pattern);

  bool Matches(TextView text) const;

 private:
  struct Range {
    char16_t first = 0;
    char16_t last = 0;
  };
  struct Element {
    enum class Kind { AnyRun, AnyOne, OneOf, NoneOf } kind = Kind::AnyOne;
    std::vector<Range> ranges;

    bool Takes(char16_t unit) const;
  };

  std::vector<Element> elements_;
};

}  // namespace rdv::jet::sql
