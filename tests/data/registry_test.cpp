#ifdef _WIN32

#include "data/registry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "data/folders_and_files.h"
#include "runtime/error.h"

namespace rdv {
namespace {

constexpr TextView kTestKey = u"Software\\TLV_RDV_Line_Config_Test";

class Registry : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, ToUtf8(kTestKey).c_str(), 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, &key_, nullptr),
              ERROR_SUCCESS);
  }
  void TearDown() override {
    RegCloseKey(key_);
    RegDeleteKeyA(HKEY_CURRENT_USER, ToUtf8(kTestKey).c_str());
  }

  void Store(DWORD type, std::string_view bytes) const {
    ASSERT_EQ(RegSetValueExA(key_, "v", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
  }
  static RegistryValue Read(RegistryValue otherwise = {}) {
    return ReadRegistryValue(kCurrentUser, kTestKey, u"v", std::move(otherwise));
  }

  HKEY key_ = nullptr;
};

TEST_F(Registry, GivesTextsWithoutTheirTerminator) {
  Store(REG_SZ, std::string_view("C:\\Data\0", 8));
  EXPECT_EQ(Read(), RegistryValue(Text(u"C:\\Data")));
}

TEST_F(Registry, GivesTextsWithEnvironmentReferencesUnexpanded) {
  Store(REG_EXPAND_SZ, std::string_view("%TEMP%\\x\0", 9));
  EXPECT_EQ(Read(), RegistryValue(Text(u"%TEMP%\\x")));
}

TEST_F(Registry, GivesListsOfTextsWithTheirSeparators) {
  Store(REG_MULTI_SZ, std::string_view("one\0two\0\0", 9));
  EXPECT_EQ(Read(), RegistryValue(Text(u"one\0two", 7)));
}

TEST_F(Registry, GivesBytesAndNumbers) {
  Store(REG_BINARY, std::string_view("\x01\x00\xFF", 3));
  EXPECT_EQ(Read(), RegistryValue(Binary{1, 0, 255}));
  Store(REG_DWORD, std::string_view("\xFE\xFF\xFF\xFF", 4));
  EXPECT_EQ(Read(), RegistryValue(int32_t{-2}));
}

TEST_F(Registry, GivesLongValuesWhole) {
  const std::string text(5000, 'x');
  Store(REG_SZ, std::string_view(text.c_str(), text.size() + 1));
  EXPECT_EQ(Read(), RegistryValue(Text(5000, u'x')));
  Store(REG_BINARY, text);
  EXPECT_EQ(std::get<Binary>(Read()).size(), 5000u);
}

TEST_F(Registry, GivesTheDefaultWhenKeyOrValueIsAbsent) {
  EXPECT_EQ(Read(), RegistryValue());
  EXPECT_EQ(Read(Text(u"d")), RegistryValue(Text(u"d")));
  EXPECT_EQ(ReadRegistryValue(kCurrentUser, u"Software\\No such key", u"v", int32_t{7}),
            RegistryValue(int32_t{7}));
}

TEST_F(Registry, RefusesOtherTypes) {
  Store(REG_QWORD, std::string_view("12345678", 8));
  try {
    Read();
    FAIL() << "a value of another type was read";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), 1001);
    EXPECT_EQ(error.Description(), u"Unsupported value type");
  }
}

TEST(SpecialFolder, IsThatOfTheShellAndEmptyForAnIdentifierThatIsNone) {
  const Text folder = GetSpecialFolder(kCommonAppDataFolder);
  ASSERT_FALSE(folder.empty());
  EXPECT_NE(folder.back(), u'\\');
  EXPECT_EQ(GetSpecialFolder(0x7FF), u"");
}

// A value of the machine's registry that a test replaces; only a Wine prefix is a test's to change.
class ReplacedCommonAppData {
 public:
  static bool Possible() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
  }
  ReplacedCommonAppData() {
    RegOpenKeyExA(HKEY_LOCAL_MACHINE,
                  "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", 0,
                  KEY_ALL_ACCESS, &key_);
    DWORD size = sizeof saved_;
    stored_ = RegQueryValueExA(key_, kName, nullptr, &type_, saved_, &size) == ERROR_SUCCESS;
    size_ = size;
  }
  ~ReplacedCommonAppData() {
    if (stored_) {
      RegSetValueExA(key_, kName, 0, type_, saved_, size_);
    } else {
      RegDeleteValueA(key_, kName);
    }
    RegCloseKey(key_);
  }
  void Set(DWORD type, std::string_view bytes) const {
    ASSERT_EQ(RegSetValueExA(key_, kName, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
  }

 private:
  static constexpr const char* kName = "Common AppData";
  HKEY key_ = nullptr;
  BYTE saved_[1024] = {};
  DWORD type_ = 0;
  DWORD size_ = 0;
  bool stored_ = false;
};

class SecondSource : public testing::Test {
 protected:
  void SetUp() override {
    if (!ReplacedCommonAppData::Possible())
      GTEST_SKIP() << "the registry of this machine is not a test's to change";
    registry_.emplace();
  }

  std::optional<ReplacedCommonAppData> registry_;
};

// The shell writes its own folder there whenever it is asked for one, so that only the reading of
// the value is seen here.
TEST_F(SecondSource, IsTheRegistrysFolderWhetherItExistsOrNot) {
  registry_->Set(REG_SZ, std::string_view("Z:\\none\0", 8));
  EXPECT_EQ(GetCommonAppDataFolder(), u"Z:\\none");
}

TEST_F(SecondSource, IsTurnedIntoTextWhateverItsType) {
  registry_->Set(REG_DWORD, std::string_view("\x07\0\0\0", 4));
  EXPECT_EQ(GetCommonAppDataFolder(), u"7");
  registry_->Set(REG_BINARY, std::string_view("C\0:\0", 4));
  EXPECT_EQ(GetCommonAppDataFolder(), u"C:");
}

TEST_F(SecondSource, RaisesForAValueOfATypeThatIsNotRead) {
  registry_->Set(REG_QWORD, std::string_view("12345678", 8));
  EXPECT_THROW(GetCommonAppDataFolder(), RuntimeError);
}

}  // namespace
}  // namespace rdv

#endif
