// Long scripts that nobody thought up.
#pragma once

#include <string>

namespace rdv::test {

// The same one for the same seed, with every library. Lengths are whole pixels at 96 dots per inch,
// so that real windows can have them exactly.
std::string RandomScript(unsigned seed, int actions);

}  // namespace rdv::test
