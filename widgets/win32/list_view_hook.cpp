#include "widgets/win32/list_view_hook.h"

#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

// A host may place several controls, each with its own grid.
WindowMap<const ListViewHook> hooks;

WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

}  // namespace

ListViewHook::ListViewHook(HWND grid, GridWatcher& watcher) : grid_(grid), watcher_(watcher) {
  hooks.Add(grid_, this);
  OldListViewProc = SetProcedure(grid_, &ListViewWindowProc);
}

ListViewHook::~ListViewHook() {
  OldListViewProc = SetProcedure(grid_, OldListViewProc);
  hooks.Remove(grid_);
}

LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const ListViewHook* hook = hooks.Find(window);
  if (!hook) return 0;
  // Taken beforehand: a handler may remove the hook while it runs.
  const WNDPROC procedure = hook->OldListViewProc;
  if (const auto answer = hook->watcher_.BeforeGrid(message, wparam, lparam)) return *answer;
  return CallWindowProcW(procedure, window, message, wparam, lparam);
}

}  // namespace rdv::win32
