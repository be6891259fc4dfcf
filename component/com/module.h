// The library as a loaded module.
#pragma once

#include <string>

#include "component/com/com_pointer.h"

namespace rdv {

HINSTANCE ModuleInstance();

// Counted: every object and every class factory lock counts once, and while there is one, the
// library must not be unloaded.
void LockModule();
void UnlockModule();
class ModuleLock {
 public:
  ModuleLock() { LockModule(); }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;
  ~ModuleLock() { UnlockModule(); }
};
bool ModuleInUse();

// The library file's full path; empty on failure.
std::wstring ModulePath();

// From the library's own resources: independent of what is registered.
HRESULT LoadOwnTypeLibrary(ComPointer<ITypeLib>& library);
HRESULT LoadOwnTypeInformation(REFGUID id, ComPointer<ITypeInfo>& information);

}  // namespace rdv
