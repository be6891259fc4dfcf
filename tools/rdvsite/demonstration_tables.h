// The tables of the configuration database and what the reference tables of the demonstration site
// hold.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "runtime/text.h"

namespace rdv {

// All ten, in the order in which they are made.
std::vector<jet::TableSpec> ConfigurationTables();

struct CodeName {
  int16_t code;
  TextView name;
};
struct CodePair {
  int16_t card_type;
  int16_t code;
};

std::span<const CodeName> CardTypeNames();
std::span<const CodeName> NodeTypeNames();
std::span<const CodeName> ModeTypeNames();
std::span<const CodePair> AllowedModes();
std::span<const CodePair> AllowedVolumes();

// The name of a code in one of the lists above, "" for a code that is not there.
TextView NameOf(std::span<const CodeName> names, int16_t code);

}  // namespace rdv
