// The windows of the shown control, by the names that scripts know, and what holds for all of them.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "widgets/layout.h"
#include "widgets/refusal.h"

namespace rdv::play {

// Lengths of this program, which knows nothing of other resolutions: 96 dots per inch.
int ToPixels(Twips length);
Twips ToTwips(int pixels);

class ControlWindows {
 public:
  // `host` is the window that the control lies in.
  explicit ControlWindows(HWND host) : host_(host) {}

  HWND Frame() const;  // of the grid and the in-place editors
  HWND Grid() const;
  HWND Named(std::string_view name) const;

  // Where a window lies in the frame, in twips.
  Rectangle PlaceInFrame(HWND window) const;

  // Why the user cannot reach a window.
  Refusal WhyOutOfReach(HWND window) const;

  // The name of the window that the keyboard goes to.
  std::optional<std::string> Focused() const;

 private:
  HWND WithId(int id) const;

  const HWND host_;
};

// What the system tells of a button of the mouse.
struct ButtonMessages {
  UINT down;
  UINT up;
  WPARAM held;   // MK_...
  WORD further;  // which of the further buttons it is (XBUTTON...); 0 for another one
};

inline constexpr ButtonMessages kLeftButton = {WM_LBUTTONDOWN, WM_LBUTTONUP, MK_LBUTTON, 0};

// The button is pressed and released at a point of a window, with those keys held (MK_...).
void Click(HWND window, POINT point, WPARAM held = 0, const ButtonMessages& button = kLeftButton);

// Runs what the windows have left for later.
void HandlePendingMessages();

}  // namespace rdv::play
