#include "widgets/win32/window_widget.h"

#include "runtime/error.h"
#include "widgets/win32/wide.h"
#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

[[noreturn]] void RaiseLastError() {
  DWORD code = GetLastError();
  // A hook or the window itself may refuse without a word about why.
  if (code == ERROR_SUCCESS) code = ERROR_CAN_NOT_COMPLETE;
  wchar_t text[256] = L"";
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                code, 0, text, 256, nullptr);
  while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) --length;
  throw RuntimeError(static_cast<int32_t>(code), FromWide({text, length}), Text(kProductSource));
}

// The widgets of the windows made here.
WindowMap<NotificationTarget>& Targets() {
  static WindowMap<NotificationTarget> targets;
  return targets;
}

}  // namespace

HWND MakeWindow(HINSTANCE module, HWND parent, const WindowDescription& description) {
  // A refusal need not set an error: one of an earlier call must not be taken for its.
  SetLastError(ERROR_SUCCESS);
  const HWND window = CreateWindowExW(description.extended_style, description.window_class,
                                      description.text, description.style, 0, 0, 0, 0, parent,
                                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(description.id)),
                                      module, nullptr);
  if (!window) RaiseLastError();
  return window;
}

HWND CreateChild(HWND parent, WindowDescription description, NotificationTarget* target) {
  description.style |= WS_CHILD | WS_CLIPSIBLINGS;
  const auto module = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(parent, GWLP_HINSTANCE));
  const HWND window = MakeWindow(module, parent, description);
  Targets().Add(window, target);
  return window;
}

bool ForgetTarget(HWND child, const NotificationTarget* target) {
  if (Targets().Find(child) != target) return false;
  Targets().Remove(child);
  return true;
}

NotificationTarget* TargetOf(HWND child) {
  return Targets().Find(child);
}

Notification::Notification(UINT message, WPARAM wparam, LPARAM lparam)
    : header(message == WM_NOTIFY ? reinterpret_cast<const NMHDR*>(lparam) : nullptr) {
  target = TargetOf(header ? header->hwndFrom : reinterpret_cast<HWND>(lparam));
  code = header ? header->code : HIWORD(wparam);
}

LRESULT ReflectNotification(const Notification& notification) noexcept {
  LRESULT result = 0;
  AnswerEvent([&] {
    if (!notification.target) return;
    if (notification.header) {
      result = notification.target->OnNotify(*notification.header);
    } else {
      notification.target->OnCommand(static_cast<WORD>(notification.code));
    }
  });
  return result;
}

void MoveTo(HWND window, const RECT& place) {
  SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void FocusTo(HWND window) {
  if (IsWindowVisible(GetAncestor(window, GA_ROOT))) ::SetFocus(window);
}

bool HasFocus(HWND window) {
  const HWND focus = GetFocus();
  return focus && (focus == window || IsChild(window, focus));
}

void RaiseOutOfMemory() {
  throw RuntimeError(7, u"Out of memory", Text(kProductSource));
}

void GiveUpFocus(HWND window) {
  if (HasFocus(window)) FocusTo(GetParent(window));
}

}  // namespace rdv::win32
