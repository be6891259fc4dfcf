// The frame: a captioned group box that contains windows.
#pragma once

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

// Its children tell it what they have to tell; it passes that on to them (ReflectNotification).
// While it is disabled, neither mouse nor keyboard reaches a child.
class FrameWindow : public WindowWidget<Frame> {
 public:
  static constexpr const wchar_t* kClass = L"TLV_RDV_Line_Config.Frame";

  FrameWindow(HWND parent, int id, const wchar_t* caption);

  void SetEnabled(bool enabled) override;
  FocusCodes CodesOfFocus() const override { return {}; }

  // The child that gets a border drawn around it. When the editor that had the focus is hidden, the
  // frame has it until the next key, which goes to this child together with the focus.
  void SetMainChild(HWND child) { main_child_ = child; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  static const wchar_t* RegisteredClass(HWND parent);

  void Paint(HDC context) const;
  void PaintBorderOfMainChild(HDC context) const;

  HWND main_child_ = nullptr;
  HWND focus_before_ = nullptr;  // while the frame is disabled: the child that had the focus
};

}  // namespace rdv::win32
