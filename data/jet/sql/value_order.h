// The order of values, as conditions and ORDER BY know it.
#pragma once

#include "runtime/value.h"

namespace rdv::jet::sql {

// Of two values that are not Null: numbers and dates by size, texts as the engine orders them, true
// before false. Negative, zero or positive. Raises "Data type mismatch ..." for values that do not
// compare.
int CompareValues(const Value& left, const Value& right);

// The same with Null, which comes before everything else.
int CompareForOrder(const Value& left, const Value& right);

}  // namespace rdv::jet::sql
