#ifdef _WIN32

#include "data/registry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <string_view>

#include "data/folders_and_files.h"
#include "runtime/error.h"
#include "tests/data/folder_sources.h"

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

class SecondSource : public testing::Test {
 protected:
  void Set(DWORD type, std::string_view bytes) const {
    registry_.SetFolder(type, bytes.data(), bytes.size());
  }

  const test::OwnMachineRegistry registry_;
};

TEST_F(SecondSource, IsTheRegistrysFolderWhetherItExistsOrNot) {
  registry_.SetFolder(u"Z:\\none");
  EXPECT_EQ(GetCommonAppDataFolder(), u"Z:\\none");
}

TEST_F(SecondSource, IsTurnedIntoTextWhateverItsType) {
  Set(REG_DWORD, std::string_view("\x07\0\0\0", 4));
  EXPECT_EQ(GetCommonAppDataFolder(), u"7");
  Set(REG_BINARY, std::string_view("C\0:\0", 4));
  EXPECT_EQ(GetCommonAppDataFolder(), u"C:");
}

TEST_F(SecondSource, RaisesForAValueOfATypeThatIsNotRead) {
  Set(REG_QWORD, std::string_view("12345678", 8));
  EXPECT_THROW(GetCommonAppDataFolder(), RuntimeError);
}

}  // namespace
}  // namespace rdv

#endif
