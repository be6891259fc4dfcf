// The running control: its windows and the logic that drives them.
#pragma once

#include <functional>
#include <memory>

#include "component/com/module.h"
#include "control/line_config_control.h"
#include "widgets/win32/form_window.h"
#include "widgets/win32/parking_window.h"

namespace rdv {

// Made in the parking window, so that a host can load lines before it places the control. The lines
// and all that the user has done to them stay when it takes the control out of a window and into
// another, and when the windows are destroyed.
class LiveControl {
 public:
  static std::shared_ptr<LiveControl> Create();

  bool ShowControl(int16_t config_id) { return control_.ShowControl(config_id); }
  void AssignIndextoDefaultBox(int16_t line1_type, int16_t line5_type) {
    control_.AssignIndextoDefaultBox(line1_type, line5_type);
  }
  win32::FormWindow& Form() { return form_; }
  // False once a container has destroyed the windows together with its own, or has closed the
  // control.
  bool WindowsExist() const { return form_.WindowsExist(); }
  // Where there are none: in the parking window. Raises RuntimeError.
  void MakeWindows();
  void DestroyWindows();

  // Shows the form in a container's window, in pixels of that window. Fails where the system
  // makes no windows, as in a window that is just going; without windows then.
  HRESULT PlaceIn(HWND parent, const RECT& place, const RECT& clip, bool reachable);
  void Move(const RECT& place, const RECT& clip);
  void Show() { ShowWindow(form_.Handle(), SW_SHOWNA); }
  void Hide();
  void Park();
  // Whether the user's keys and mouse get to the form.
  void SetReachable(bool reachable);
  // To the container's window, if any of the control's has it.
  void GiveFocusBack();

  void OnRemoveMe(std::function<void()> handler) { control_.RemoveME = std::move(handler); }

 private:
  LiveControl();

  const ModuleLock lock_;  // its window procedures may still run when the object is gone
  win32::ParkingWindow parking_;
  win32::FormWindow form_;
  ucRDVLineConfig control_;
};

}  // namespace rdv
