// Message boxes and the mouse pointer around the control's windows.
#pragma once

#include <memory>

#include "widgets/widget.h"
#include "widgets/win32/platform.h"

namespace rdv::win32 {

class WindowScreen : public Screen {
 public:
  explicit WindowScreen(HWND form) : form_(form) {}
  void SetForm(HWND form) { form_ = form; }

  MessageAnswer ShowMessage(TextView text, int style, std::optional<TextView> title) override;
  MousePointer Pointer() const override { return pointer_; }
  void SetPointer(MousePointer pointer) override;

  // For WM_SETCURSOR: true when the pointer has been set and the windows' own ones do not count.
  bool ShowPointer() const;

  // Before every message box; what it gives is held as long as the box stands. The host's other
  // windows are then to be disabled with ours.
  std::function<std::shared_ptr<void>()> hold_host;
  // The same for the form itself, which keeps the focus over it.
  std::function<void()> on_opening;
  std::function<void()> on_closed;

 private:
  HWND form_;
  MousePointer pointer_ = MousePointer::Default;
};

}  // namespace rdv::win32
