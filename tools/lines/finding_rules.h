// The single rules of a check, as a table.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "data/recordset.h"
#include "tools/lines/findings.h"

namespace rdv::lines {

// A stored line and what it is held against.
struct LineFacts {
  const Recordset& record;  // stands on the line
  int16_t config = 0;
  int16_t number = 0;
  Code line_type{0};  // the one that it is shown as
  const SiteRules& rules;

  const ControlState& State() const { return rules.Reader().State(); }
  // Nothing for Null and for what is no whole number of 32 bits.
  std::optional<int32_t> Number(TextView field) const;
  std::optional<Code> CodeIn(TextView field) const;
  // As people see it; Null is "".
  Text Stored(TextView field) const;
};

struct LineRule {
  const char* kind;
  int column;
  TextView field;  // whose value is told
  // Why the line breaks the rule; nothing when it does not, or when another rule speaks of it.
  std::optional<Text> (*broken)(const LineFacts& line);
};

// For lines of types 5, 6 and 8.
std::span<const LineRule> RulesOfInstalledLines();
// For every line.
std::span<const LineRule> RulesOfAllLines();

}  // namespace rdv::lines
