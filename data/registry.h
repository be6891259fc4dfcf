// Values of the Windows registry. Windows only.
#pragma once

#ifdef _WIN32

#include <cstdint>
#include <variant>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv {

inline constexpr uint32_t kLocalMachine = 0x80000002;  // HKEY_LOCAL_MACHINE
inline constexpr uint32_t kCurrentUser = 0x80000001;   // HKEY_CURRENT_USER

// monostate: no value and no default.
using RegistryValue = std::variant<std::monostate, Text, Binary, int32_t>;

// Texts come as stored: environment references stay unexpanded, and the separators (U+0000) of a
// list of texts stay in it. Gives `otherwise` when the key or the value is absent. Raises 1001 for
// types other than texts, lists of texts, binary data and 32-bit numbers.
RegistryValue ReadRegistryValue(uint32_t root, TextView key_path, TextView value_name,
                                RegistryValue otherwise = {});

}  // namespace rdv

#endif
