// Texts of message boxes. What a message names may come from a file that somebody made to mislead.
#pragma once

#include "runtime/text.h"

namespace rdv {

// More than any message of this product has with values as the tables' columns hold them. Of a
// longer one the beginning is shown, and an ellipsis: the buttons stay on the screen.
inline constexpr size_t kLongestMessage = 8192;
inline constexpr size_t kMostMessageLines = 80;

// The text as a box shows it. What would hide or reorder what follows it, or cannot be shown (NUL
// and other controls, overrides and isolates of the writing direction, lone surrogates), becomes
// U+FFFD; line breaks and tabs stay. What is stored is not changed by this.
Text MessageText(TextView text);

}  // namespace rdv
