#include "widgets/win32/list_view_hook.h"

namespace rdv::win32 {
namespace {

// The window carries its hook: a host may place several controls, each with its own grid.
constexpr const wchar_t* kHookProperty = L"TLV_RDV_Line_Config.ListViewHook";

WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

}  // namespace

ListViewHook::ListViewHook(HWND grid, GridWatcher& watcher) : grid_(grid), watcher_(watcher) {
  SetPropW(grid_, kHookProperty, this);
  OldListViewProc = SetProcedure(grid_, &ListViewWindowProc);
}

ListViewHook::~ListViewHook() {
  OldListViewProc = SetProcedure(grid_, OldListViewProc);
  RemovePropW(grid_, kHookProperty);
}

LRESULT CALLBACK ListViewWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto* hook = static_cast<const ListViewHook*>(GetPropW(window, kHookProperty));
  if (!hook) return 0;
  // Taken beforehand: a handler may remove the hook while it runs.
  const WNDPROC procedure = hook->OldListViewProc;
  if (const auto answer = hook->watcher_.BeforeGrid(message, wparam, lparam)) return *answer;
  return CallWindowProcW(procedure, window, message, wparam, lparam);
}

}  // namespace rdv::win32
