// rdvwindows: measures or closes the window of another program.
//
//   rdvwindows list CLASS      the window of that class and all windows in it
//   rdvwindows close CLASS     asks it to close
//   rdvwindows type CLASS ID TEXT    puts a text into one of its fields
//   rdvwindows press CLASS ID        presses one of its buttons, and does not wait
//   rdvwindows box             the text of the message box that is open
//   rdvwindows answer          presses the box's OK, or its only button
//
// A line of "list" is "ID CLASS LEFT TOP WIDTH HEIGHT SHOWN" in pixels of the screen, SHOWN 0 or 1;
// the window itself comes first. After a list view follow "row ID HEIGHT", the height of its first
// row, and "column ID NUMBER WIDTH" for every column. Exit status: 0 done, 1 no such window, 2
// wrong arguments.
#include <windows.h>
// windows.h comes first.
#include <commctrl.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>

#include "tools/play/win32/box_buttons.h"

namespace {

constexpr int kDone = 0;
constexpr int kNoWindow = 1;
constexpr int kWrongArguments = 2;
constexpr const wchar_t* kBoxClass = L"#32770";

void PrintText(const wchar_t* text) {
  char utf8[2048] = {};
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, sizeof utf8, nullptr, nullptr);
  std::printf("%s\n", utf8);
}

void PrintGrid(HWND grid) {
  const int id = GetDlgCtrlID(grid);
  // Answered as a number: the height of a row is the difference of the positions of two.
  const LRESULT one = SendMessageW(grid, LVM_APPROXIMATEVIEWRECT, 1, -1);
  const LRESULT two = SendMessageW(grid, LVM_APPROXIMATEVIEWRECT, 2, -1);
  std::printf("row %d %d\n", id, HIWORD(two) - HIWORD(one));
  const HWND header = reinterpret_cast<HWND>(SendMessageW(grid, LVM_GETHEADER, 0, 0));
  const LRESULT columns = SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
  for (LRESULT column = 0; column < columns; ++column) {
    const LRESULT width = SendMessageW(grid, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0);
    std::printf("column %d %d %d\n", id, static_cast<int>(column) + 1, static_cast<int>(width));
  }
}

BOOL CALLBACK PrintWindow(HWND window, LPARAM /*context*/) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, static_cast<int>(std::size(name)));
  RECT place = {};
  GetWindowRect(window, &place);
  std::printf("%d %ls %ld %ld %ld %ld %d\n", GetDlgCtrlID(window), name, place.left, place.top,
              place.right - place.left, place.bottom - place.top, IsWindowVisible(window) ? 1 : 0);
  if (_wcsicmp(name, WC_LISTVIEWW) == 0) PrintGrid(window);
  return TRUE;
}

int Run(int count, wchar_t** arguments) {
  const auto is = [&](const wchar_t* command, int wanted) {
    return count == wanted && std::wcscmp(arguments[1], command) == 0;
  };
  const bool box = is(L"box", 2) || is(L"answer", 2);
  if (!box && count < 3) return kWrongArguments;
  const HWND window = FindWindowW(box ? kBoxClass : arguments[2], nullptr);
  if (!window || !IsWindowVisible(window)) return kNoWindow;
  if (is(L"list", 3)) {
    PrintWindow(window, 0);
    EnumChildWindows(window, &PrintWindow, 0);
    return kDone;
  }
  if (is(L"close", 3)) return PostMessageW(window, WM_CLOSE, 0, 0) ? kDone : kNoWindow;
  if (is(L"answer", 2)) {
    rdv::play::PressInBox(window, IDOK);
    return kDone;
  }
  if (is(L"box", 2)) {
    wchar_t text[1024] = {};
    GetDlgItemTextW(window, 0xFFFF, text, static_cast<int>(std::size(text)));
    PrintText(text);
    return kDone;
  }
  const int id = count > 3 ? static_cast<int>(std::wcstol(arguments[3], nullptr, 10)) : 0;
  const HWND child = GetDlgItem(window, id);
  if (!child) return kNoWindow;
  if (is(L"type", 5)) {
    SendMessageW(child, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(arguments[4]));
    return kDone;
  }
  if (is(L"press", 4)) return PostMessageW(child, BM_CLICK, 0, 0) ? kDone : kNoWindow;
  return kWrongArguments;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  // Else the system would answer in pixels of 96 to an inch.
  SetProcessDPIAware();
  const int status = Run(count, arguments);
  if (status == kWrongArguments) {
    std::fputs(
        "usage: rdvwindows list|close CLASS | type CLASS ID TEXT | press CLASS ID | box | answer\n",
        stderr);
  }
  return status;
}
