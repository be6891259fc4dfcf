// Parts of the registry as text, to be compared and read where they differ.
#pragma once

#include <windows.h>

#include <set>
#include <string>

namespace rdv::test {

// A line for each key at and below `path`, and one for each of its values with what it holds; none
// where there is no such key. `depth` is how many levels of keys below `path` are read.
using RegistryText = std::set<std::string>;
inline constexpr int kAllLevels = 1000;
RegistryText ReadRegistry(HKEY root, const std::wstring& path, int depth = kAllLevels,
                          REGSAM view = 0);

// What only `now` has (+) and what only `before` has (-), a line each: empty where both are equal.
std::string Difference(const RegistryText& before, const RegistryText& now);

inline constexpr const wchar_t* kClasses = L"Software\\Classes";

// Whether this process may register for the machine. On Windows only elevated ones may.
bool MachineIsOpen();
inline constexpr const char* kMachineIsClosed =
    "the machine's part of the registry is closed to this user; tried when run elevated";

// The machine's classes are many: the keys that a registration adds to are read, in both word
// sizes.
RegistryText ReadMachinesClasses();

// All that is registered for the user, and what programs look for on the machine.
struct Registry {
  RegistryText user = ReadRegistry(HKEY_CURRENT_USER, kClasses);
  RegistryText machine = ReadMachinesClasses();

  std::string Since(const Registry& before) const {
    return Difference(before.user, user) + Difference(before.machine, machine);
  }
};

}  // namespace rdv::test
