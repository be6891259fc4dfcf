// Settings text files: sections in brackets, a key and a value a line. The same rules as those of
// the Windows function for such files, so that a file means the same on every system:
//
// - sections and keys are compared without regard to case;
// - blanks and tabs around keys and values do not count, one pair of quotes around a value neither;
// - the first matching section decides, in it the first matching key;
// - a line that begins with ";" is a comment, and one without "=" is no key.
#pragma once

#include <optional>
#include <string>

#include "runtime/text.h"

namespace rdv {

// The value's bytes as they stand in the file; nothing when file, section or key is absent. Raises
// 75 for a file that is there but is no regular one, which might never end, or is larger than 64
// KB.
std::optional<std::string> FindIniValue(const Text& path, TextView section, TextView key);

#ifdef _WIN32
// Raises the same, for a file that the system's function is going to read. Reads nothing of it.
void RequireSettingsFile(const Text& path);
#endif

}  // namespace rdv
