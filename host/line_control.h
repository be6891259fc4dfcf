// The line configuration control, as a host uses it.
#pragma once

#include <functional>
#include <optional>

#include "host/control_site.h"

namespace rdvhost {

// One control on one window. Create, Show, then Remove when it asks to be taken away; after that
// it can be created again.
class LineControl {
 public:
  // The control will lie in `window`, in the rectangle that `place` answers.
  LineControl(HWND window, std::function<RECT()> place) : window_(window), place_(place) {}
  LineControl(const LineControl&) = delete;
  LineControl& operator=(const LineControl&) = delete;
  ~LineControl() { Remove(); }

  // See ControlSite::on_remove_me.
  std::function<void()> on_remove_me;

  // From the registered class, placed and visible.
  HRESULT Create();
  bool Exists() const { return static_cast<bool>(object_); }
  void Remove();

  // Loads and shows the lines of a configuration. The control itself tells the user of failures.
  bool Show(SHORT configuration);

  // After the window has another size.
  void Resize();

  // Offers a message of the message loop to the control; true when it has used it.
  bool Translate(MSG& message);

  void GiveFocus();

 private:
  HRESULT Connect();

  const HWND window_;
  const std::function<RECT()> place_;
  Com<IOleObject> object_;
  Com<ControlSite> site_;
  Com<IConnectionPoint> events_;
  DWORD events_cookie_ = 0;
};

}  // namespace rdvhost
