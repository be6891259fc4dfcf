// The hook in front of a list view's window procedure.
#include "widgets/win32/list_view_hook.h"

#include <gtest/gtest.h>

#include <vector>

namespace rdv::test {
namespace {

using win32::ListViewHook;
using win32::ListViewWindowProc;

constexpr UINT kAnswered = WM_APP + 1;
constexpr UINT kPassedOn = WM_APP + 2;

class Watcher final : public win32::GridWatcher {
 public:
  std::optional<LRESULT> BeforeGrid(UINT message, WPARAM wparam, LPARAM /*lparam*/) override {
    seen.push_back(message);
    if (message == kAnswered) return static_cast<LRESULT>(wparam) + 1;
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
    const ListViewHook hook(grid_, watcher_);
    EXPECT_EQ(Procedure(grid_), &ListViewWindowProc);
    EXPECT_NE(before, &ListViewWindowProc);
  }
  EXPECT_EQ(Procedure(grid_), before);
  SendMessageW(grid_, kAnswered, 1, 0);
  EXPECT_TRUE(watcher_.seen.empty());
}

TEST_F(ListView, GetsWhatTheWatcherDoesNotAnswer) {
  const ListViewHook hook(grid_, watcher_);
  EXPECT_EQ(SendMessageW(grid_, kAnswered, 7, 0), 8);
  EXPECT_EQ(SendMessageW(grid_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3)), TRUE);
  EXPECT_EQ(SendMessageW(grid_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  ASSERT_GE(watcher_.seen.size(), 3u);
  EXPECT_EQ(watcher_.seen.front(), kAnswered);
  EXPECT_EQ(watcher_.seen.back(), static_cast<UINT>(LVM_GETBKCOLOR));
}

TEST_F(ListView, AMessageForAnotherWindowHasTheResultNothing) {
  const ListViewHook hook(grid_, watcher_);
  SendMessageW(other_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3));
  ASSERT_EQ(SendMessageW(other_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  EXPECT_EQ(ListViewWindowProc(other_, LVM_GETBKCOLOR, 0, 0), 0);
  EXPECT_EQ(ListViewWindowProc(other_, kAnswered, 7, 0), 0);
  EXPECT_EQ(ListViewWindowProc(nullptr, kAnswered, 7, 0), 0);
  EXPECT_TRUE(watcher_.seen.empty());
}

TEST_F(ListView, TwoHooksKeepToTheirOwnGrids) {
  Watcher others;
  const ListViewHook hook(grid_, watcher_);
  {
    const ListViewHook second(other_, others);
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
    const ListViewHook hook(grid_, watcher_);
    under_taker = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(grid_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TakeOver)));
    ASSERT_EQ(under_taker, &ListViewWindowProc);
  }
  EXPECT_EQ(Procedure(grid_), &TakeOver);
  EXPECT_EQ(SendMessageW(grid_, LVM_SETBKCOLOR, 0, RGB(1, 2, 3)), TRUE);
  EXPECT_EQ(SendMessageW(grid_, LVM_GETBKCOLOR, 0, 0), static_cast<LRESULT>(RGB(1, 2, 3)));
  EXPECT_EQ(seen_by_taker, 2);
  EXPECT_TRUE(watcher_.seen.empty());
}

// The list view frees what it holds at the last message.
TEST_F(ListView, AlwaysGetsItsLastMessage) {
  struct Swallower final : win32::GridWatcher {
    std::optional<LRESULT> BeforeGrid(UINT message, WPARAM, LPARAM) override {
      if (message == WM_NCDESTROY) swallowed = true;
      return std::nullopt;
    }
    bool swallowed = false;
  } watcher;
  const ListViewHook hook(grid_, watcher);
  under_taker = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(grid_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TakeOver)));
  DestroyWindow(grid_);
  EXPECT_FALSE(IsWindow(grid_));
  EXPECT_FALSE(watcher.swallowed);
  EXPECT_EQ(ListViewWindowProc(grid_, kAnswered, 7, 0), 0);
}

}  // namespace
}  // namespace rdv::test
