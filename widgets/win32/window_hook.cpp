#include "widgets/win32/window_hook.h"

#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

bool IsOnTop(HWND window) {
  return GetWindowLongPtrW(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&HookProcedure);
}

// A host may place several controls, each with its own windows. An entry lives until its window is
// gone or has its procedure back.
WindowMap<WindowHook::Entry> entries;

void Remove(HWND window, WindowHook::Entry* entry) {
  entries.Remove(window);
  delete entry;
}

}  // namespace

WindowHook::WindowHook(HWND window, WindowWatcher& watcher)
    : window_(window), entry_(new Entry{.watcher = &watcher}) {
  entries.Add(window_, entry_);
  entry_->earlier = SetProcedure(window_, &HookProcedure);
}

// Where somebody has taken over the procedure since then, he calls this one as the earlier: putting
// the window's own back would take his out, and he would put this one back later. So it stays, and
// passes everything on.
WindowHook::~WindowHook() {
  if (entries.Find(window_) != entry_) return;  // the window has gone before
  entry_->watcher = nullptr;
  if (!IsOnTop(window_)) return;
  SetProcedure(window_, entry_->earlier);
  Remove(window_, entry_);
}

LRESULT CALLBACK HookProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  WindowHook::Entry* entry = entries.Find(window);
  if (!entry) return message == WM_NCDESTROY ? DefWindowProcW(window, message, wparam, lparam) : 0;
  // Taken beforehand: a watcher may remove the hook while it runs.
  const HookedMessage hooked = {window, message, wparam, lparam, entry->earlier};
  if (message == WM_NCDESTROY) {
    Remove(window, entry);
  } else if (entry->watcher) {
    if (const auto answer = entry->watcher->Before(hooked)) return *answer;
  }
  return hooked.PassOn();
}

}  // namespace rdv::win32
