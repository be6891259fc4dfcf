// rdvwindows: measures, disturbs or closes the window of another program.
//
//   rdvwindows list CLASS      the window of that class and all windows in it
//   rdvwindows close CLASS     asks it to close
//   rdvwindows type CLASS ID TEXT    puts a text into one of its fields
//   rdvwindows press CLASS ID        presses one of its buttons, and does not wait
//   rdvwindows focus CLASS           the identifier of the window in it that has the keyboard
//   rdvwindows borrow CLASS          takes the keyboard from the program for a moment, with a
//   window
//                                    of its own, and gives it back, as Alt+Tab there and back does
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

// Nothing while another program has the keyboard.
HWND FocusIn(HWND window) {
  GUITHREADINFO thread = {};
  thread.cbSize = sizeof thread;
  if (!GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread)) return nullptr;
  return thread.hwndFocus;
}

// A list that can be typed into has the keyboard in its text part.
int PrintFocus(HWND window) {
  const HWND focus = FocusIn(window);
  if (!focus) return kNoWindow;
  const HWND parent = GetParent(focus);
  wchar_t name[64] = {};
  GetClassNameW(parent, name, static_cast<int>(std::size(name)));
  std::printf("%d\n", GetDlgCtrlID(_wcsicmp(name, WC_COMBOBOXW) == 0 ? parent : focus));
  return kDone;
}

// Sees to this program's messages until the condition holds; some seconds at most.
template <class Condition>
bool WaitUntil(const Condition& condition) {
  for (int attempt = 0; attempt < 500; ++attempt) {
    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    if (condition()) return true;
    Sleep(20);
  }
  return false;
}

int BorrowKeyboard(HWND window) {
  const HWND own = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"borrower", WS_POPUP | WS_VISIBLE, 0,
                                   0, 40, 20, nullptr, nullptr, nullptr, nullptr);
  SetForegroundWindow(own);
  const bool taken = WaitUntil([&] { return GetForegroundWindow() == own && !FocusIn(window); });
  SetForegroundWindow(window);
  const bool given_back =
      WaitUntil([&] { return GetForegroundWindow() == window && FocusIn(window); });
  DestroyWindow(own);
  return taken && given_back ? kDone : kNoWindow;
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
  if (is(L"focus", 3)) return PrintFocus(window);
  if (is(L"borrow", 3)) return BorrowKeyboard(window);
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
        "usage: rdvwindows list|focus|borrow|close CLASS | type CLASS ID TEXT | press CLASS ID | "
        "box "
        "| answer\n",
        stderr);
  }
  return status;
}
