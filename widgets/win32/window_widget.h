// What every widget on a platform window shares. A widget owns its window; when the window is
// destroyed from outside (a host that tears its form down), calls on the widget do nothing.
#pragma once

#include <optional>

#include "widgets/widget.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/scale.h"

namespace rdv::win32 {

// By which notification codes a window's class tells that the window has gained or lost the focus;
// those of different classes mean different things by the same number. None where it tells nothing.
struct FocusCodes {
  std::optional<UINT> gained;
  std::optional<UINT> lost;
};

// Receives what a child window tells its parent; the parent passes it on.
class NotificationTarget {
 public:
  virtual ~NotificationTarget() = default;
  virtual void OnCommand(WORD code) = 0;
  virtual LRESULT OnNotify(const NMHDR& /*header*/) { return 0; }
  virtual FocusCodes CodesOfFocus() const = 0;
};

// A WM_COMMAND or WM_NOTIFY.
struct Notification {
  Notification(UINT message, WPARAM wparam, LPARAM lparam);

  const NMHDR* header;         // null for a WM_COMMAND
  NotificationTarget* target;  // null where the sender is no window of CreateChild's
  UINT code;
};

// A widget whose window may go and come back while the widget stays: a container destroys the
// control's windows with its own, or wants them where those that there are cannot be put. What the
// user has not saved is in the widgets.
class Lasting {
 public:
  virtual ~Lasting() = default;
  // Keeps what the window shows: it is about to be destroyed.
  virtual void Remember() = 0;
  // A new window in `parent` that shows what was kept; no handler runs. It has neither a place nor
  // a font yet. Raises as MakeWindow does; what was kept is kept then.
  virtual void MakeAnew(HWND parent) = 0;
};

// The texts are literals.
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

// The target of a window that CreateChild made; null for all others and where its widget is gone.
NotificationTarget* TargetOf(HWND child);
// One of the two is about to go. False where the window was forgotten before: by now the system may
// have given its handle to another.
bool ForgetTarget(HWND child, const NotificationTarget* target);

// Hands it to its target. Nothing thrown leaves it: the caller is a window procedure.
LRESULT ReflectNotification(const Notification& notification) noexcept;

void MoveTo(HWND window, const RECT& place);

// To the window unless it lies, still unplaced, in a hidden window.
void FocusTo(HWND window);

// The window or a part of it has the keyboard.
bool HasFocus(HWND window);

// For a list that takes no more; the platform says nothing more about why.
[[noreturn]] void RaiseOutOfMemory();

// To the parent, where the window or a part of it has the keyboard: one that the user cannot reach
// any more must not keep it. The parent may hand it on.
void GiveUpFocus(HWND window);

template <class Contract>
class WindowWidget : public Contract, public NotificationTarget, public Lasting {
 public:
  ~WindowWidget() override {
    if (ForgetTarget(window_, this)) DestroyWindow(window_);
  }

  HWND Handle() const { return window_; }

  bool Visible() const override { return (GetWindowLongW(window_, GWL_STYLE) & WS_VISIBLE) != 0; }
  void SetVisible(bool visible) override {
    ShowWindow(window_, visible ? SW_SHOWNA : SW_HIDE);
    if (!visible) GiveUpFocus(window_);
  }
  bool Enabled() const override { return IsWindowEnabled(window_) != FALSE; }
  void SetEnabled(bool enabled) override {
    EnableWindow(window_, enabled);
    if (!enabled) GiveUpFocus(window_);
  }
  bool Focused() const override { return HasFocus(window_); }
  void SetFocus() override { FocusTo(window_); }

  void OnCommand(WORD /*code*/) override {}

  void Remember() override {
    visible_ = Visible();
    enabled_ = Enabled();
  }
  void MakeAnew(HWND parent) override {
    WindowDescription description = description_;
    description.style &= ~static_cast<DWORD>(WS_VISIBLE);
    window_ = CreateChild(parent, description, this);
    OnMade();
    EnableWindow(window_, enabled_);
    if (visible_) ShowWindow(window_, SW_SHOWNA);
  }

 protected:
  WindowWidget() = default;
  void Create(HWND parent, const WindowDescription& description) {
    description_ = description;
    window_ = CreateChild(parent, description, this);
  }
  // What a new window needs before anything is shown in it. A constructor calls its own.
  virtual void OnMade() {}

 private:
  HWND window_ = nullptr;
  WindowDescription description_ = {};
  bool visible_ = false;
  bool enabled_ = true;
};

}  // namespace rdv::win32
