// The value that a column gets when an insertion does not name it.
#pragma once

#include "data/jet/format/schema.h"
#include "runtime/value.h"

namespace rdv::jet {

// The table's own default where it is a literal of the column's type: a number, a quoted text, yes
// or no. Else Null; false for a Boolean. Expressions that would have to be worked out are not.
Value DefaultValue(const Column& column);

}  // namespace rdv::jet
