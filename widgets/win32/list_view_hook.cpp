#include "widgets/win32/list_view_hook.h"

#include <algorithm>
#include <vector>

namespace rdv::win32 {
namespace {

// Those of this thread's grids: a host may place several controls. Looked through for every message
// of a grid, which a property of the window would make a question to the system.
thread_local std::vector<const ListViewHook*> hooks;

WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

}  // namespace

ListViewHook::ListViewHook(HWND grid, GridWatcher& watcher) : grid_(grid), watcher_(watcher) {
  hooks.push_back(this);
  OldListViewProc = SetProcedure(grid_, &ListViewWindowProc);
}

ListViewHook::~ListViewHook() {
  OldListViewProc = SetProcedure(grid_, OldListViewProc);
  std::erase(hooks, this);
}

LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto found = std::find_if(hooks.begin(), hooks.end(),
                                  [&](const ListViewHook* hook) { return hook->grid_ == window; });
  if (found == hooks.end()) return 0;
  const ListViewHook* hook = *found;
  // Taken beforehand: a handler may remove the hook while it runs.
  const WNDPROC procedure = hook->OldListViewProc;
  if (const auto answer = hook->watcher_.BeforeGrid(message, wparam, lparam)) return *answer;
  return CallWindowProcW(procedure, window, message, wparam, lparam);
}

}  // namespace rdv::win32
