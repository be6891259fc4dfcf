// What every widget on a platform window shares. A widget owns its window; when the window is
// destroyed from outside (a host that tears its form down), calls on the widget do nothing.
#pragma once

#include "widgets/win32/platform.h"
#include "widgets/win32/scale.h"

namespace rdv::win32 {

// Receives what a child window tells its parent; the parent passes it on.
class NotificationTarget {
 public:
  virtual ~NotificationTarget() = default;
  virtual void OnCommand(WORD code) = 0;
  virtual LRESULT OnNotify(const NMHDR& /*header*/) { return 0; }
};

struct WindowDescription {
  const wchar_t* window_class;
  const wchar_t* text = L"";
  DWORD style = 0;
  DWORD extended_style = 0;
  int id = 0;
};

// Raises RuntimeError with the platform's error when the window cannot be created; its number is
// never 0. The window has no size yet.
HWND MakeWindow(HINSTANCE module, HWND parent, const WindowDescription& description);

// The same for a window in `parent`; WS_CHILD and WS_CLIPSIBLINGS are added to its style.
HWND CreateChild(HWND parent, WindowDescription description, NotificationTarget* target);

// Null where the child's widget is gone.
NotificationTarget* TargetOf(HWND child);

// Hands a WM_COMMAND or WM_NOTIFY of a child made by CreateChild to its target. Nothing thrown
// leaves it: the caller is a window procedure.
LRESULT ReflectNotification(UINT message, WPARAM wparam, LPARAM lparam) noexcept;

void MoveTo(HWND window, const RECT& place);

// To the window unless it lies, still unplaced, in a hidden window.
void FocusTo(HWND window);

// The window or a part of it has the keyboard.
bool HasFocus(HWND window);

// To the parent, where the window or a part of it has the keyboard: one that the user cannot reach
// must not keep it.
void GiveUpFocus(HWND window);

template <class Contract>
class WindowWidget : public Contract, public NotificationTarget {
 public:
  ~WindowWidget() override {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
  }

  HWND Handle() const { return window_; }

  bool Visible() const override { return (GetWindowLongW(window_, GWL_STYLE) & WS_VISIBLE) != 0; }
  void SetVisible(bool visible) override {
    if (!visible) GiveUpFocus(window_);
    ShowWindow(window_, visible ? SW_SHOWNA : SW_HIDE);
  }
  bool Enabled() const override { return IsWindowEnabled(window_) != FALSE; }
  void SetEnabled(bool enabled) override {
    if (!enabled) GiveUpFocus(window_);
    EnableWindow(window_, enabled);
  }
  bool Focused() const override { return HasFocus(window_); }
  void SetFocus() override { FocusTo(window_); }

  void OnCommand(WORD /*code*/) override {}

 protected:
  WindowWidget() = default;
  void Create(HWND parent, const WindowDescription& description) {
    window_ = CreateChild(parent, description, this);
  }

 private:
  HWND window_ = nullptr;
};

}  // namespace rdv::win32
