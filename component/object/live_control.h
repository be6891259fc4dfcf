// The running control: its windows and the logic that drives them.
#pragma once

#include <functional>
#include <memory>

#include "component/com/module.h"
#include "control/line_config_control.h"
#include "widgets/win32/form_window.h"

namespace rdv {

// A window that is never seen: the control's windows lie in it while no container shows them. The
// system tells only windows without a parent of changed colours and settings, and a container need
// not pass that on: this window does.
class ParkingWindow {
 public:
  ParkingWindow();
  ParkingWindow(const ParkingWindow&) = delete;
  ParkingWindow& operator=(const ParkingWindow&) = delete;
  ~ParkingWindow();
  HWND Handle() const { return window_; }
  // Who is to be told, wherever it lies.
  void TellOfChanges(HWND form) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(form));
  }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                    UINT_PTR id, DWORD_PTR unused);

  const HWND window_;
};

// Made in the parking window, so that a host can load lines before it places the control, and the
// lines stay when it takes the control out of a window and into another.
class LiveControl {
 public:
  static std::shared_ptr<LiveControl> Create();

  bool ShowControl(int16_t config_id) { return control_.ShowControl(config_id); }
  void AssignIndextoDefaultBox(int16_t line1_type, int16_t line5_type) {
    control_.AssignIndextoDefaultBox(line1_type, line5_type);
  }
  win32::FormWindow& Form() { return form_; }
  // False once a container has destroyed the windows together with its own.
  bool WindowsExist() const { return IsWindow(form_.Handle()) != FALSE; }

  // Shows the form in a container's window, in pixels of that window. The system may refuse to put
  // it there: into a window of another awareness of resolutions, or one that is just going.
  HRESULT PlaceIn(HWND parent, const RECT& place, const RECT& clip, bool reachable);
  void Move(const RECT& place, const RECT& clip);
  void Park();
  // Whether the user's keys and mouse get to the form.
  void SetReachable(bool reachable);
  // To the container's window, if any of the control's has it.
  void GiveFocusBack();

  void OnRemoveMe(std::function<void()> handler) { control_.RemoveME = std::move(handler); }

 private:
  LiveControl();

  const ModuleLock lock_;  // its window procedures may still run when the object is gone
  ParkingWindow parking_;
  win32::FormWindow form_;
  ucRDVLineConfig control_;
};

}  // namespace rdv
