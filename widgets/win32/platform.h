// The platform's headers in the one order that they can be read in.
#pragma once

// clang-format off
#include <windows.h>
#include <windowsx.h>
#include <commctrl.h>
#include <uxtheme.h>
#include <vssym32.h>
// clang-format on
