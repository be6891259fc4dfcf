#include "data/ini_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "runtime/error.h"
#include "tests/support/site_fixture.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace rdv {
namespace {

struct IniCase {
  const char* what;
  const char* content;
  const char* key;
  const char* value;  // null: absent
};

// All are looked up in section "S".
const IniCase kCases[] = {
    {"a value", "[S]\r\nk=v\r\n", "k", "v"},
    {"lines without carriage returns", "[S]\nk=v\n", "k", "v"},
    {"a last line without an end", "[S]\r\nk=v", "k", "v"},
    {"section and key in another case", "[s]\r\nKEY=v\r\n", "key", "v"},
    {"blanks and tabs around key and value", "[S]\r\n \tk \t= \tv w\t \r\n", "k", "v w"},
    {"an empty value", "[S]\r\nk=\r\n", "k", ""},
    {"a value of blanks", "[S]\r\nk=   \r\n", "k", ""},
    {"a value with equals signs", "[S]\r\nk=a=b=c\r\n", "k", "a=b=c"},
    {"double quotes around a value", "[S]\r\nk=\" v \"\r\n", "k", " v "},
    {"single quotes around a value", "[S]\r\nk=' v '\r\n", "k", " v "},
    {"one pair of quotes only", "[S]\r\nk=\"\"v\"\"\r\n", "k", "\"v\""},
    {"quotes that are no pair", "[S]\r\nk=\"v'\r\n", "k", "\"v'"},
    {"a single quote sign", "[S]\r\nk=\"\r\n", "k", "\""},
    {"quotes inside a value", "[S]\r\nk=a\"b\"c\r\n", "k", "a\"b\"c"},
    {"the first of equal keys", "[S]\r\nk=1\r\nk=2\r\n", "k", "1"},
    {"the first of equal sections", "[S]\r\na=1\r\n[T]\r\nk=2\r\n[S]\r\nk=3\r\n", "k", nullptr},
    {"a key of another section", "[T]\r\nk=1\r\n[S]\r\nj=2\r\n", "k", nullptr},
    {"a key before all sections", "k=1\r\n[S]\r\n", "k", nullptr},
    {"a comment", "[S]\r\n;k=1\r\nk=2\r\n", "k", "2"},
    {"a semicolon in a value", "[S]\r\nk=1;2\r\n", "k", "1;2"},
    {"blank lines", "\r\n\r\n[S]\r\n\r\n \r\nk=2\r\n", "k", "2"},
    {"text behind a heading", "[S] ; section\r\nk=2\r\n", "k", "2"},
    {"a key of digits", "[S]\r\n1=a\r\n128=b\r\n", "128", "b"},
    {"a byte outside ASCII", "[S]\r\nk=\xC4\xD6\x80\r\n", "k", "\xC4\xD6\x80"},
    {"an empty file", "", "k", nullptr},
};

class IniFile : public testing::Test {
 protected:
  Text Write(std::string_view content) const {
    const auto path = folder_.Path() / "settings.ini";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    return FromUtf8(path.string());
  }

  test::TemporaryFolder folder_;
};

TEST_F(IniFile, IsReadByTheRulesOfTheWindowsFunction) {
  for (const IniCase& entry : kCases) {
    const auto value = FindIniValue(Write(entry.content), u"S", FromUtf8(entry.key));
    if (entry.value == nullptr) {
      EXPECT_EQ(value, std::nullopt) << entry.what;
    } else {
      EXPECT_EQ(value, std::string(entry.value)) << entry.what;
    }
  }
}

#ifdef _WIN32
// The cases above say what the system's own function does.
TEST_F(IniFile, AgreesWithTheWindowsFunction) {
  for (const IniCase& entry : kCases) {
    const std::string path = ToUtf8(Write(entry.content));
    char buffer[255] = {};
    WritePrivateProfileStringA(nullptr, nullptr, nullptr, path.c_str());  // no stale content
    GetPrivateProfileStringA("S", entry.key, "(absent)", buffer, sizeof buffer, path.c_str());
    EXPECT_STREQ(buffer, entry.value == nullptr ? "(absent)" : entry.value) << entry.what;
  }
}
#endif

// On which implementations of the Windows function do not agree.
TEST_F(IniFile, TakesALineWithoutEqualsSignForNoKey) {
  EXPECT_EQ(FindIniValue(Write("[S]\r\nk\r\nk=2\r\n"), u"S", u"k"), "2");
}

TEST_F(IniFile, ComparesNamesOutsideAsciiWithoutRegardToCase) {
  EXPECT_EQ(FindIniValue(Write("[\xC4]\r\n\xD6=v\r\n"), u"ä", u"ö"), "v");
}

TEST_F(IniFile, ThatIsNotThereHoldsNothing) {
  EXPECT_EQ(FindIniValue(FromUtf8((folder_.Path() / "none.ini").string()), u"S", u"k"),
            std::nullopt);
}

TEST_F(IniFile, ThatIsNoFileOrTooLargeForSettingsIsRefusedByName) {
  const std::string comment = ";" + std::string(64 * 1024 - 10, 'x');
  EXPECT_EQ(FindIniValue(Write(comment + "\n[S]\nk=v"), u"S", u"k"), "v");
  for (const Text& path : {Write(comment + "xx\n[S]\nk=v"), FromUtf8(folder_.Path().string())}) {
    try {
      FindIniValue(path, u"S", u"k");
      ADD_FAILURE() << ToUtf8(path) << " was read";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Number(), 75);
      EXPECT_NE(error.Description().find(path), Text::npos);
    }
  }
}

#ifndef _WIN32
// As one has that is still being written: what counts is what is read, not what was said of it. The
// system's list of a process' memory has a size of nothing and many lines for each piece.
TEST_F(IniFile, ThatHasMoreThanItsSizeSaysIsRefusedAllTheSame) {
  constexpr size_t kPieces = 200;
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* const memory = mmap(nullptr, kPieces * page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  for (size_t piece = 0; piece < kPieces; piece += 2)
    mprotect(static_cast<char*>(memory) + piece * page, page, PROT_NONE);
  const std::filesystem::path file = "/proc/self/smaps";
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  const std::string content(std::istreambuf_iterator<char>(stream), {});
  if (std::filesystem::file_size(file, error) != 0 || error || content.size() <= 64 * 1024)
    GTEST_SKIP() << "this system has no file that is longer than it says";
  try {
    FindIniValue(FromUtf8(file.string()), u"S", u"k");
    ADD_FAILURE() << "it was read";
  } catch (const RuntimeError& refusal) {
    EXPECT_EQ(refusal.Number(), 75);
  }
  munmap(memory, kPieces * page);
}

TEST_F(IniFile, ThatIsAPipeIsRefusedAndNotWaitedFor) {
  const std::filesystem::path pipe = folder_.Path() / "pipe.ini";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THROW(FindIniValue(FromUtf8(pipe.string()), u"S", u"k"), RuntimeError);
}

TEST_F(IniFile, MayBeReachedThroughALink) {
  const std::filesystem::path link = folder_.Path() / "link.ini";
  std::filesystem::create_symlink(ToUtf8(Write("[S]\nk=v")), link);
  EXPECT_EQ(FindIniValue(FromUtf8(link.string()), u"S", u"k"), "v");
}
#endif

}  // namespace
}  // namespace rdv
