#include "widgets/win32/screen_window.h"

#include "runtime/error.h"
#include "widgets/message_text.h"
#include "widgets/win32/editor_window.h"
#include "widgets/win32/wide.h"

namespace rdv::win32 {

MessageAnswer WindowScreen::ShowMessage(TextView text, int style, std::optional<TextView> title) {
  const HWND host = GetAncestor(form_, GA_ROOT);
  const HWND owner = IsWindowVisible(host) ? host : nullptr;
  Text caption = MessageText(title ? Text(*title) : WindowText(host));
  if (caption.empty()) caption = kProductSource;
  const Text message = MessageText(text);
  if (on_opening) on_opening();
  auto held = hold_host ? hold_host() : nullptr;
  const int answer = MessageBoxW(owner, Wide(message), Wide(caption),
                                 static_cast<UINT>(style) | (owner ? MB_APPLMODAL : MB_TASKMODAL));
  held.reset();
  if (on_closed) on_closed();
  return static_cast<MessageAnswer>(answer);
}

void WindowScreen::SetPointer(MousePointer pointer) {
  pointer_ = pointer;
  if (!ShowPointer()) SetCursor(LoadCursorW(nullptr, IDC_ARROW));
}

bool WindowScreen::ShowPointer() const {
  if (pointer_ != MousePointer::Hourglass) return false;
  SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  return true;
}

}  // namespace rdv::win32
