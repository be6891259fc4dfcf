#include "component/registration/registration.h"

#include <algorithm>
#include <string>
#include <vector>

#include "component/com/boundary.h"
#include "component/com/identifiers.h"
#include "component/com/module.h"
#include "component/registration/registry_changes.h"
#include "runtime/environment.h"
#include "runtime/failure_log.h"

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

// What the two word sizes call themselves in the registry, below the version of a type library.
#ifdef _WIN64
constexpr REGSAM kOtherWordSize = KEY_WOW64_32KEY;
constexpr SYSKIND kOwnSystem = SYS_WIN64;
constexpr const wchar_t* kOwnSystemKey = L"\\win64";
constexpr const wchar_t* kOtherSystemKey = L"\\win32";
#else
constexpr REGSAM kOtherWordSize = KEY_WOW64_64KEY;
constexpr SYSKIND kOwnSystem = SYS_WIN32;
constexpr const wchar_t* kOwnSystemKey = L"\\win32";
constexpr const wchar_t* kOtherSystemKey = L"\\win64";
#endif

struct Scope {
  HKEY root;
  TextView name;  // in the environment variable
  bool per_user;
};
const Scope kMachine = {HKEY_LOCAL_MACHINE, u"machine", false};
const Scope kUser = {HKEY_CURRENT_USER, u"user", true};

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
  const Text asked = ValueOf(EnvironmentVariable::Registration);
  for (const Scope& scope : {kMachine, kUser}) {
    if (EqualsIgnoringCase(asked, scope.name)) return {scope};
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
      {key + L"\\Verb\\0", L"", kEditVerbName + (L",0," + std::to_wstring(kEditVerbAttributes))},
      {key + L"\\Implemented Categories\\" + kControlCategory, L"", L""},
      {versioned, L"", kUserClassName},
      {versioned + L"\\CLSID", L"", clsid},
      {independent, L"", kUserClassName},
      {independent + L"\\CLSID", L"", clsid},
      {independent + L"\\CurVer", L"", versioned},
  };
}

HRESULT UnregisterTypes(bool per_user) {
  const auto unregister = per_user ? &UnRegisterTypeLibForUser : &UnRegisterTypeLib;
  return unregister(kTypeLibraryId, kTypeLibraryMajor, kTypeLibraryMinor, LOCALE_NEUTRAL,
                    kOwnSystem);
}

bool TypesAreRegistered() {
  BSTR path = nullptr;
  const HRESULT found = QueryPathOfRegTypeLib(kTypeLibraryId, kTypeLibraryMajor, kTypeLibraryMinor,
                                              LOCALE_NEUTRAL, &path);
  SysFreeString(path);
  return SUCCEEDED(found);
}

bool Exists(HKEY base, const std::wstring& path, REGSAM view) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(base, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

struct TypeKey {
  std::wstring path;
  REGSAM view;
};

// What registering the types would add: the systems do not take half of it away again themselves.
std::vector<TypeKey> MissingTypeKeys(ITypeLib& library, HKEY root) {
  const std::wstring classes = std::wstring(kClassesKey) + L"\\";
  const std::wstring types = classes + L"TypeLib\\" + ToText(kTypeLibraryId);
  std::vector<TypeKey> keys = {{types + L"\\1.0\\0" + kOwnSystemKey, 0}, {types, 0}};
  for (UINT index = 0; index < library.GetTypeInfoCount(); ++index) {
    ComPointer<ITypeInfo> type;
    TYPEATTR* attributes = nullptr;
    if (FAILED(library.GetTypeInfo(index, type.Receive()))) continue;
    if (FAILED(type->GetTypeAttr(&attributes))) continue;
    const std::wstring path = classes + L"Interface\\" + ToText(attributes->guid);
    const TYPEKIND kind = attributes->typekind;
    type->ReleaseTypeAttr(attributes);
    if (kind != TKIND_INTERFACE && kind != TKIND_DISPATCH) continue;
    keys.push_back({path, KEY_WOW64_64KEY});
    keys.push_back({path, KEY_WOW64_32KEY});
  }
  std::erase_if(keys, [&](const TypeKey& key) { return Exists(root, key.path, key.view); });
  return keys;
}

void Remove(HKEY root, const TypeKey& type_key) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, type_key.path.c_str(), 0, KEY_READ | KEY_WRITE | DELETE | type_key.view,
                    &key) != ERROR_SUCCESS) {
    return;
  }
  RegDeleteTreeW(key, nullptr);
  RegCloseKey(key);
  RegDeleteKeyExW(root, type_key.path.c_str(), type_key.view, 0);
}

// Half of a type library's entries is taken away again; those of an earlier registration stay.
HRESULT RegisterTypes(const Scope& scope) {
  ComPointer<ITypeLib> library;
  HRESULT result = LoadOwnTypeLibrary(library);
  if (FAILED(result)) return result;
  const bool there_before = TypesAreRegistered();
  const std::vector<TypeKey> missing = MissingTypeKeys(*library.Get(), scope.root);
  std::wstring path = ModulePath();
  result = scope.per_user ? RegisterTypeLibForUser(library.Get(), path.data(), nullptr)
                          : RegisterTypeLib(library.Get(), path.data(), nullptr);
  if (SUCCEEDED(result)) return result;
  if (!there_before) UnregisterTypes(scope.per_user);
  for (const TypeKey& key : missing) Remove(scope.root, key);
  return result;
}

// The result that installers expect for a step of the registration. What is wrong with the machine
// rather than with the registry is told as it is.
HRESULT Translated(HRESULT result, HRESULT of_the_step) {
  const bool of_the_machine = result == E_OUTOFMEMORY || result == E_UNEXPECTED;
  return SUCCEEDED(result) || of_the_machine ? result : of_the_step;
}

struct Outcome {
  HRESULT result;
  bool denied;  // the caller lacks the rights
};

Outcome OutcomeOf(HRESULT result, HRESULT of_the_step) {
  return {Translated(result, of_the_step), result == E_ACCESSDENIED};
}

// The system tells nothing of why it could not register types; the key that they go to does. It is
// not left behind: some systems keep what is registered for one user with the machine's.
HRESULT TryKeyOfTypes(HKEY classes) {
  return RegistryChanges(classes).CreateKey(L"TypeLib\\" + ToText(kTypeLibraryId));
}

Outcome Write(RegistryChanges& changes, HKEY classes, const Scope& scope) {
  for (const Entry& entry : Entries()) {
    const HRESULT written = changes.SetValue(entry.path, entry.name, entry.value);
    if (FAILED(written)) return OutcomeOf(written, SELFREG_E_CLASS);
  }
  const HRESULT possible = TryKeyOfTypes(classes);
  return OutcomeOf(FAILED(possible) ? possible : RegisterTypes(scope), SELFREG_E_TYPELIB);
}

Outcome RegisterIn(const Scope& scope) {
  HKEY classes = nullptr;
  const LSTATUS status = RegCreateKeyExW(scope.root, kClassesKey, 0, nullptr, 0,
                                         KEY_READ | KEY_WRITE, nullptr, &classes, nullptr);
  if (status != ERROR_SUCCESS) {
    return OutcomeOf(HRESULT_FROM_WIN32(static_cast<DWORD>(status)), SELFREG_E_CLASS);
  }
  Outcome outcome = {S_OK, false};
  {
    RegistryChanges changes(classes);
    outcome = Write(changes, classes, scope);
    if (SUCCEEDED(outcome.result)) changes.Commit();
  }
  RegCloseKey(classes);
  return outcome;
}

HRESULT RemoveTree(HKEY base, const std::wstring& path) {
  const LSTATUS status = RegDeleteTreeW(base, path.c_str());
  if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) return S_OK;
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

// The first class registered for a user makes the list of classes; the last one takes it away.
void RemoveIfEmpty(HKEY base, const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(base, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  DWORD keys = 0;
  DWORD values = 0;
  const LSTATUS counted = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                           &values, nullptr, nullptr, nullptr, nullptr);
  RegCloseKey(key);
  if (counted == ERROR_SUCCESS && keys == 0 && values == 0) {
    RegDeleteKeyExW(base, path.c_str(), 0, 0);
  }
}

HRESULT RemoveTypes(const Scope& scope) {
  const std::wstring types = std::wstring(kClassesKey) + L"\\TypeLib\\" + ToText(kTypeLibraryId);
  const std::wstring systems = types + L"\\1.0\\0";
  // The system would take away the interfaces too, for both word sizes. As long as one of them is
  // there they stay.
  if (Exists(scope.root, systems + kOtherSystemKey, 0)) {
    return RemoveTree(scope.root, systems + kOwnSystemKey);
  }
  // Some systems keep what is registered for one user with the machine's.
  if (!Exists(scope.root, types, 0) && !(scope.per_user && TypesAreRegistered())) return S_OK;
  const HRESULT removed = UnregisterTypes(scope.per_user);
  // The system says the same of types that are not there, of a user's own or of this word size, and
  // of those that the caller may not take away.
  const bool still_there = Exists(scope.root, systems + kOwnSystemKey, 0);
  return removed == TYPE_E_REGISTRYACCESS && !still_there ? S_OK : removed;
}

// Goes on after a failure; gives the first one. What is not there counts as taken away, so that the
// rest of a damaged registration goes too.
HRESULT UnregisterIn(const Scope& scope) {
  const std::wstring classes = std::wstring(kClassesKey) + L"\\";
  const std::wstring class_path = classes + ClassPath();
  HRESULT result = Translated(RemoveTree(scope.root, class_path), SELFREG_E_CLASS);
  // The names lead to both word sizes. Asked for only now: on a system of one word size both views
  // are one, and the class above was the only one.
  if (!Exists(scope.root, class_path, kOtherWordSize)) {
    for (const wchar_t* name : {kVersionedName, kClassName}) {
      const HRESULT removed = Translated(RemoveTree(scope.root, classes + name), SELFREG_E_CLASS);
      if (SUCCEEDED(result)) result = removed;
    }
  }
  if (scope.per_user) RemoveIfEmpty(scope.root, classes + L"CLSID");
  const HRESULT removed = Translated(RemoveTypes(scope), SELFREG_E_TYPELIB);
  if (SUCCEEDED(result)) result = removed;
  return result;
}

HRESULT Logged(TextView step, HRESULT result) {
  if (FAILED(result)) {
    char16_t digits[] = u"00000000";
    for (int i = 0; i < 8; ++i)
      digits[i] = u"0123456789ABCDEF"[static_cast<uint32_t>(result) >> (28 - 4 * i) & 0xF];
    LogFailure(Text(step) + u" failed: 0x" + digits);
  }
  return result;
}

}  // namespace

HRESULT RegisterComponent() {
  return AtBoundary([] {
    Outcome outcome = {E_FAIL, false};
    // The machine's registry may be closed to the caller: the caller's own is next. Whoever may
    // write there and failed is told so.
    for (const Scope& scope : Scopes()) {
      outcome = RegisterIn(scope);
      if (!outcome.denied) break;
    }
    return Logged(u"Registering", outcome.result);
  });
}

HRESULT UnregisterComponent() {
  return AtBoundary([] {
    HRESULT result = S_OK;
    for (const Scope& scope : Scopes()) {
      const HRESULT removed = UnregisterIn(scope);
      if (SUCCEEDED(result)) result = removed;
    }
    return Logged(u"Taking out of the registry", result);
  });
}

}  // namespace rdv
