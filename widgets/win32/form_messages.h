// What the form's frames and grid ask of the form window that they lie in.
#pragma once

#include <memory>

#include "widgets/win32/platform.h"
#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

// The brush is the form's or the system's: not to be deleted.
HBRUSH FormBackground(HWND form);
COLORREF FormTextColor(HWND form);
HFONT FormFont(HWND form);

// Keeps all that the form belongs to until the result goes: a window procedure runs code of which a
// container may let go meanwhile. `window` is the form or lies in it, at any depth.
std::shared_ptr<void> HoldForm(HWND window);

// The form's window that `window` is or lies in; null where there is none.
HWND FormAround(HWND window);

// Lets the form know when a child tells that it has gained or lost the focus.
void ReflectFocus(HWND form, const Notification& notification);

// Lets the form around `window` know of a press there: no focus changes where it was already.
void ReflectPress(HWND window);

}  // namespace rdv::win32
