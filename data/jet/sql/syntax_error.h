// A syntax error that knows its place in the statement.
#pragma once

#include <cstddef>
#include <utility>

#include "data/jet/format/errors.h"
#include "runtime/error.h"

namespace rdv::jet::sql {

// Number, description and source are those of every syntax error of the engine; what is only here
// is for programs that show the statement to the one who wrote it.
class SyntaxError : public RuntimeError {
 public:
  SyntaxError(Text description, Text unexpected, size_t position)
      : RuntimeError(static_cast<int32_t>(ErrorNumber::Syntax), std::move(description),
                     Text(kEngineSource)),
        unexpected_(std::move(unexpected)),
        position_(position) {}

  // The word or sign that was not expected, as it was written; empty at the end of the statement.
  const Text& Unexpected() const { return unexpected_; }
  // Of its beginning, in UTF-16 units from 0.
  size_t Position() const { return position_; }

 private:
  Text unexpected_;
  size_t position_;
};

}  // namespace rdv::jet::sql
