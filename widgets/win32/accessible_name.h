// What a screen reader speaks for windows whose own text does not say it.
#pragma once

#include <span>

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Where the system offers no naming service the windows keep the names that it gives them itself.
void SetAccessibleName(HWND window, const wchar_t* name);
// Of an item of a list, counted from 1.
void SetAccessibleItemName(HWND list, int item, const wchar_t* name);
// The keys that press a button.
void SetAccessibleShortcut(HWND window, const wchar_t* keys);
// Before the windows go: the system keeps what was set until it is told to forget it.
void ForgetAccessibleTexts(std::span<const HWND> windows);
// The same for as many items, before they go.
void ForgetAccessibleItems(HWND list, int count);

}  // namespace rdv::win32
