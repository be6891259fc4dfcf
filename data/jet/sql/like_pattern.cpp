#include "data/jet/sql/like_pattern.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "data/jet/format/errors.h"

namespace rdv::jet::sql {

LikePattern::LikePattern(TextView pattern) {
  using Kind = Element::Kind;
  const Text units = UpperCase(pattern);
  for (size_t i = 0; i < units.size(); ++i) {
    Element& element = elements_.emplace_back();
    if (units[i] == u'%') {
      element.kind = Kind::AnyRun;
    } else if (units[i] != u'[' && units[i] != u'_') {
      element = {Kind::OneOf, {{units[i], units[i]}}};
    } else if (units[i] == u'[') {
      const size_t end = units.find(u']', i + 1);
      if (end == Text::npos) RaiseSyntaxError(u"Invalid pattern string.");
      TextView list = TextView{units}.substr(i + 1, end - i - 1);
      i = end;
      if (list.empty()) {  // as if it were not there
        elements_.pop_back();
        continue;
      }
      element.kind = list.starts_with(u'!') ? Kind::NoneOf : Kind::OneOf;
      if (element.kind == Kind::NoneOf) list.remove_prefix(1);
      while (!list.empty()) {
        const bool range = list.size() >= 3 && list[1] == u'-';
        element.ranges.push_back({list[0], range ? list[2] : list[0]});
        list.remove_prefix(range ? 3 : 1);
      }
    }
  }
}

bool LikePattern::Element::Takes(char16_t unit) const {
  if (kind == Kind::AnyOne) return true;
  const bool listed = std::ranges::any_of(
      ranges, [unit](const Range& range) { return range.first <= unit && unit <= range.last; });
  return listed == (kind == Kind::OneOf);
}

// A run takes as little as it can; where the rest does not match, the last run takes one more.
bool LikePattern::Matches(TextView text) const {
  size_t unit = 0;
  size_t element = 0;
  size_t run = elements_.size();  // the last one that was met, none yet
  size_t after_run = 0;           // what it has left over
  for (;;) {
    if (element < elements_.size() && elements_[element].kind == Element::Kind::AnyRun) {
      run = element++;
      after_run = unit;
    } else if (unit < text.size() && element < elements_.size() &&
               elements_[element].Takes(UpperCase(text[unit]))) {
      ++element;
      ++unit;
    } else if (unit == text.size() && element == elements_.size()) {
      return true;
    } else if (run == elements_.size() || after_run == text.size()) {
      return false;
    } else {
      element = run + 1;
      unit = ++after_run;
    }
  }
}

}  // namespace rdv::jet::sql
