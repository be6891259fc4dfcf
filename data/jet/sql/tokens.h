// The words and signs of a statement.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "runtime/text.h"

namespace rdv::jet::sql {

enum class TokenKind : uint8_t {
  Word,    // a keyword or a name
  Quoted,  // a name in backquotes or brackets, which is never a keyword
  Text,    // in single or double quotes, a doubled quote standing for one
  Number,
  Date,    // between "#" signs
  Symbol,  // one of = <> < <= > >= , . * ( ) ; - + / \ ^ &
  End,
};

struct Token {
  TokenKind kind = TokenKind::End;
  Text text;            // without quotes
  size_t position = 0;  // of its first unit in the statement
  size_t size = 0;      // with quotes
};

// The last token is always End. Raises a SyntaxError for a quote that is not closed and for
// characters that begin no token.
std::vector<Token> Tokenize(TextView statement);

}  // namespace rdv::jet::sql
