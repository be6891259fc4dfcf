#include "tests/component/support/bare_windows.h"

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include "tests/component/support/library.h"

namespace rdv::test {
namespace {

bool Is(const std::wstring& window_class, const wchar_t* name) {
  return lstrcmpiW(window_class.c_str(), name) == 0;
}

// The others make their own children.
bool IsPlain(const std::wstring& window_class) {
  return !Is(window_class, L"COMBOBOX") && !Is(window_class, WC_LISTVIEWW);
}

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = L"";
  GetClassNameW(window, name, 64);
  // The control's own classes are in its library.
  const std::wstring found = name;
  const bool known = Is(found, L"COMBOBOX") || Is(found, L"EDIT") || Is(found, L"BUTTON") ||
                     Is(found, WC_LISTVIEWW);
  return known ? found : L"STATIC";
}

int Get(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
  return static_cast<int>(SendMessageW(window, message, wparam, lparam));
}

HWND Make(const std::wstring& window_class, const std::wstring& text, DWORD extended_style,
          DWORD style, const RECT& place, HWND parent) {
  return CreateWindowExW(extended_style, window_class.c_str(), text.c_str(), style, place.left,
                         place.top, place.right - place.left, place.bottom - place.top, parent,
                         nullptr, nullptr, nullptr);
}

}  // namespace

BareWindows::BareWindows(HWND form) {
  Look(form, -1);
}

void BareWindows::Look(HWND window, int parent) {
  Window seen = {};
  seen.parent = parent;
  seen.window_class = ClassOf(window);
  wchar_t text[64] = L"";
  GetWindowTextW(window, text, 64);
  seen.text = text;
  seen.style = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE));
  seen.extended_style = static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE));
  GetWindowRect(window, &seen.place);
  MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&seen.place), 2);
  if (Is(seen.window_class, L"STATIC")) seen.style = WS_CHILD | WS_VISIBLE;
  if (Is(seen.window_class, L"COMBOBOX")) LookAtEntries(window, seen);
  if (Is(seen.window_class, WC_LISTVIEWW)) LookAtCells(window, seen);
  windows_.push_back(seen);
  if (!IsPlain(seen.window_class)) return;
  const int index = Count() - 1;
  for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    Look(child, index);
  }
}

void BareWindows::LookAtEntries(HWND list, Window& window) {
  for (int index = 0; index < Get(list, CB_GETCOUNT); ++index) {
    const auto position = static_cast<WPARAM>(index);
    std::wstring entry(static_cast<size_t>(Get(list, CB_GETLBTEXTLEN, position)) + 1, L'\0');
    Get(list, CB_GETLBTEXT, position, reinterpret_cast<LPARAM>(entry.data()));
    window.entries.push_back(entry.c_str());
  }
}

void BareWindows::LookAtCells(HWND grid, Window& window) {
  window.list_style = static_cast<DWORD>(Get(grid, LVM_GETEXTENDEDLISTVIEWSTYLE));
  const auto header = reinterpret_cast<HWND>(SendMessageW(grid, LVM_GETHEADER, 0, 0));
  for (int column = 0; column < Get(header, HDM_GETITEMCOUNT); ++column) {
    window.columns.push_back(Get(grid, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column)));
  }
  for (int row = 0; row < Get(grid, LVM_GETITEMCOUNT); ++row) {
    window.rows.emplace_back();
    for (size_t column = 0; column < window.columns.size(); ++column) {
      wchar_t text[256] = L"";
      LVITEMW item = {};
      item.iSubItem = static_cast<int>(column);
      item.pszText = text;
      item.cchTextMax = 256;
      Get(grid, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
      window.rows.back().emplace_back(text);
    }
  }
}

void BareWindows::Fill(HWND made, const Window& window) {
  for (const std::wstring& entry : window.entries) {
    Get(made, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
  }
  if (!Is(window.window_class, WC_LISTVIEWW)) return;
  Get(made, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(window.list_style));
  for (size_t column = 0; column < window.columns.size(); ++column) {
    LVCOLUMNW inserted = {};
    inserted.mask = LVCF_WIDTH | LVCF_SUBITEM;
    inserted.cx = window.columns[column];
    inserted.iSubItem = static_cast<int>(column);
    Get(made, LVM_INSERTCOLUMNW, column, reinterpret_cast<LPARAM>(&inserted));
  }
  for (size_t row = 0; row < window.rows.size(); ++row) {
    for (size_t column = 0; column < window.columns.size(); ++column) {
      std::wstring text = window.rows[row][column];
      LVITEMW item = {};
      item.mask = LVIF_TEXT;
      item.iItem = static_cast<int>(row);
      item.iSubItem = static_cast<int>(column);
      item.pszText = text.data();
      Get(made, column == 0 ? LVM_INSERTITEMW : LVM_SETITEMTEXTW, column == 0 ? 0 : row,
          reinterpret_cast<LPARAM>(&item));
    }
  }
}

void BareWindows::MakeAndDestroy(bool visible) const {
  const RECT place = {0, 0, 1000, 500};
  const HWND container = Make(L"STATIC", L"Bare windows", 0,
                              WS_OVERLAPPEDWINDOW | (visible ? WS_VISIBLE : 0u), place, nullptr);
  const HWND parking = Make(L"STATIC", L"", 0, WS_POPUP, {}, nullptr);
  std::vector<HWND> made;
  for (const Window& window : windows_) {
    const HWND parent = window.parent < 0 ? parking : made[static_cast<size_t>(window.parent)];
    made.push_back(Make(window.window_class, window.text, window.extended_style,
                        window.style | WS_CHILD, window.place, parent));
    Fill(made.back(), window);
  }
  SetParent(made.front(), container);
  PumpMessages();
  DestroyWindow(made.front());
  DestroyWindow(parking);
  DestroyWindow(container);
}

}  // namespace rdv::test
