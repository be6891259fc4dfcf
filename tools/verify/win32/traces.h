// What the kit may not leave changed on the machine.
#pragma once

#include "tools/verify/comparison.h"

namespace rdv::verify {

// Each key of the machine's and the user's software classes with a digest of its values, the names
// of all software that has keys of its own, and each file of the machine's site. What the shell
// notes about the user's doings among the classes is left out.
Snapshot TakeSnapshot();

// Whether the control is registered, for anybody and for programs of either word size.
bool IsRegistered();

}  // namespace rdv::verify
