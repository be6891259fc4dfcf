// What a misspelt word was meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace rdv::tools {

// The one of `known` that is nearest to `word`: a few letters exchanged, left out, doubled or
// wrong, or the only one that begins with it. "" when none is near.
std::string Nearest(std::string_view word, std::span<const std::string> known);

}  // namespace rdv::tools
