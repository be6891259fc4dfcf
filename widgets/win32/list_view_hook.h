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

// Replaces the window procedure of `grid` for as long as it lives. Somebody who has taken over the
// procedure after it keeps it; what he passes on then goes to the grid unseen.
class ListViewHook {
 public:
  struct Entry {
    GridWatcher* watcher = nullptr;  // null once the hook is gone
    WNDPROC OldListViewProc = nullptr;
  };

  ListViewHook(HWND grid, GridWatcher& watcher);
  ListViewHook(const ListViewHook&) = delete;
  ListViewHook& operator=(const ListViewHook&) = delete;
  ~ListViewHook();

 private:
  const HWND grid_;
  Entry* const entry_;  // not its own: it may have to outlive it
};

// A message for a window that is no hooked grid has the result 0.
LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace rdv::win32
