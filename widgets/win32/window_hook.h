// A hook in front of a window's own procedure.
#pragma once

#include <optional>

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// A message on its way to a hooked window.
struct HookedMessage {
  HWND window;
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
  WNDPROC earlier;  // the procedure that the window had before

  // Lets the window have it, and answers what it does.
  LRESULT PassOn() const { return CallWindowProcW(earlier, window, message, wparam, lparam); }
};

// Sees every message of a hooked window first, but the last, which the window needs to free what it
// holds. An answer it gives is the message's result; without one the message goes on unchanged to
// the window. Must not throw.
class WindowWatcher {
 public:
  virtual ~WindowWatcher() = default;
  virtual std::optional<LRESULT> Before(const HookedMessage& message) = 0;
};

// Replaces the procedure of `window` for as long as it lives; of a window at most once. Somebody
// who has taken over the procedure after it keeps it; what he passes on then goes to the window
// unseen. The platform's own subclassing would keep what it needs in a property of the window,
// which every process of the desktop can set.
class WindowHook {
 public:
  struct Entry {
    WindowWatcher* watcher = nullptr;  // null once the hook is gone
    WNDPROC earlier = nullptr;
  };

  WindowHook(HWND window, WindowWatcher& watcher);
  WindowHook(const WindowHook&) = delete;
  WindowHook& operator=(const WindowHook&) = delete;
  ~WindowHook();

 private:
  const HWND window_;
  Entry* const entry_;  // not its own: it may have to outlive it
};

// A message for a window that is not hooked has the result 0.
LRESULT CALLBACK HookProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace rdv::win32
