// What windows this Windows can make.
#pragma once

#include <windows.h>

namespace rdv::test {

// The 32-bit half of a Wine that is not fully installed has no memory device contexts, and without
// one it makes no drop-down list: the control cannot be placed there at all.
inline constexpr const char* kNoDropDownLists =
    "this system makes no drop-down list for programs of this word size";

inline bool MakesDropDownLists() {
  const HWND list = CreateWindowExW(0, L"COMBOBOX", L"", CBS_DROPDOWNLIST, 0, 0, 10, 10, nullptr,
                                    nullptr, nullptr, nullptr);
  if (list) DestroyWindow(list);
  return list != nullptr;
}

}  // namespace rdv::test
