// The form as a child window: all its widgets, laid out in the size that it is given.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "widgets/form.h"
#include "widgets/layout.h"
#include "widgets/win32/button_window.h"
#include "widgets/win32/combo_box_window.h"
#include "widgets/win32/font.h"
#include "widgets/win32/form_messages.h"
#include "widgets/win32/frame_window.h"
#include "widgets/win32/keyboard_walk.h"
#include "widgets/win32/line_grid_window.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/screen_window.h"
#include "widgets/win32/text_box_window.h"
#include "widgets/win32/wished_color.h"

namespace rdv::win32 {

// What a container may wish for; nothing stands for the system's own.
struct Appearance {
  std::optional<FontDescription> font;
  std::optional<WishedColor> background;
  std::optional<WishedColor> text_color;

  bool operator==(const Appearance&) const = default;
};

struct WindowParts {
  using Frame = FrameWindow;
  using Grid = LineGridWindow;
  using List = ComboBoxWindow;
  using TextBox = TextBoxWindow;
  using Button = ButtonWindow;
};

class FormWindowHandle {
 public:
  FormWindowHandle(HINSTANCE module, HWND parent);
  FormWindowHandle(const FormWindowHandle&) = delete;
  FormWindowHandle& operator=(const FormWindowHandle&) = delete;
  ~FormWindowHandle() { DestroyWindow(window_); }
  operator HWND() const { return window_; }

  // Where there is none.
  void MakeAnew(HWND parent);

 private:
  const HINSTANCE module_;
  HWND window_;
};

// Before the module with the windows' procedures is unloaded. No form may be left.
void UnregisterFormClasses(HINSTANCE module);

// One thread. The window is created hidden and without a size; move it as any window. It follows
// the resolution, the colours and the theme of its screen by itself. What the widgets hold outlives
// the windows, by whomever they are destroyed.
class FormWindow {
 public:
  // Needs the common controls' list view classes, which it asks the system to register.
  FormWindow(HINSTANCE module, HWND parent, const GridContent& content);
  ~FormWindow();

  HWND Handle() const { return window_; }
  const Form& Widgets() const { return form_; }
  KeyboardWalk& Keyboard() { return keyboard_; }
  WindowScreen& Screen() { return screen_; }

  bool WindowsExist() const { return IsWindow(window_) != FALSE; }
  // Into `parent`, as it is or, where the system does not allow that, made anew: the system puts no
  // window into one of another awareness of resolutions, and the awareness of a window never
  // changes. Raises RuntimeError when it cannot be made; without windows then.
  void PutInto(HWND parent);
  // The same, but nothing is made: false where the windows cannot be put there.
  bool TryPutInto(HWND parent);
  void DestroyWindows();

  // What is to live on, with the form in it, while one of the form's windows is at work.
  void KeepAlive(std::weak_ptr<void> owner) { owner_ = std::move(owner); }

  void SetAppearance(Appearance appearance);
  // After the window has come to another parent, perhaps on a screen of another resolution.
  void FollowScreen();
  // The same for whether mnemonics are underlined and the focus is framed: a container that is used
  // with the mouse may hide both until a key is pressed, and tells only the windows in it.
  void FollowCues();

  // A window inside was given the focus, or pressed while one has it; or the focus is not, or no
  // longer, inside. Comes more often than either changes.
  std::function<void(bool inside)> on_focus;
  // A container has destroyed the windows while a message box stood: once for the container's own
  // account of them, then, where there are still none, to make them. Whoever has asked the user
  // goes on and needs what the widgets hold.
  std::function<void()> on_windows_gone;
  std::function<void()> make_windows;
  // The keyboard has come to an in-place editor or left it (KeyboardWalk::Editing).
  std::function<void()> on_editing_change;

 private:
  friend class FormWindowHandle;
  friend HWND FormAround(HWND window);
  friend std::shared_ptr<void> HoldForm(HWND window);
  friend HBRUSH FormBackground(HWND form);
  friend COLORREF FormTextColor(HWND form);
  friend HFONT FormFont(HWND form);

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wparam, LPARAM lparam);
  void LeaveWindows();
  void MakeAnew(HWND parent);
  void Finish();
  void AfterBox();
  template <size_t i>
  auto MakeWidget() const;
  HWND ContainerOf(const WidgetEntry& entry) const;
  void NameWidgets();
  // Of an editor that is about to be seen over a cell of the grid.
  Text NameOverCell(const Editor& editor, TextView name) const;
  void NameRow(int row) const;
  void ForgetNames() const;
  void Refresh();
  void Layout();
  void ApplyFont();
  TextSizes MeasureTexts() const;
  void FollowSystemFont();
  void RefreshColors();
  void TellCommonControls(UINT message, WPARAM wparam, LPARAM lparam) const;
  void CheckFocus(bool gained);

  const GridContent content_;
  FormWindowHandle window_;
  Scale scale_;
  Font font_;
  TextSizes texts_;  // in that font
  Appearance appearance_;
  HBRUSH background_ = nullptr;  // of the appearance; null = one of the system's
  bool editing_ = false;
  HWND focus_before_box_ = nullptr;  // where it was when the message box came up, if inside
  bool making_ = false;              // windows that go now hold nothing yet
  std::weak_ptr<void> owner_;

  FormWidgets<WindowParts> widgets_;
  WindowScreen screen_;

  const Form form_;
  KeyboardWalk keyboard_;
};

}  // namespace rdv::win32
