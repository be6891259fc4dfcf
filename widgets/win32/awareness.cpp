#include "widgets/win32/awareness.h"

namespace rdv::win32 {
namespace {

// From Windows 10 on; contexts are opaque handles.
struct AwarenessFunctions {
  void*(WINAPI* of_window)(HWND);
  BOOL(WINAPI* equal)(void*, void*);
  void*(WINAPI* set_for_thread)(void*);

  bool Known() const { return of_window && equal && set_for_thread; }
};

template <class Function>
void Find(const char* name, Function& function) {
  function = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

const AwarenessFunctions& System() {
  static const AwarenessFunctions functions = [] {
    AwarenessFunctions found = {};
    Find("GetWindowDpiAwarenessContext", found.of_window);
    Find("AreDpiAwarenessContextsEqual", found.equal);
    Find("SetThreadDpiAwarenessContext", found.set_for_thread);
    return found;
  }();
  return functions;
}

}  // namespace

bool ShareAwareness(HWND left, HWND right) {
  const AwarenessFunctions& system = System();
  return !system.Known() || system.equal(system.of_window(left), system.of_window(right)) != FALSE;
}

AwarenessOf::AwarenessOf(HWND window) {
  const AwarenessFunctions& system = System();
  if (system.Known() && window) before_ = system.set_for_thread(system.of_window(window));
}

AwarenessOf::~AwarenessOf() {
  if (before_) System().set_for_thread(before_);
}

}  // namespace rdv::win32
