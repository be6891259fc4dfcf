// What a cell of the control's grid shows.
#pragma once

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include <string>

namespace rdv::test {

// Rows and columns count from 1. Texts of more than 63 units are cut.
inline std::wstring GridText(HWND grid, int row, int column) {
  wchar_t text[64] = L"";
  LVITEMW item = {};
  item.iSubItem = column - 1;
  item.pszText = text;
  item.cchTextMax = 64;
  SendMessageW(grid, LVM_GETITEMTEXTW, static_cast<WPARAM>(row - 1),
               reinterpret_cast<LPARAM>(&item));
  return text;
}

}  // namespace rdv::test
