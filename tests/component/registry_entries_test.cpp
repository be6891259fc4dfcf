// What registering leaves in the registry, entry by entry, and that unregistering takes it away.
#include <gtest/gtest.h>

#include <string>

#include "component/com/identifiers.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/registry_text.h"

namespace rdv::test {
namespace {

constexpr const wchar_t* kUserClassIds = L"Software\\Classes\\CLSID";
constexpr const wchar_t* kAutomationProxy = L"{00020424-0000-0000-C000-000000000046}";
constexpr const wchar_t* kDispatchProxy = L"{00020420-0000-0000-C000-000000000046}";
constexpr IID kBusinessRulesId = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x04}};

constexpr bool kIs64 = sizeof(void*) == 8;
constexpr const wchar_t* kOwnSystem = kIs64 ? L"win64" : L"win32";
constexpr const wchar_t* kOtherSystem = kIs64 ? L"win32" : L"win64";
constexpr REGSAM kOtherView = kIs64 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

std::wstring ToText(REFGUID id) {
  wchar_t text[40] = L"";
  StringFromGUID2(id, text, 40);
  return text;
}

std::wstring Below(const wchar_t* kind, REFGUID id) {
  return std::wstring(kClasses) + L"\\" + kind + L"\\" + ToText(id);
}

std::wstring ReadText(HKEY root, const std::wstring& path, const wchar_t* name = nullptr,
                      REGSAM view = 0) {
  wchar_t value[512] = L"";
  DWORD size = sizeof value;
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key)) return L"(no key)";
  const LSTATUS read = RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, value, &size);
  RegCloseKey(key);
  return read ? L"(no value)" : value;
}

std::wstring Types() {
  return Below(L"TypeLib", kTypeLibraryId) + L"\\1.0";
}

class RegistryEntries : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    if (!MachineIsOpen()) GTEST_SKIP() << kMachineIsClosed;
    library_.Unregister();
    HKEY classes = nullptr;
    // Every user of Windows has it; those of other systems once something is registered for them.
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kClasses, 0, nullptr, 0, KEY_READ, nullptr,
                              &classes, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(classes);
  }
  void TearDown() override {
    SetEnvironmentVariableW(L"RDV_REGISTRATION", nullptr);
    library_.Unregister();
  }
  static void OnlyFor(const wchar_t* scope) { SetEnvironmentVariableW(L"RDV_REGISTRATION", scope); }

  Library library_;
};

TEST_F(RegistryEntries, DescribeTheTypeLibrary) {
  OnlyFor(L"machine");
  ASSERT_EQ(library_.Register(), S_OK);
  const std::wstring library = Library::Path();
  const std::wstring folder = library.substr(0, library.find_last_of(L'\\'));
  EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types()), L"TLV RDV Line Configuration 1.0");
  EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\0\\" + kOwnSystem), library);
  EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\0\\" + kOtherSystem), L"(no key)");
  EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\HELPDIR"), folder);
  ComPointer<ITypeLib> types;
  ASSERT_EQ(LoadRegTypeLib(kTypeLibraryId, 1, 0, LOCALE_NEUTRAL, types.Receive()), S_OK);
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(types->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\FLAGS"),
            std::to_wstring(attributes->wLibFlags));
  // Browsers of types list it.
  EXPECT_EQ(attributes->wLibFlags & (LIBFLAG_FRESTRICTED | LIBFLAG_FHIDDEN), 0);
  types->ReleaseTLibAttr(attributes);
}

// Another apartment or process reaches the interfaces by them, a host of either word size.
TEST_F(RegistryEntries, DescribeTheInterfaces) {
  OnlyFor(L"machine");
  ASSERT_EQ(library_.Register(), S_OK);
  struct Interface {
    IID id;
    const wchar_t* name;
    const wchar_t* proxy;
  };
  const Interface interfaces[] = {{kLineConfigInterfaceId, L"_ucRDVLineConfig", kAutomationProxy},
                                  {kLineConfigEventsId, L"__ucRDVLineConfig", kDispatchProxy},
                                  {kBusinessRulesId, L"_Business_Rules", kAutomationProxy}};
  for (const Interface& each : interfaces) {
    const std::wstring key = Below(L"Interface", each.id);
    for (const REGSAM view : {REGSAM{0}, kOtherView}) {
      EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, key, nullptr, view), each.name);
      EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, key + L"\\ProxyStubClsid32", nullptr, view),
                each.proxy);
      EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, key + L"\\TypeLib", nullptr, view),
                ToText(kTypeLibraryId));
      EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, key + L"\\TypeLib", L"Version", view), L"1.0");
    }
  }
}

TEST_F(RegistryEntries, AreAllGoneFromTheMachineAfterUnregistering) {
  OnlyFor(L"machine");
  const Registry before;
  ASSERT_EQ(library_.Register(), S_OK);
  const Registry registered;
  EXPECT_EQ(Difference(before.user, registered.user), "");
  EXPECT_NE(Difference(before.machine, registered.machine), "");
  ASSERT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Registry().Since(before), "");
}

// The machine's registry is compared too: Wine keeps the types of a user there.
TEST_F(RegistryEntries, AreAllGoneFromTheUserAfterUnregistering) {
  // A user for whom nothing was ever registered has no list of classes.
  if (ReadRegistry(HKEY_CURRENT_USER, kUserClassIds).size() == 1) {
    RegDeleteKeyW(HKEY_CURRENT_USER, kUserClassIds);
  }
  OnlyFor(L"user");
  const Registry before;
  ASSERT_EQ(library_.Register(), S_OK);
  EXPECT_NE(Difference(before.user, Registry().user), "");
  ASSERT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Registry().Since(before), "");
}

TEST_F(RegistryEntries, OfOthersInTheUsersListOfClassesStay) {
  constexpr const wchar_t* kForeign =
      L"Software\\Classes\\CLSID\\{C1C6B5A2-90D3-4E39-8E7B-3B1F2A6D7740}";
  HKEY foreign = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kForeign, 0, nullptr, 0, KEY_WRITE, nullptr,
                            &foreign, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(foreign);
  OnlyFor(L"user");
  const Registry before;
  EXPECT_EQ(library_.Register(), S_OK);
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Registry().Since(before), "");
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, kForeign), ERROR_SUCCESS);
}

// As a library of the other word size registers itself; it shares the type library's keys.
class OtherWordSize {
 public:
  OtherWordSize() {
    Write(Below(L"CLSID", kLineConfigClassId) + L"\\InprocServer32", kOtherView);
    Write(Types() + L"\\0\\" + kOtherSystem, 0);
  }
  ~OtherWordSize() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, Below(L"TypeLib", kTypeLibraryId).c_str());
    for (const IID& id : {kLineConfigInterfaceId, kLineConfigEventsId, kBusinessRulesId}) {
      RemoveTree(Below(L"Interface", id), 0);
      RemoveTree(Below(L"Interface", id), kOtherView);
    }
    RemoveTree(Below(L"CLSID", kLineConfigClassId), kOtherView);
  }

 private:
  static void Write(const std::wstring& path, REGSAM view) {
    constexpr wchar_t kPath[] = L"C:\\other\\TLV_RDV_Line_Config.dll";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_WRITE | view,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(kPath), sizeof kPath);
    RegCloseKey(key);
  }
  static void RemoveTree(const std::wstring& path, REGSAM view) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS | view, &key)) return;
    RegDeleteTreeW(key, nullptr);
    RegCloseKey(key);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), view, 0);
  }
};

TEST_F(RegistryEntries, OfTheOtherWordSizeStay) {
  OnlyFor(L"machine");
  const Registry without;
  {
    const OtherWordSize other;
    EXPECT_EQ(library_.Register(), S_OK);
    EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\0\\" + kOwnSystem), Library::Path());
    EXPECT_EQ(library_.Unregister(), S_OK);
    EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\0\\" + kOwnSystem), L"(no key)");
    EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Types() + L"\\0\\" + kOtherSystem),
              L"C:\\other\\TLV_RDV_Line_Config.dll");
    EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, Below(L"CLSID", kLineConfigClassId)), L"(no key)");
    for (const IID& id : {kLineConfigInterfaceId, kLineConfigEventsId, kBusinessRulesId}) {
      EXPECT_EQ(
          ReadText(HKEY_LOCAL_MACHINE, Below(L"Interface", id) + L"\\TypeLib", nullptr, kOtherView),
          ToText(kTypeLibraryId));
    }
  }
  EXPECT_EQ(library_.Unregister(), S_OK);
  EXPECT_EQ(Registry().Since(without), "");
}

}  // namespace
}  // namespace rdv::test
