#include "tools/command_line/console.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace rdv::tools {
namespace {

TEST(WholeCharacters, AreAllButALastOneThatIsCut) {
  EXPECT_EQ(WholeCharacters(""), 0u);
  EXPECT_EQ(WholeCharacters("abc"), 3u);
  const std::string text = "a\u00FC\u53D7\U0001F600";
  const size_t whole[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10};
  ASSERT_EQ(text.size(), 10u);
  for (size_t size = 0; size <= text.size(); ++size) {
    EXPECT_EQ(WholeCharacters(std::string_view(text).substr(0, size)), whole[size]) << size;
  }
}

// So that they come out, as replaced.
TEST(WholeCharacters, HoldNothingBackThatIsNoUtf8) {
  EXPECT_EQ(WholeCharacters("\x80\x80\x80\x80\x80"), 5u);
  EXPECT_EQ(WholeCharacters("a\x80"), 2u);
}

#ifdef _WIN32

// A console of the test's own, in place of the one that it was started from.
class OwnConsole {
 public:
  OwnConsole() {
    FreeConsole();
    AllocConsole();
  }
  OwnConsole(const OwnConsole&) = delete;
  OwnConsole& operator=(const OwnConsole&) = delete;
  ~OwnConsole() {
    FreeConsole();
    SetStdHandle(STD_OUTPUT_HANDLE, output_);
    SetStdHandle(STD_ERROR_HANDLE, errors_);
  }

 private:
  const HANDLE output_ = GetStdHandle(STD_OUTPUT_HANDLE);
  const HANDLE errors_ = GetStdHandle(STD_ERROR_HANDLE);
};

TEST(Console, ShowsWhatItIsGivenWhateverItsCodePageIs) {
  const OwnConsole own;
  const HANDLE screen = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                  CONSOLE_TEXTMODE_BUFFER, nullptr);
  if (screen == INVALID_HANDLE_VALUE) GTEST_SKIP() << "no console can be had here";
  Console console(screen);
  EXPECT_TRUE(console.IsThere());
  // Cut in the middle of two characters.
  for (const std::string_view piece : {"Gr\xC3", "\xBC\xC3\x9F", "e \xCE", "\xBB"}) {
    EXPECT_TRUE(console.Write(piece));
  }
  wchar_t shown[8] = {};
  DWORD count = 0;
  EXPECT_TRUE(ReadConsoleOutputCharacterW(screen, shown, 7, {0, 0}, &count));
  EXPECT_EQ(std::wstring(shown, count), L"Gr\u00FC\u00DFe \u03BB");
  CloseHandle(screen);
}

TEST(Console, IsNoFileAndNoPipe) {
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  ASSERT_TRUE(CreatePipe(&reader, &writer, nullptr, 0));
  EXPECT_FALSE(Console(writer).IsThere());
  CloseHandle(reader);
  CloseHandle(writer);
  EXPECT_FALSE(Console(nullptr).IsThere());
}

#endif

}  // namespace
}  // namespace rdv::tools
