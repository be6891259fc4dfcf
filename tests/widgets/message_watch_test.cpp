// What the player makes of message boxes that are not built as those of one system are.
#ifdef _WIN32

#include "tools/play/win32/message_watch.h"

#include <gtest/gtest.h>

#include "tests/support/window_probe.h"

namespace rdv::play {
namespace {

constexpr INT_PTR kWrongButton = -1;

struct Box {
  int button;  // the identifier of its only one
  HICON icon = nullptr;
};

// Ends with OK when its button is pressed, as the button itself would tell it.
INT_PTR CALLBACK BoxProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    const auto& box = *reinterpret_cast<const Box*>(lparam);
    CreateWindowExW(0, L"BUTTON", L"OK", WS_CHILD | WS_VISIBLE | BS_DEFPUSHBUTTON, 0, 0, 50, 20,
                    window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(box.button)), nullptr,
                    nullptr);
    const HWND icon = CreateWindowExW(0, L"STATIC", nullptr, WS_CHILD | WS_VISIBLE | SS_ICON, 0, 30,
                                      64, 64, window, nullptr, nullptr, nullptr);
    SendMessageW(icon, STM_SETICON, reinterpret_cast<WPARAM>(box.icon), 0);
    return TRUE;
  }
  if (message != WM_COMMAND || HIWORD(wparam) != BN_CLICKED) return FALSE;
  const auto pressed = reinterpret_cast<HWND>(lparam);
  EndDialog(window, pressed && GetParent(pressed) == window ? IDOK : kWrongButton);
  return TRUE;
}

INT_PTR Show(const Box& box) {
  struct {
    DLGTEMPLATE header;
    WORD menu, window_class, title;
  } description = {};
  description.header.style = WS_POPUP | WS_VISIBLE | WS_CAPTION;
  description.header.cx = 100;
  description.header.cy = 100;
  return DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &description.header, nullptr,
                                 &BoxProcedure, reinterpret_cast<LPARAM>(&box));
}

TEST(MessageWatch, PressesTheOnlyButtonWhateverItsIdentifier) {
  MessageWatch watch;
  for (const int button : {IDOK, IDCANCEL, 77}) {
    EXPECT_EQ(Show({.button = button}), IDOK) << button;
    const auto seen = watch.TakeMessages();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen.front().style, MB_OK);
  }
}

TEST(MessageWatch, KnowsAnIconByItsPicture) {
  if (!test::MakesDropDownLists()) GTEST_SKIP() << "nothing can be painted here";
  const std::initializer_list<std::pair<LPCWSTR, int>> icons = {
      {IDI_HAND, MB_ICONHAND},
      {IDI_QUESTION, MB_ICONQUESTION},
      {IDI_EXCLAMATION, MB_ICONEXCLAMATION},
      {IDI_ASTERISK, MB_ICONASTERISK}};
  MessageWatch watch;
  for (const auto& [name, style] : icons) {
    for (const int side : {24, 32, 48}) {
      const auto copy =
          static_cast<HICON>(CopyImage(LoadIconW(nullptr, name), IMAGE_ICON, side, side, 0));
      Show({.button = IDOK, .icon = copy});
      const auto seen = watch.TakeMessages();
      ASSERT_EQ(seen.size(), 1u);
      EXPECT_EQ(seen.front().style, MB_OK | style) << side;
      DestroyIcon(copy);
    }
  }
}

}  // namespace
}  // namespace rdv::play

#endif
