// Where a form's windows lie while no container shows them.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

class FormWindow;

// Never seen. The system tells only windows without a parent of changed colours and settings, and a
// container need not pass that on: this window does, wherever the form's windows lie.
class ParkingWindow {
 public:
  static constexpr const wchar_t* kClass = L"TLV_RDV_Line_Config.Parking";

  explicit ParkingWindow(HINSTANCE module);
  ParkingWindow(const ParkingWindow&) = delete;
  ParkingWindow& operator=(const ParkingWindow&) = delete;
  ~ParkingWindow();
  HWND Handle() const { return window_; }

  // `form` is there whenever this window is sent a message of the system.
  void TellOfChanges(const FormWindow& form);

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  HWND window_;
};

}  // namespace rdv::win32
