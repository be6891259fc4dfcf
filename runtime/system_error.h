// The operating system's own words for its errors.
#pragma once

#include <cstdint>

#include "runtime/text.h"

namespace rdv {

// The text of an error number of the system (errno; on Windows that of GetLastError or a result
// code), in the user's language where the system has it, without a stop and without a line break. A
// number that the system has no text for gives "error NUMBER".
Text SystemErrorText(uint32_t error);

}  // namespace rdv
