// What one control remembers between its events.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "rules/business_rules.h"
#include "rules/line_codes.h"
#include "runtime/error.h"
#include "runtime/keyed_collection.h"
#include "runtime/text.h"

namespace rdv {

struct ControlState {
  Business_Rules BusinessRules;

  // Empty while no loading step has failed; each one that fails appends its block.
  Text LoadErrorText;

  // While the lists are loaded: what the first said whom others kept from the database. The rest
  // do not wait again to say the same.
  std::optional<RuntimeError> FileInUse;

  // Captions by the decimal text of their code.
  KeyedCollection CardTypes;
  KeyedCollection PartitionList;
  KeyedCollection NodeNames;
  KeyedCollection ModeNames;

  bool ChinaImpedanceImplemented = false;

  // The line type that the list of starting nodes was filled for.
  std::optional<Code> StartNodeListLineType;

  // Node number of the last music-on-hold line made from the template: 1, 2, 1, 2, ... It carries
  // over from one "Restore Default" to the next.
  int16_t MohNodeCounter = 0;

  // A cell is being opened by keyboard: the editors take the row's values, and nothing is written.
  bool OpensByKeyboard = false;

  // ACD_Option as it was read, by line number: no editor shows it, so saving has to give it back.
  std::map<int32_t, Text> AcdOptions;
};

}  // namespace rdv
