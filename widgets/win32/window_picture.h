// What a window and all in it show, whether they can be seen or not.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Paints the window's contents into `area` of the context, stretched to fit. False, with nothing
// painted, where the window has no size or the system paints nothing.
bool DrawWindow(HWND window, HDC context, const RECT& area);

}  // namespace rdv::win32
