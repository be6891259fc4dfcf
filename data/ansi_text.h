// Text in the code page of the Windows system, as the functions with "A" at the end of their names
// take and give it. Windows only.
#pragma once

#ifdef _WIN32

#include <string>
#include <string_view>

#include "runtime/text.h"

namespace rdv {

Text FromAnsi(std::string_view bytes);

// Characters that the code page lacks become its replacement character.
std::string ToAnsi(TextView text);

}  // namespace rdv

#endif
