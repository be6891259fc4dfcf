#include "widgets/win32/parking_window.h"

#include "widgets/win32/form_window.h"
#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

WindowMap<const FormWindow>& FormsToTell() {
  static WindowMap<const FormWindow> forms;
  return forms;
}

}  // namespace

ParkingWindow::ParkingWindow(HINSTANCE module) {
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.lpfnWndProc = &Procedure;
  description.hInstance = module;
  description.lpszClassName = kClass;
  RegisterClassExW(&description);  // fails, as it should, for all but the first
  window_ = MakeWindow(module, nullptr, {.window_class = kClass, .style = WS_POPUP});
}

ParkingWindow::~ParkingWindow() {
  FormsToTell().Remove(window_);
  DestroyWindow(window_);
}

void ParkingWindow::TellOfChanges(const FormWindow& form) {
  FormsToTell().Add(window_, &form);
}

LRESULT CALLBACK ParkingWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const FormWindow* form = FormsToTell().Find(window);
  const bool passed_on = message == WM_SYSCOLORCHANGE || message == WM_SETTINGCHANGE;
  if (form && passed_on && form->WindowsExist())
    SendMessageW(form->Handle(), message, wparam, lparam);
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace rdv::win32
