// The hook in front of a window's own procedure, here a list view's.
#include "widgets/win32/window_hook.h"

#include <gtest/gtest.h>

#include <vector>

namespace rdv::test {
namespace {

using win32::HookProcedure;
using win32::WindowHook;

constexpr UINT kAnswered = WM_APP + 1;
constexpr UINT kPassedOn = WM_APP + 2;

class Watcher final : public win32::WindowWatcher {
 public:
  std::optional<LRESULT> Before(const win32::HookedMessage& message) override {
    seen.push_back(message.message);
    if (message.message == kAnswered) return static_cast<LRESULT>(message.wparam) + 1;
    return std::nullopt;
  }
  std::vector<UINT> seen;
};

class ListView : public testing::Test {
 protected:
  ListView() {
    const INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    grid_ = Create();
    other_ = Create();
  }
  ~ListView() override {
    DestroyWindow(grid_);
    DestroyWindow(other_);
  }

  static HWND Create() {
    return CreateWindowExW(0, WC_LISTVIEWW, L"", WS_POPUP | LVS_REPORT, 0, 0, 100, 100, nullptr,
                           nullptr, nullptr, nullptr);
  }
  static WNDPROC Procedure(HWND window) {
    return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
  }

  HWND grid_ = nullptr;
  HWND other_ = nullptr;
  Watcher watcher_;
};

TEST_F(ListView, HasTheHooksProcedureForAsLongAsTheHookLives) {
  const WNDPROC before = Procedure(grid_);
  {
    const WindowHook hook(grid_, watcher_);
    EXPECT_EQ(Procedure(grid_), &HookProcedure);
    EXPECT_NE(before, &HookProcedure);
  }
  EXPECT_EQ(Procedure(grid_), before);
  SendMessageW(grid_, kAnswered, 1, 0);
  EXPECT_TRUE(watcher_.seen.empty());
}

TEST_F(ListView, GetsWhatTheWatcherDoesNotAnswer) {
  const WindowHook hook(grid_, watcher_);
  EXPECT_EQ(SendMessageW(grid_, kAnswered, 7, 0), 8);
  EXPECT_EQ(SendMessageW(grid_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3)), TRUE);
  EXPECT_EQ(SendMessageW(grid_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  ASSERT_GE(watcher_.seen.size(), 3u);
  EXPECT_EQ(watcher_.seen.front(), kAnswered);
  EXPECT_EQ(watcher_.seen.back(), static_cast<UINT>(LVM_GETBKCOLOR));
}

TEST_F(ListView, AMessageForAnotherWindowHasTheResultNothing) {
  const WindowHook hook(grid_, watcher_);
  SendMessageW(other_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3));
  ASSERT_EQ(SendMessageW(other_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  EXPECT_EQ(HookProcedure(other_, LVM_GETBKCOLOR, 0, 0), 0);
  EXPECT_EQ(HookProcedure(other_, kAnswered, 7, 0), 0);
  EXPECT_EQ(HookProcedure(nullptr, kAnswered, 7, 0), 0);
  EXPECT_TRUE(watcher_.seen.empty());
}

TEST_F(ListView, TwoHooksKeepToTheirOwnGrids) {
  Watcher others;
  const WindowHook hook(grid_, watcher_);
  {
    const WindowHook second(other_, others);
    SendMessageW(other_, kPassedOn, 0, 0);
    EXPECT_EQ(others.seen, std::vector<UINT>{kPassedOn});
    EXPECT_TRUE(watcher_.seen.empty());
  }
  EXPECT_EQ(SendMessageW(grid_, kAnswered, 7, 0), 8);
}

WNDPROC under_taker = nullptr;
int seen_by_taker = 0;

LRESULT CALLBACK TakeOver(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  ++seen_by_taker;
  return CallWindowProcW(under_taker, window, message, wparam, lparam);
}

// A program that follows all windows (a speech program, a theme) puts its procedure on top.
TEST_F(ListView, KeepsTheProcedureOfWhoeverCameLater) {
  seen_by_taker = 0;
  {
    const WindowHook hook(grid_, watcher_);
    under_taker = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(grid_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TakeOver)));
    ASSERT_EQ(under_taker, &HookProcedure);
  }
  EXPECT_EQ(Procedure(grid_), &TakeOver);
  EXPECT_EQ(SendMessageW(grid_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3)), TRUE);
  EXPECT_EQ(SendMessageW(grid_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  EXPECT_EQ(seen_by_taker, 2);
  EXPECT_TRUE(watcher_.seen.empty());
}

// The list view frees what it holds at the last message.
TEST_F(ListView, AlwaysGetsItsLastMessage) {
  struct Swallower final : win32::WindowWatcher {
    std::optional<LRESULT> Before(const win32::HookedMessage& message) override {
      if (message.message == WM_NCDESTROY) swallowed = true;
      return std::nullopt;
    }
    bool swallowed = false;
  } watcher;
  const WindowHook hook(grid_, watcher);
  under_taker = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(grid_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TakeOver)));
  DestroyWindow(grid_);
  EXPECT_FALSE(IsWindow(grid_));
  EXPECT_FALSE(watcher.swallowed);
  EXPECT_EQ(HookProcedure(grid_, kAnswered, 7, 0), 0);
}

}  // namespace
}  // namespace rdv::test
