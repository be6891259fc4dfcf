// The lines of a scenario script: commands and their arguments.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/text.h"

namespace rdv::play {

// What is wrong with a line of a script.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Token {
  Text text;
  bool quoted = false;  // it was a JSON string, so it is taken as the text it stands for
};

// The tokens of a line of UTF-8, parted by blanks or tabs; none for a line that is empty or a
// comment. Raises ScriptError for a malformed JSON string.
std::vector<Token> Tokenize(std::string_view line);

}  // namespace rdv::play
