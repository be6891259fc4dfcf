#include "widgets/win32/list_view_hook.h"

#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

bool IsOnTop(HWND window) {
  return GetWindowLongPtrW(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&ListViewWindowProc);
}

// A host may place several controls, each with its own grid. An entry lives until its window is
// gone or has its procedure back.
WindowMap<ListViewHook::Entry> entries;

void Remove(HWND grid, ListViewHook::Entry* entry) {
  entries.Remove(grid);
  delete entry;
}

}  // namespace

ListViewHook::ListViewHook(HWND grid, GridWatcher& watcher)
    : grid_(grid), entry_(new Entry{.watcher = &watcher}) {
  entries.Add(grid_, entry_);
  entry_->OldListViewProc = SetProcedure(grid_, &ListViewWindowProc);
}

// Where somebody has taken over the procedure since then, he calls this one as the earlier: putting
// the list view's back would take his out, and he would put this one back later. So it stays, and
// passes everything on.
ListViewHook::~ListViewHook() {
  if (entries.Find(grid_) != entry_) return;  // the window has gone before
  entry_->watcher = nullptr;
  if (!IsOnTop(grid_)) return;
  SetProcedure(grid_, entry_->OldListViewProc);
  Remove(grid_, entry_);
}

LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  ListViewHook::Entry* entry = entries.Find(window);
  if (!entry) return message == WM_NCDESTROY ? DefWindowProcW(window, message, wparam, lparam) : 0;
  // Taken beforehand: a handler may remove the hook while it runs.
  const WNDPROC procedure = entry->OldListViewProc;
  if (message == WM_NCDESTROY) {
    // The last message, which the list view needs to free what it holds, whatever a watcher
    // answers.
    Remove(window, entry);
  } else if (entry->watcher) {
    if (const auto answer = entry->watcher->BeforeGrid(message, wparam, lparam)) return *answer;
  }
  return CallWindowProcW(procedure, window, message, wparam, lparam);
}

}  // namespace rdv::win32
