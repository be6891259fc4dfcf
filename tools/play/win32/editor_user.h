// The user at a drop-down list or a text box.
#pragma once

#include <windows.h>

#include "tools/play/driver.h"
#include "tools/play/win32/control_windows.h"

namespace rdv::play {

class EditorUser {
 public:
  EditorUser(const ControlWindows& windows, std::string_view name)
      : EditorUser(windows, windows.Named(name)) {}
  EditorUser(const ControlWindows& windows, HWND editor) : windows_(windows), window_(editor) {}

  Refusal Pick(int index);
  Refusal Type(TextView text);
  Refusal Paste(TextView text);

  EditorSeen Editor() const;
  ListSeen List() const;

 private:
  bool IsList() const;
  HWND TextPart() const;
  Refusal WhyNotTypeable() const;
  void SelectAll() const;
  Text Shown() const;

  const ControlWindows& windows_;
  const HWND window_;
};

}  // namespace rdv::play
