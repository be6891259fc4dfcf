#include "widgets/win32/frame_window.h"

#include <utility>

#include "widgets/win32/editor_window.h"
#include "widgets/win32/form_messages.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/wide.h"

namespace rdv::win32 {
namespace {

constexpr Twips kCaptionIndent = 120;
constexpr Twips kCaptionMargin = 30;

// Of this thread: a wheel message that a frame has passed on is under way.
thread_local bool passing_wheel = false;

}  // namespace

FrameWindow::FrameWindow(HWND parent, int id, const wchar_t* caption) {
  Create(parent, {.window_class = RegisteredClass(parent),
                  .text = caption,
                  .style = WS_VISIBLE | WS_CLIPCHILDREN,
                  .extended_style = WS_EX_CONTROLPARENT,
                  .id = id});
}

const wchar_t* FrameWindow::RegisteredClass(HWND parent) {
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.lpfnWndProc = &Procedure;
  description.hInstance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(parent, GWLP_HINSTANCE));
  description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  description.style = CS_HREDRAW | CS_VREDRAW;
  description.lpszClassName = kClass;
  RegisterClassExW(&description);  // fails, as it should, for all frames but the first
  return kClass;
}

void FrameWindow::SetEnabled(bool enabled) {
  const HWND form = GetParent(Handle());
  if (!enabled && Enabled()) {
    const HWND focus = GetFocus();
    focus_before_ = IsChild(Handle(), focus) ? focus : nullptr;
    // First: the form hands the focus on to whatever can take it.
    EnableWindow(Handle(), FALSE);
    if (focus == Handle() || focus_before_) FocusTo(form);
  }
  WindowWidget::SetEnabled(enabled);
  if (enabled && focus_before_ && GetFocus() == form) {
    FocusTo(IsWindowVisible(focus_before_) ? focus_before_ : Handle());
    focus_before_ = nullptr;
  }
  InvalidateRect(Handle(), nullptr, TRUE);
}

LRESULT CALLBACK FrameWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto* frame = static_cast<const FrameWindow*>(TargetOf(window));
  const auto hold = HoldForm(window);
  switch (message) {
    case WM_COMMAND:
    case WM_NOTIFY: {
      const Notification notification(message, wparam, lparam);
      ReflectFocus(GetParent(window), notification);
      return ReflectNotification(notification);
    }
    case WM_SETFOCUS:
      // From an editor that is hidden: the keyboard is never left with a frame.
      if (frame && frame->main_child_ && frame->Enabled()) FocusTo(frame->main_child_);
      return 0;
    case WM_MOUSEWHEEL:
      // From a closed list that lies over the grid. What the grid does not want comes back here.
      if (frame && frame->main_child_ && !std::exchange(passing_wheel, true)) {
        const LRESULT result = SendMessageW(frame->main_child_, message, wparam, lparam);
        passing_wheel = false;
        return result;
      }
      return DefWindowProcW(window, message, wparam, lparam);
    case WM_KEYDOWN:
      if (frame && frame->main_child_) {
        FocusTo(frame->main_child_);
        return SendMessageW(frame->main_child_, message, wparam, lparam);
      }
      return 0;
    case WM_ERASEBKGND: {
      RECT area = {};
      GetClientRect(window, &area);
      FillRect(reinterpret_cast<HDC>(wparam), &area, FormBackground(GetParent(window)));
      return 1;
    }
    case WM_CTLCOLORBTN:
      return reinterpret_cast<LRESULT>(FormBackground(GetParent(window)));
    case WM_PAINT: {
      PAINTSTRUCT paint = {};
      const HDC context = BeginPaint(window, &paint);
      if (frame) frame->Paint(context);
      EndPaint(window, &paint);
      return 0;
    }
    case WM_PRINTCLIENT:
      if (frame) frame->Paint(reinterpret_cast<HDC>(wparam));
      return 0;
    default:
      return DefWindowProcW(window, message, wparam, lparam);
  }
}

void FrameWindow::Paint(HDC context) const {
  const Text caption = WindowText(Handle());
  const HWND form = GetParent(Handle());
  const HGDIOBJ previous_font = SelectObject(context, FormFont(form));
  SIZE extent = {};
  GetTextExtentPoint32W(context, Wide(caption), static_cast<int>(caption.size()), &extent);
  const Scale scale = Scale::Of(Handle());
  const int indent = scale.Pixels(kCaptionIndent);
  const int margin = scale.Pixels(kCaptionMargin);

  RECT outline = {};
  GetClientRect(Handle(), &outline);
  outline.top += extent.cy / 2;
  const int saved = SaveDC(context);
  ExcludeClipRect(context, indent - margin, 0, indent + extent.cx + margin, extent.cy);
  if (const HTHEME theme = OpenThemeData(Handle(), L"BUTTON")) {
    const int state = Enabled() ? GBS_NORMAL : GBS_DISABLED;
    DrawThemeBackground(theme, context, BP_GROUPBOX, state, &outline, nullptr);
    CloseThemeData(theme);
  } else {
    DrawEdge(context, &outline, EDGE_ETCHED, BF_RECT);
  }
  RestoreDC(context, saved);

  SetBkMode(context, TRANSPARENT);
  SetTextColor(context, Enabled() ? FormTextColor(form) : GetSysColor(COLOR_GRAYTEXT));
  TextOutW(context, indent, 0, Wide(caption), static_cast<int>(caption.size()));
  SelectObject(context, previous_font);
  PaintBorderOfMainChild(context);
}

void FrameWindow::PaintBorderOfMainChild(HDC context) const {
  if (!main_child_) return;
  RECT border = {};
  GetWindowRect(main_child_, &border);
  MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&border), 2);
  InflateRect(&border, 1, 1);
  FrameRect(context, &border, GetSysColorBrush(COLOR_3DSHADOW));
}

}  // namespace rdv::win32
