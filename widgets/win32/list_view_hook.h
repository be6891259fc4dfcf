// The hook in front of a list view's window procedure.
#pragma once

#include <optional>

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Sees every message of a hooked grid first. An answer it gives is the message's result; without
// one the message goes on unchanged to the grid. Must not throw.
class GridWatcher {
 public:
  virtual ~GridWatcher() = default;
  virtual std::optional<LRESULT> BeforeGrid(UINT message, WPARAM wparam, LPARAM lparam) = 0;
};

// Replaces the window procedure of `grid` for as long as it lives; destroy it before the window.
class ListViewHook {
 public:
  ListViewHook(HWND grid, GridWatcher& watcher);
  ListViewHook(const ListViewHook&) = delete;
  ListViewHook& operator=(const ListViewHook&) = delete;
  ~ListViewHook();

  // Past the watcher, as the list view would have answered without it.
  LRESULT Forward(UINT message, WPARAM wparam, LPARAM lparam) const {
    return CallWindowProcW(OldListViewProc, grid_, message, wparam, lparam);
  }

 private:
  friend LRESULT CALLBACK ListViewWindowProc(HWND, UINT, WPARAM, LPARAM);

  HWND grid_;
  GridWatcher& watcher_;
  WNDPROC OldListViewProc = nullptr;
};

// A message for a window that is no hooked grid has the result 0.
LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace rdv::win32
