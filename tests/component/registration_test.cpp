// Registering and unregistering the library, and what containers find in between.
#include <gtest/gtest.h>

#include <set>

#include "component/com/identifiers.h"
#include "component/registration/registry_changes.h"
#include "tests/component/support/library.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/patched_import.h"
#include "tests/component/support/registry_text.h"

namespace rdv::test {
namespace {

std::wstring ToText(REFGUID id) {
  wchar_t text[40] = L"";
  StringFromGUID2(id, text, 40);
  return text;
}

// Every key at and below the places that a registration writes to: the names under Classes, and
// all that lies below our own identifiers.
void AddKeys(HKEY root, const std::wstring& path, int depth, std::set<std::wstring>& keys) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  wchar_t name[256] = L"";
  DWORD size = 256;
  for (DWORD index = 0;
       RegEnumKeyExW(key, index, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++index, size = 256) {
    keys.insert(path + L"\\" + name);
    if (depth > 1) AddKeys(root, path + L"\\" + name, depth - 1, keys);
  }
  RegCloseKey(key);
}

std::set<std::wstring> Snapshot() {
  std::set<std::wstring> keys;
  for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
    const std::wstring classes = kClasses;
    AddKeys(root, classes, 1, keys);
    for (const wchar_t* below : {L"\\CLSID", L"\\Interface", L"\\TypeLib"}) {
      AddKeys(root, classes + below, 1, keys);
    }
  }
  return keys;
}

std::wstring Value(const std::wstring& path, const wchar_t* name = nullptr) {
  wchar_t value[512] = L"";
  DWORD size = sizeof value;
  const std::wstring full = std::wstring(kClasses) + L"\\" + path;
  if (RegGetValueW(HKEY_LOCAL_MACHINE, full.c_str(), name, RRF_RT_REG_SZ, nullptr, value, &size)) {
    return L"(absent)";
  }
  return value;
}

class Registration : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    if (!MachineIsOpen()) GTEST_SKIP() << kMachineIsClosed;
    library_.Unregister();
  }
  void TearDown() override {
    library_.Unregister();
    // What the tests created through the registry has loaded the library once more.
    CoFreeUnusedLibrariesEx(0, 0);
  }
  Library library_;
};

// The machine's rights for an account that is not elevated, as this test program itself meets them.
using OpenKey = LSTATUS WINAPI(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY);
LSTATUS WINAPI OpenToReadOnly(HKEY root, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) {
  if (root == HKEY_LOCAL_MACHINE && (access & KEY_SET_VALUE) != 0) return ERROR_ACCESS_DENIED;
  return ImportPatch<OpenKey>::original(root, path, options, access, key);
}

TEST(RightsToTheMachine, AreSeenBeforeATestNeedsThem) {
  const ImportPatch<OpenKey> limited(GetModuleHandleW(nullptr), "RegOpenKeyExW", &OpenToReadOnly);
  EXPECT_FALSE(MachineIsOpen());
}

TEST_F(Registration, LeavesNoKeyBehindWhenUndone) {
  const auto before = Snapshot();
  ASSERT_EQ(library_.Register(), S_OK);
  EXPECT_NE(Snapshot(), before);
  ASSERT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Snapshot(), before);
}

// A key that its maker keeps to its own lifetime cannot have a lasting one below it.
class KeyInTheWay {
 public:
  explicit KeyInTheWay(const std::wstring& path) : path_(std::wstring(kClasses) + L"\\" + path) {
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, path_.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                    KEY_ALL_ACCESS, nullptr, &key_, nullptr);
  }
  ~KeyInTheWay() {
    RegCloseKey(key_);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, path_.c_str());
  }

 private:
  const std::wstring path_;
  HKEY key_ = nullptr;
};

class OnlyIn {
 public:
  explicit OnlyIn(const wchar_t* scope) { SetEnvironmentVariableW(L"RDV_REGISTRATION", scope); }
  ~OnlyIn() { SetEnvironmentVariableW(L"RDV_REGISTRATION", nullptr); }
};

TEST_F(Registration, PutsEverythingBackWhenAStepFails) {
  const OnlyIn machine(L"machine");
  const KeyInTheWay in_the_way(L"TLV_RDV_Line_Config.ucRDVLineConfig");
  const auto before = Snapshot();
  EXPECT_EQ(library_.Register(), SELFREG_E_CLASS);
  EXPECT_EQ(Snapshot(), before);
}

// Who may write to the machine's registry and fails is told so, and does not find the control
// registered elsewhere.
TEST_F(Registration, DoesNotGoToTheUserForWhatIsNoMatterOfRights) {
  for (const std::wstring& name : {std::wstring(L"TLV_RDV_Line_Config.ucRDVLineConfig"),
                                   L"TypeLib\\" + ToText(kTypeLibraryId)}) {
    const KeyInTheWay in_the_way(name);
    const Registry before;
    EXPECT_EQ(library_.Register(), name[1] == L'y' ? SELFREG_E_TYPELIB : SELFREG_E_CLASS);
    EXPECT_EQ(Registry().Since(before), "");
  }
}

// A caller without rights to the machine's registry.
using CreateKey = LSTATUS WINAPI(HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM,
                                 const LPSECURITY_ATTRIBUTES, PHKEY, LPDWORD);
LSTATUS WINAPI DenyMachine(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR kind, DWORD options,
                           REGSAM access, const LPSECURITY_ATTRIBUTES security, PHKEY key,
                           LPDWORD disposition) {
  if (root == HKEY_LOCAL_MACHINE) return ERROR_ACCESS_DENIED;
  return PatchedImport<CreateKey>::original(root, path, reserved, kind, options, access, security,
                                            key, disposition);
}
LSTATUS WINAPI DenyAll(HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM, const LPSECURITY_ATTRIBUTES,
                       PHKEY, LPDWORD) {
  return ERROR_ACCESS_DENIED;
}
// May write there, but to the types.
LSTATUS WINAPI DenyTypes(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR kind, DWORD options,
                         REGSAM access, const LPSECURITY_ATTRIBUTES security, PHKEY key,
                         LPDWORD disposition) {
  static HKEY machine = nullptr;
  if (root == machine && std::wstring(path).starts_with(L"TypeLib")) return ERROR_ACCESS_DENIED;
  const LSTATUS status = PatchedImport<CreateKey>::original(root, path, reserved, kind, options,
                                                            access, security, key, disposition);
  if (root == HKEY_LOCAL_MACHINE) machine = *key;
  if (root == HKEY_CURRENT_USER) machine = nullptr;
  return status;
}

std::wstring ServerOf(HKEY root) {
  const std::wstring path =
      std::wstring(kClasses) + L"\\CLSID\\" + ToText(kLineConfigClassId) + L"\\InprocServer32";
  wchar_t server[512] = L"";
  DWORD size = sizeof server;
  const LSTATUS found =
      RegGetValueW(root, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, server, &size);
  return found == ERROR_SUCCESS ? server : L"(absent)";
}

TEST_F(Registration, GoesToTheUserWhereTheMachineIsClosed) {
  for (CreateKey* deny : {&DenyMachine, &DenyTypes}) {
    const Registry before;
    {
      const PatchedImport<CreateKey> denied("RegCreateKeyExW", deny);
      EXPECT_EQ(library_.Register(), S_OK);
    }
    EXPECT_EQ(ServerOf(HKEY_LOCAL_MACHINE), L"(absent)");
    EXPECT_EQ(ServerOf(HKEY_CURRENT_USER), Library::Path());
    EXPECT_EQ(library_.Unregister(), S_OK);
    EXPECT_EQ(Registry().Since(before), "");
  }
}

TEST_F(Registration, FailsWhereTheMachineIsClosedAndNothingElseWasAskedFor) {
  const OnlyIn machine(L"machine");
  const Registry before;
  const PatchedImport<CreateKey> denied("RegCreateKeyExW", &DenyMachine);
  EXPECT_EQ(library_.Register(), SELFREG_E_CLASS);
  EXPECT_EQ(Registry().Since(before), "");
}

TEST_F(Registration, FailsWhereBothAreClosed) {
  const Registry before;
  const PatchedImport<CreateKey> denied("RegCreateKeyExW", &DenyAll);
  EXPECT_EQ(library_.Register(), SELFREG_E_CLASS);
  EXPECT_EQ(Registry().Since(before), "");
}

using RemoveTypeLibrary = HRESULT WINAPI(REFGUID, WORD, WORD, LCID, SYSKIND);
HRESULT WINAPI RefuseToRemove(REFGUID, WORD, WORD, LCID, SYSKIND) {
  return TYPE_E_REGISTRYACCESS;
}

TEST_F(Registration, SaysWhenTheTypesCouldNotBeTakenAway) {
  const Registry before;
  ASSERT_EQ(library_.Register(), S_OK);
  {
    const PatchedImport<RemoveTypeLibrary> refused("UnRegisterTypeLib", &RefuseToRemove);
    EXPECT_EQ(library_.Unregister(), SELFREG_E_TYPELIB);
  }
  EXPECT_EQ(ServerOf(HKEY_LOCAL_MACHINE), L"(absent)");
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Registry().Since(before), "");
}

// Of a damaged registration the types of this word size may be gone already.
TEST_F(Registration, TakesTypesThatAreNotThereAsTakenAway) {
  ASSERT_EQ(library_.Register(), S_OK);
  const std::wstring types = std::wstring(kClasses) + L"\\TypeLib\\" + ToText(kTypeLibraryId) +
                             L"\\1.0\\0\\" + (sizeof(void*) == 8 ? L"win64" : L"win32");
  ASSERT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, types.c_str()), ERROR_SUCCESS);
  {
    const PatchedImport<RemoveTypeLibrary> refused("UnRegisterTypeLib", &RefuseToRemove);
    EXPECT_EQ(library_.Unregister(), S_OK);
  }
  library_.Unregister();
  const std::wstring rest = std::wstring(kClasses) + L"\\TypeLib\\" + ToText(kTypeLibraryId);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, rest.c_str());
}

// The types of an earlier registration are not that call's to take away.
TEST_F(Registration, LeavesAnEarlierOneAloneWhenItFails) {
  const OnlyIn machine(L"machine");
  ASSERT_EQ(library_.Register(), S_OK);
  const std::wstring names = std::wstring(kClasses) + L"\\TLV_RDV_Line_Config.ucRDVLineConfig";
  ASSERT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, names.c_str()), ERROR_SUCCESS);
  {
    const KeyInTheWay in_the_way(L"TLV_RDV_Line_Config.ucRDVLineConfig");
    EXPECT_EQ(library_.Register(), SELFREG_E_CLASS);
  }
  ComPointer<ITypeLib> types;
  EXPECT_EQ(LoadRegTypeLib(kTypeLibraryId, 1, 0, LOCALE_NEUTRAL, types.Receive()), S_OK);
  EXPECT_EQ(Value(L"CLSID\\" + ToText(kLineConfigClassId) + L"\\InprocServer32"), Library::Path());
}

TEST_F(Registration, TakesTheRestOfADamagedOneAway) {
  const auto before = Snapshot();
  ASSERT_EQ(library_.Register(), S_OK);
  const std::wstring key = std::wstring(kClasses) + L"\\CLSID\\" + ToText(kLineConfigClassId);
  ASSERT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str()), ERROR_SUCCESS);
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Snapshot(), before);
}

// The names lead to the class of either word size.
TEST_F(Registration, LeavesTheNamesToTheOtherWordSize) {
  constexpr REGSAM kOther = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
  const std::wstring path = std::wstring(kClasses) + L"\\CLSID\\" + ToText(kLineConfigClassId);
  HKEY other = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                            KEY_ALL_ACCESS | kOther, nullptr, &other, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(other);
  EXPECT_EQ(library_.Register(), S_OK);
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Value(L"TLV_RDV_Line_Config.ucRDVLineConfig\\CLSID"), ToText(kLineConfigClassId));
  EXPECT_EQ(RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), kOther, 0), ERROR_SUCCESS);
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Value(L"TLV_RDV_Line_Config.ucRDVLineConfig\\CLSID"), L"(absent)");
}

TEST_F(Registration, MayBeDoneAndUndoneTwice) {
  EXPECT_EQ(library_.Register(), S_OK);
  EXPECT_EQ(library_.Register(), S_OK);
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(library_.Unregister(), S_OK);
}

TEST_F(Registration, WritesWhatContainersLookFor) {
  ASSERT_EQ(library_.Register(), S_OK);
  const std::wstring key = L"CLSID\\" + ToText(kLineConfigClassId);
  EXPECT_EQ(Value(key + L"\\InprocServer32"), Library::Path());
  EXPECT_EQ(Value(key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
  EXPECT_EQ(Value(key + L"\\Control"), L"");
  EXPECT_EQ(Value(key + L"\\MiscStatus"), L"0");
  EXPECT_EQ(Value(key + L"\\MiscStatus\\1"), L"131473");
  EXPECT_EQ(Value(key + L"\\ToolboxBitmap32"), Library::Path() + L", 101");
  EXPECT_EQ(Value(key + L"\\TypeLib"), ToText(kTypeLibraryId));
  EXPECT_EQ(Value(key + L"\\Version"), L"1.0");
  EXPECT_EQ(Value(key + L"\\Verb\\0"), L"&Edit,0,2");
  EXPECT_EQ(Value(key + L"\\Implemented Categories\\{40FC6ED4-2438-11CF-A3DB-080036F12502}"), L"");
  EXPECT_EQ(Value(key + L"\\Insertable"), L"(absent)");
  EXPECT_EQ(Value(key + L"\\VersionIndependentProgID"), L"TLV_RDV_Line_Config.ucRDVLineConfig");
  EXPECT_EQ(Value(key + L"\\Programmable"), L"");
  EXPECT_EQ(Value(L"TLV_RDV_Line_Config.ucRDVLineConfig\\CurVer"), Value(key + L"\\ProgID"));
  EXPECT_EQ(Value(L"TypeLib\\" + ToText(kTypeLibraryId) + L"\\1.0\\0\\" +
                  (sizeof(void*) == 8 ? L"win64" : L"win32")),
            Library::Path());
  // It writes files: a browser must not take it for safe.
  for (const wchar_t* safe_for :
       {L"{7DD95801-9882-11CF-9FA9-00AA006C42C4}", L"{7DD95802-9882-11CF-9FA9-00AA006C42C4}"}) {
    EXPECT_EQ(Value(key + L"\\Implemented Categories\\" + safe_for), L"(absent)");
  }
  EXPECT_EQ(Value(L"TLV_RDV_Line_Config.ucRDVLineConfig\\CLSID"), ToText(kLineConfigClassId));
  EXPECT_EQ(Value(Value(key + L"\\ProgID") + L"\\CLSID"), ToText(kLineConfigClassId));
}

TEST_F(Registration, LetsHostsCreateTheControlByName) {
  ASSERT_EQ(library_.Register(), S_OK);
  CLSID class_id = {};
  ASSERT_EQ(CLSIDFromProgID(L"TLV_RDV_Line_Config.ucRDVLineConfig", &class_id), S_OK);
  ComPointer<IDispatch> control;
  EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                             control.ReceiveUntyped()),
            S_OK);
  DWORD status = 0;
  EXPECT_EQ(OleRegGetMiscStatus(class_id, DVASPECT_CONTENT, &status), S_OK);
  EXPECT_EQ(status, kMiscStatus);
  ComPointer<ITypeLib> types;
  EXPECT_EQ(LoadRegTypeLib(kTypeLibraryId, 1, 0, LOCALE_NEUTRAL, types.Receive()), S_OK);
}

TEST_F(Registration, GoesToTheCallerAloneWhenAsked) {
  SetEnvironmentVariableW(L"RDV_REGISTRATION", L"user");
  const HRESULT registered = library_.Register();
  const std::wstring path =
      std::wstring(kClasses) + L"\\CLSID\\" + ToText(kLineConfigClassId) + L"\\InprocServer32";
  wchar_t server[512] = L"";
  DWORD size = sizeof server;
  const LSTATUS found =
      RegGetValueW(HKEY_CURRENT_USER, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, server, &size);
  const std::wstring machine = Value(L"CLSID\\" + ToText(kLineConfigClassId));
  const HRESULT unregistered = library_.Unregister();
  SetEnvironmentVariableW(L"RDV_REGISTRATION", nullptr);
  EXPECT_EQ(registered, S_OK);
  EXPECT_EQ(found, ERROR_SUCCESS);
  EXPECT_EQ(std::wstring(server), Library::Path());
  EXPECT_EQ(machine, L"(absent)");
  EXPECT_EQ(unregistered, S_OK);
}

// The container that comes with the system, which asks for little and offers little.
TEST_F(Registration, LetsTheSystemsOwnContainerHostTheControl) {
  if (!CanPaint()) GTEST_SKIP() << "the container converts sizes with a device context: none here";
  const BoxAnswerer boxes;
  ASSERT_EQ(library_.Register(), S_OK);
  const HMODULE container = LoadLibraryW(L"atl100.dll");
  if (!container) GTEST_SKIP() << "atl100.dll is not installed here";
  using Initialize = BOOL(WINAPI*)();
  using GetControl = HRESULT(WINAPI*)(HWND, IUnknown**);
  const auto function = [&](const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(container, name));
  };
  ASSERT_TRUE(reinterpret_cast<Initialize>(function("AtlAxWinInit"))());
  const HWND window = CreateWindowExW(0, L"AtlAxWin100", L"TLV_RDV_Line_Config.ucRDVLineConfig",
                                      WS_OVERLAPPEDWINDOW, 0, 0, 950, 430, nullptr, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
  ASSERT_NE(window, nullptr);
  {
    ComPointer<IUnknown> control;
    ASSERT_EQ(reinterpret_cast<GetControl>(function("AtlAxGetControl"))(window, control.Receive()),
              S_OK);
    const auto methods =
        ComPointer<LineConfigInterface>::From(control.Get(), kLineConfigInterfaceId);
    ASSERT_TRUE(methods);
    VARIANT_BOOL shown = VARIANT_FALSE;
    EXPECT_EQ(methods->ShowControl(1, &shown), S_OK);
    HWND form = nullptr;
    ComPointer<IOleInPlaceObject>::From(control.Get(), IID_IOleInPlaceObject)->GetWindow(&form);
    EXPECT_TRUE(IsChild(window, form));
    SetWindowPos(window, nullptr, 0, 0, 1050, 500, SWP_NOMOVE | SWP_NOZORDER);
    RECT client = {};
    RECT place = {};
    GetClientRect(window, &client);
    GetClientRect(form, &place);
    EXPECT_TRUE(EqualRect(&client, &place));
  }
  DestroyWindow(window);
  EXPECT_EQ(library_.CanUnloadNow(), S_OK);
  FreeLibrary(container);
}

class Changes : public testing::Test {
 protected:
  static constexpr const wchar_t* kKey = L"Software\\TLV_RDV_Line_Config.test";
  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key_, nullptr),
              ERROR_SUCCESS);
  }
  void TearDown() override {
    RegCloseKey(key_);
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }
  std::wstring Read(const wchar_t* path, const wchar_t* name) {
    wchar_t value[64] = L"";
    DWORD size = sizeof value;
    return RegGetValueW(key_, path, name, RRF_RT_REG_SZ, nullptr, value, &size) ? L"(absent)"
                                                                                : value;
  }
  HKEY key_ = nullptr;
};

TEST_F(Changes, PutAValueOfAnotherKindBack) {
  const wchar_t text[] = L"%SystemRoot%";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(key_, L"kept", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegSetValueExW(key, L"name", 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(text), sizeof text);
  {
    RegistryChanges changes(key_);
    ASSERT_EQ(changes.SetValue(L"kept", L"name", L"after"), S_OK);
  }
  DWORD kind = REG_NONE;
  wchar_t now[64] = L"";
  DWORD size = sizeof now;
  RegQueryValueExW(key, L"name", nullptr, &kind, reinterpret_cast<BYTE*>(now), &size);
  EXPECT_EQ(kind, static_cast<DWORD>(REG_EXPAND_SZ));
  EXPECT_STREQ(now, text);
  RegCloseKey(key);
}

TEST_F(Changes, ArePutBackUnlessTheyAreCompleted) {
  {
    RegistryChanges changes(key_);
    ASSERT_EQ(changes.SetValue(L"kept", L"name", L"before"), S_OK);
    changes.Commit();
  }
  {
    RegistryChanges changes(key_);
    ASSERT_EQ(changes.SetValue(L"kept", L"name", L"after"), S_OK);
    ASSERT_EQ(changes.SetValue(L"kept", L"other", L"new"), S_OK);
    ASSERT_EQ(changes.SetValue(L"fresh\\below", L"", L"new"), S_OK);
    EXPECT_EQ(Read(L"fresh\\below", nullptr), L"new");
  }
  EXPECT_EQ(Read(L"kept", L"name"), L"before");
  EXPECT_EQ(Read(L"kept", L"other"), L"(absent)");
  std::set<std::wstring> keys;
  AddKeys(HKEY_CURRENT_USER, kKey, 3, keys);
  EXPECT_EQ(keys.size(), 1u);
}

}  // namespace
}  // namespace rdv::test
