// The form as a picture, drawn without any window: for designers, printers and metafiles.
#pragma once

#include "widgets/win32/form_window.h"

namespace rdv::win32 {

// Draws the form of the size `extent`, in hundredths of a millimetre, into `area` of the context,
// stretched to fit.
void DrawForm(HDC context, const RECT& area, SIZEL extent, const Appearance& appearance,
              const GridContent& content);

}  // namespace rdv::win32
