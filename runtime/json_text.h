// Texts as JSON strings.
#pragma once

#include <string>

#include "runtime/text.h"

namespace rdv {

// With its quotes, in UTF-8: escaped where JSON demands it and nowhere else; but a surrogate that
// is no half of a pair, which UTF-8 cannot express, is escaped too, so that every text that a
// database may hold can be written and read back.
std::string JsonText(TextView text);

}  // namespace rdv
