#include "component/registration.h"

#include <algorithm>
#include <string>
#include <vector>

#include "component/boundary.h"
#include "component/identifiers.h"
#include "component/module.h"
#include "component/registry_changes.h"

// Missing from the compiler's headers.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help_folder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale,
                                        SYSKIND system);
}

namespace rdv {
namespace {

constexpr const wchar_t* kClassesKey = L"Software\\Classes";
constexpr const wchar_t* kVersionedName = L"TLV_RDV_Line_Config.ucRDVLineConfig.1";
constexpr const wchar_t* kControlCategory = L"{40FC6ED4-2438-11CF-A3DB-080036F12502}";
constexpr const wchar_t* kScopeVariable = L"RDV_REGISTRATION";

#ifdef _WIN64
constexpr REGSAM kOtherWordSize = KEY_WOW64_32KEY;
#else
constexpr REGSAM kOtherWordSize = KEY_WOW64_64KEY;
#endif

struct Scope {
  HKEY root;
  const wchar_t* name;  // in the environment variable
  bool per_user;
};
const Scope kMachine = {HKEY_LOCAL_MACHINE, L"machine", false};
const Scope kUser = {HKEY_CURRENT_USER, L"user", true};

std::wstring ToText(REFGUID id) {
  wchar_t text[40] = L"";
  StringFromGUID2(id, text, 40);
  return text;
}

std::wstring ClassPath() {
  return L"CLSID\\" + ToText(kLineConfigClassId);
}

// In the order in which the scopes are tried.
std::vector<Scope> Scopes() {
  wchar_t asked[16] = L"";
  GetEnvironmentVariableW(kScopeVariable, asked, 16);
  for (const Scope& scope : {kMachine, kUser}) {
    if (lstrcmpiW(asked, scope.name) == 0) return {scope};
  }
  return {kMachine, kUser};
}

struct Entry {
  std::wstring path;
  std::wstring name;
  std::wstring value;
};

std::vector<Entry> Entries() {
  const std::wstring module = ModulePath();
  const std::wstring clsid = ToText(kLineConfigClassId);
  const std::wstring key = ClassPath();
  const std::wstring independent = kClassName;
  const std::wstring versioned = kVersionedName;
  return {
      {key, L"", kUserClassName},
      {key + L"\\InprocServer32", L"", module},  // never in quotes: old hosts take them literally
      {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {key + L"\\ProgID", L"", versioned},
      {key + L"\\VersionIndependentProgID", L"", independent},
      {key + L"\\Control", L"", L""},
      {key + L"\\Programmable", L"", L""},
      {key + L"\\MiscStatus", L"", L"0"},
      {key + L"\\MiscStatus\\1", L"", std::to_wstring(kMiscStatus)},
      {key + L"\\ToolboxBitmap32", L"", module + L", " + std::to_wstring(kToolboxBitmapResource)},
      {key + L"\\TypeLib", L"", ToText(kTypeLibraryId)},
      {key + L"\\Version", L"", L"1.0"},
      {key + L"\\Verb", L"", L""},
      {key + L"\\Verb\\0", L"", L"&Edit,0,2"},
      {key + L"\\Implemented Categories\\" + kControlCategory, L"", L""},
      {versioned, L"", kUserClassName},
      {versioned + L"\\CLSID", L"", clsid},
      {independent, L"", kUserClassName},
      {independent + L"\\CLSID", L"", clsid},
      {independent + L"\\CurVer", L"", versioned},
  };
}

HRESULT RegisterTypes(bool per_user) {
  ComPointer<ITypeLib> library;
  const HRESULT result = LoadOwnTypeLibrary(library);
  if (FAILED(result)) return result;
  std::wstring path = ModulePath();
  return per_user ? RegisterTypeLibForUser(library.Get(), path.data(), nullptr)
                  : RegisterTypeLib(library.Get(), path.data(), nullptr);
}

HRESULT UnregisterTypes(bool per_user) {
#ifdef _WIN64
  constexpr SYSKIND kSystem = SYS_WIN64;
#else
  constexpr SYSKIND kSystem = SYS_WIN32;
#endif
  const auto unregister = per_user ? &UnRegisterTypeLibForUser : &UnRegisterTypeLib;
  return unregister(kTypeLibraryId, kTypeLibraryMajor, kTypeLibraryMinor, LOCALE_NEUTRAL, kSystem);
}

HRESULT RegisterIn(const Scope& scope) {
  HKEY classes = nullptr;
  const LSTATUS status = RegCreateKeyExW(scope.root, kClassesKey, 0, nullptr, 0,
                                         KEY_READ | KEY_WRITE, nullptr, &classes, nullptr);
  if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  HRESULT result = S_OK;
  {
    RegistryChanges changes(classes);
    for (const Entry& entry : Entries()) {
      result = changes.SetValue(entry.path, entry.name, entry.value);
      if (FAILED(result)) break;
    }
    if (SUCCEEDED(result)) result = RegisterTypes(scope.per_user);
    if (SUCCEEDED(result)) changes.Commit();
  }
  RegCloseKey(classes);
  if (FAILED(result)) UnregisterTypes(scope.per_user);
  return result;
}

bool Exists(HKEY base, const std::wstring& path, REGSAM view) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(base, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

HRESULT RemoveTree(HKEY base, const std::wstring& path) {
  const LSTATUS status = RegDeleteTreeW(base, path.c_str());
  if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) return S_OK;
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT UnregisterIn(const Scope& scope) {
  const std::wstring class_path = std::wstring(kClassesKey) + L"\\" + ClassPath();
  if (!Exists(scope.root, class_path, 0)) return S_OK;
  std::vector<std::wstring> paths = {class_path};
  // The names lead to both word sizes.
  if (!Exists(scope.root, class_path, kOtherWordSize)) {
    for (const wchar_t* name : {kVersionedName, kClassName}) {
      paths.push_back(std::wstring(kClassesKey) + L"\\" + name);
    }
  }
  HRESULT result = UnregisterTypes(scope.per_user);
  if (result == TYPE_E_REGISTRYACCESS) result = S_OK;  // nothing of it was there
  for (const std::wstring& path : paths) {
    const HRESULT removed = RemoveTree(scope.root, path);
    if (SUCCEEDED(result)) result = removed;
  }
  return result;
}

}  // namespace

HRESULT RegisterComponent() {
  return AtBoundary([] {
    HRESULT result = E_FAIL;
    for (const Scope& scope : Scopes()) {
      result = RegisterIn(scope);
      if (result != E_ACCESSDENIED && result != TYPE_E_REGISTRYACCESS) break;
    }
    if (result == E_ACCESSDENIED) return SELFREG_E_CLASS;
    return result == TYPE_E_REGISTRYACCESS ? SELFREG_E_TYPELIB : result;
  });
}

HRESULT UnregisterComponent() {
  return AtBoundary([] {
    HRESULT result = S_OK;
    for (const Scope& scope : Scopes()) {
      const HRESULT removed = UnregisterIn(scope);
      if (SUCCEEDED(result)) result = removed;
    }
    return result;
  });
}

}  // namespace rdv
