// What is stored of a unit and could not have been chosen in the control, or cannot be shown by it.
#pragma once

#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "rules/editors.h"
#include "tools/lines/unit.h"

namespace rdv::lines {

struct Finding {
  int16_t config = 0;
  int16_t line = 0;       // 0 for the unit as a whole
  int column = 0;         // of the grid; 0 for the line as a whole
  const char* kind = "";  // in JSON and in counts; one word for one rule
  Text value;             // what is stored
  Text why;               // a sentence without its stop

  bool operator==(const Finding&) const = default;
};

// Which choices the editors offer for lines of one type.
struct OfferedChoices {
  std::vector<Choice> volumes;
  std::vector<Code> modes;
};

// What all units of a site are held against. Made inside a Reading or a Writing, with the reader
// that the units come from.
class SiteRules {
 public:
  SiteRules(SiteSession& session, UnitReader& reader);

  // In the order of lines, and of columns within a line. The unit is the one that the reader has
  // read last.
  std::vector<Finding> Check(const Unit& unit) const;

  const OfferedChoices& OffersFor(Code line_type) const;
  // The highest number of a node type in a partition; nothing where the site does not say it, and
  // the control offers no number.
  std::optional<int32_t> HighestNodeNumber(int16_t config, int32_t partition, int32_t type) const;
  // The highest one that any list of the unit offers; 0 where there is none.
  int32_t HighestNodeNumber(int16_t config) const;
  // What the control shows for a stored volume.
  Text StoredVolume(Code volume, Code line_type) const;
  const UnitReader& Reader() const { return reader_; }

 private:
  UnitReader& reader_;
  std::map<Code, OfferedChoices> offers_;  // by line type
  std::map<std::tuple<int16_t, int32_t, int32_t>, int32_t> highest_numbers_;
  std::map<int16_t, int32_t> highest_of_unit_;
  mutable std::map<std::pair<Code, Code>, Text> volume_captions_;  // as they were asked for
};

}  // namespace rdv::lines
