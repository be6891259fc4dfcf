#include "component/com/module.h"

#include <atomic>

#include "component/com/identifiers.h"
#include "widgets/win32/form_window.h"

namespace rdv {
namespace {

HINSTANCE instance;
std::atomic<long> locks{0};

}  // namespace

HINSTANCE ModuleInstance() {
  return instance;
}

void LockModule() {
  ++locks;
}
void UnlockModule() {
  --locks;
}
bool ModuleInUse() {
  return locks != 0;
}

std::wstring ModulePath() {
  for (DWORD capacity = MAX_PATH;; capacity *= 2) {
    std::wstring path(capacity, L'\0');
    const DWORD length = GetModuleFileNameW(instance, path.data(), capacity);
    if (length < capacity) {
      path.resize(length);
      return path;
    }
  }
}

HRESULT LoadOwnTypeLibrary(ComPointer<ITypeLib>& library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Receive());
}

HRESULT LoadOwnTypeInformation(REFGUID id, ComPointer<ITypeInfo>& information) {
  ComPointer<ITypeLib> library;
  const HRESULT result = LoadOwnTypeLibrary(library);
  return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, information.Receive());
}

}  // namespace rdv

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) {
    rdv::instance = module;
    DisableThreadLibraryCalls(module);
  } else if (reason == DLL_PROCESS_DETACH && !process_ends) {
    // The classes would outlive the code of their window procedures.
    rdv::win32::UnregisterFormClasses(module);
  }
  return TRUE;
}
