// Names that a screen reader speaks for windows whose own text is not their name.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Where the system offers no naming service the windows keep the names that it gives them itself.
void SetAccessibleName(HWND window, const wchar_t* name);

}  // namespace rdv::win32
