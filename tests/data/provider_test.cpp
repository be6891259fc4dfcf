// Which provider opens the configuration database, by what the registry holds.
#ifdef _WIN32

#include "data/ado/provider.h"

#include <gtest/gtest.h>

#include "data/connection_route.h"
#include "tests/data/ado_stand_in.h"
#include "tests/data/class_layout.h"
#include "tests/support/site_fixture.h"

namespace rdv {
namespace {

constexpr wchar_t kJet[] = L"Microsoft.Jet.OLEDB.4.0";
constexpr wchar_t kNewSuccessor[] = L"Microsoft.ACE.OLEDB.16.0";
constexpr wchar_t kOldSuccessor[] = L"Microsoft.ACE.OLEDB.12.0";
constexpr wchar_t kJetClass[] = L"{dee35070-506b-11cf-b1aa-00aa00b8de95}";
constexpr wchar_t kNewClass[] = L"{3be786a2-0366-4f5c-9434-25cf162e475e}";
constexpr wchar_t kOldClass[] = L"{3be786a0-0366-4f5c-9434-25cf162e475e}";
constexpr TextView kConnectionString = u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";

class Providers : public testing::Test {
 protected:
  static void SetUpTestSuite() { test::SetEnvironment("RDV_DATABASE_ROUTE", ""); }
  static std::string Found() {
    return ToUtf8(ado::FindProvider(u"Microsoft.Jet.OLEDB.4.0").value_or(u""));
  }

  test::ClassLayout classes_;
};

TEST_F(Providers, NoneIsFoundWhereNoneIsRegisteredAndTheEngineServes) {
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(ChooseDatabaseRoute(kConnectionString), DatabaseRoute::Jet);
}

// 64-bit Windows as it comes: the name is there, its class in the 32-bit view only.
TEST_F(Providers, ANameWhoseClassBelongsToTheOtherWordSizeIsNone) {
  classes_.AddName(kJet, kJetClass);
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(ChooseDatabaseRoute(kConnectionString), DatabaseRoute::Jet);
}

TEST_F(Providers, AClassWithoutAServerInTheProcessIsNone) {
  classes_.AddName(kJet, kJetClass);
  classes_.AddClass(kJetClass, L"");
  EXPECT_EQ(Found(), "");
}

// 32-bit programs on any Windows.
TEST_F(Providers, TheNamedOneIsFoundWhereItsClassHasAServer) {
  classes_.AddName(kJet, kJetClass);
  classes_.AddClass(kJetClass, L"C:\\Windows\\SysWOW64\\msjetoledb40.dll");
  classes_.AddName(kNewSuccessor, kNewClass);
  classes_.AddClass(kNewClass, L"C:\\ACEOLEDB.DLL");
  EXPECT_EQ(Found(), "Microsoft.Jet.OLEDB.4.0");
  EXPECT_EQ(ChooseDatabaseRoute(kConnectionString), DatabaseRoute::Ado);
}

// 64-bit Windows with a 64-bit office suite.
TEST_F(Providers, ASuccessorIsFoundWhereTheNamedOneCannotBeCreated) {
  classes_.AddName(kJet, kJetClass);
  classes_.AddName(kOldSuccessor, kOldClass);
  classes_.AddClass(kOldClass, L"C:\\ACEOLEDB.DLL");
  EXPECT_EQ(Found(), "Microsoft.ACE.OLEDB.12.0");
  classes_.AddName(kNewSuccessor, kNewClass);
  EXPECT_EQ(Found(), "Microsoft.ACE.OLEDB.12.0");
  classes_.AddClass(kNewClass, L"C:\\ACEOLEDB.DLL");
  EXPECT_EQ(Found(), "Microsoft.ACE.OLEDB.16.0");
  EXPECT_EQ(ChooseDatabaseRoute(kConnectionString), DatabaseRoute::Ado);
}

// The same on the registry that Windows itself keeps apart for the word sizes. Only where the
// machine is a test's to change; the name is an invented one.
class SharedNames : public testing::Test {
 protected:
  void SetUp() override {
    if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr)
      GTEST_SKIP() << "the registry of this machine is not a test's to change";
    BOOL narrow = FALSE;
    IsWow64Process(GetCurrentProcess(), &narrow);
    if (sizeof(void*) == 4 && narrow == FALSE)
      GTEST_SKIP() << "this system has one view of the registry only";
    Create(kName + L"\\CLSID", kClass, 0);
  }
  void TearDown() override {
    for (const REGSAM view : {kOwnView, kOtherView}) {
      for (const std::wstring& path : {L"CLSID\\" + kClass + L"\\InprocServer32",
                                       L"CLSID\\" + kClass, kName + L"\\CLSID", kName})
        RegDeleteKeyExW(HKEY_LOCAL_MACHINE, (kClasses + path).c_str(), view, 0);
    }
  }

  static void Create(const std::wstring& path, const std::wstring& text, REGSAM view) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, (kClasses + path).c_str(), 0, nullptr, 0,
                              KEY_ALL_ACCESS | view, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
  }

  static constexpr REGSAM kOwnView = sizeof(void*) == 8 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
  static constexpr REGSAM kOtherView = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
  inline static const std::wstring kClasses = L"Software\\Classes\\";
  inline static const std::wstring kName = L"TLV_RDV_Test.Provider";
  inline static const std::wstring kClass = L"{5b4d9f0c-3c1e-4f0e-9d0f-7c2f0a5c9e11}";
};

TEST_F(SharedNames, ProveNothingAboutTheClassesOfThisWordSize) {
  EXPECT_FALSE(ado::CanCreateProvider(u"TLV_RDV_Test.Provider"));
  Create(L"CLSID\\" + kClass + L"\\InprocServer32", L"C:\\other.dll", kOtherView);
  EXPECT_FALSE(ado::CanCreateProvider(u"TLV_RDV_Test.Provider"));
  Create(L"CLSID\\" + kClass + L"\\InprocServer32", L"C:\\own.dll", kOwnView);
  EXPECT_TRUE(ado::CanCreateProvider(u"TLV_RDV_Test.Provider"));
}

// Opening, with a data access that knows some providers and others not.
class Opening : public testing::Test {
 protected:
  void SetUp() override {
    test::SetEnvironment("RDV_DATABASE_ROUTE", "");
    const auto sample = sites::SamplePath("sites/plain/NewDB.mdb");
    if (!stand_in_.Usable()) GTEST_SKIP() << "ADODB has no class identifiers on this machine";
    test::CopySample(sample, File());
    classes_.AddName(L"ADODB.Connection", L"{00000514-0000-0010-8000-00aa006d2ea4}");
    classes_.AddName(L"ADODB.Command", L"{00000507-0000-0010-8000-00aa006d2ea4}");
  }

  std::filesystem::path File() const { return folder_.Path() / "NewDB.mdb"; }
  Text StringWith(TextView provider) const {
    return u"Provider=" + Text(provider) + u";Data Source=" + File().u16string();
  }
  // A provider that this process believes it can create.
  void Register(const wchar_t* name) const {
    classes_.AddName(name, kJetClass);
    classes_.AddClass(kJetClass, L"C:\\provider.dll");
  }
  size_t RowsThrough(TextView provider) const {
    return OpenConnection(StringWith(provider))
        ->Execute(u"SELECT * FROM orvsettings", {})
        .rows->rows.size();
  }

  // In this order: the stand-in looks for the machine's classes, which the layout hides.
  test::TemporaryFolder folder_;
  test::AdoStandIn stand_in_;
  test::ClassLayout classes_;
};

TEST_F(Opening, NamesTheProviderThatThisProcessCanCreateAndChangesNothingElse) {
  classes_.AddName(kNewSuccessor, kNewClass);
  classes_.AddClass(kNewClass, L"C:\\ACEOLEDB.DLL");
  stand_in_.Provide(u"Microsoft.ACE.OLEDB.16.0");
  EXPECT_GT(RowsThrough(u"Microsoft.Jet.OLEDB.4.0"), 0u);
  EXPECT_EQ(stand_in_.Notes().connection_strings,
            std::vector<Text>{
                ForProvider(StringWith(u"Microsoft.Jet.OLEDB.4.0"), u"Microsoft.ACE.OLEDB.16.0")});
}

TEST_F(Opening, TakesTheEngineWhereNoProviderCanBeCreated) {
  classes_.AddName(kJet, kJetClass);
  EXPECT_GT(RowsThrough(u"Microsoft.Jet.OLEDB.4.0"), 0u);
  EXPECT_TRUE(stand_in_.Notes().connection_strings.empty());
}

TEST_F(Opening, TakesTheEngineWhereTheProviderIsNotFoundAndNeverAsksItAgain) {
  Register(L"TLV_RDV_Test.NotFound");
  EXPECT_GT(RowsThrough(u"TLV_RDV_Test.NotFound"), 0u);
  EXPECT_GT(RowsThrough(u"TLV_RDV_Test.NotFound"), 0u);
  EXPECT_EQ(stand_in_.Notes().connection_strings.size(), 1u);
  EXPECT_EQ(ChooseDatabaseRoute(StringWith(u"TLV_RDV_Test.NotFound")), DatabaseRoute::Jet);
}

TEST_F(Opening, TakesTheEngineWhereTheProvidersClassIsNotRegistered) {
  Register(L"TLV_RDV_Test.NotRegistered");
  stand_in_.FailOpeningWith(
      RuntimeError(static_cast<int32_t>(REGDB_E_CLASSNOTREG), u"Class not registered", {}));
  EXPECT_GT(RowsThrough(u"TLV_RDV_Test.NotRegistered"), 0u);
  EXPECT_GT(RowsThrough(u"TLV_RDV_Test.NotRegistered"), 0u);
  EXPECT_EQ(stand_in_.Notes().connection_strings.size(), 1u);
}

TEST_F(Opening, TakesTheEngineWhereTheProvidersLibraryCannotBeLoaded) {
  for (const long code : {ERROR_MOD_NOT_FOUND, ERROR_BAD_EXE_FORMAT}) {
    const std::wstring name = L"TLV_RDV_Test.Broken" + std::to_wstring(code);
    Register(name.c_str());
    stand_in_.FailOpeningWith(RuntimeError(HRESULT_FROM_WIN32(code), u"It cannot be loaded", {}));
    EXPECT_GT(RowsThrough(reinterpret_cast<const char16_t*>(name.c_str())), 0u) << code;
  }
}

TEST_F(Opening, LeavesOtherErrorsOfTheProviderToTheCaller) {
  Register(L"TLV_RDV_Test.Refusing");
  stand_in_.Provide(u"TLV_RDV_Test.Refusing");
  stand_in_.FailOpeningWith(RuntimeError(-2147217843, u"Not a valid password.", u"Jet"));
  EXPECT_THROW(OpenConnection(StringWith(u"TLV_RDV_Test.Refusing")), RuntimeError);
  EXPECT_THROW(OpenConnection(StringWith(u"TLV_RDV_Test.Refusing")), RuntimeError);
  EXPECT_EQ(stand_in_.Notes().connection_strings.size(), 2u);
}

TEST_F(Opening, ReportsTheMissingProviderWhereTheVariableDemandsIt) {
  test::SetEnvironment("RDV_DATABASE_ROUTE", "ado");
  Register(L"TLV_RDV_Test.Demanded");
  try {
    OpenConnection(StringWith(u"TLV_RDV_Test.Demanded"));
    ADD_FAILURE() << "a provider that is not there was opened";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), 3706);
    EXPECT_EQ(error.Description(), u"Provider cannot be found. It may not be properly installed.");
  }
  test::SetEnvironment("RDV_DATABASE_ROUTE", "");
}

}  // namespace
}  // namespace rdv

#endif
