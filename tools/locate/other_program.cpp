#include "tools/locate/other_program.h"

#include <commctrl.h>

#include <cwchar>
#include <iterator>

#include "widgets/control_ids.h"

namespace rdv {
namespace {

bool HasClass(HWND window, const wchar_t* name) {
  wchar_t found[64] = {};
  GetClassNameW(window, found, static_cast<int>(std::size(found)));
  return _wcsicmp(found, name) == 0;
}

struct ChildSearch {
  int id;
  const wchar_t* window_class;  // null: any
  HWND found;
};

BOOL CALLBACK MatchChild(HWND window, LPARAM context) {
  auto& search = *reinterpret_cast<ChildSearch*>(context);
  if (GetDlgCtrlID(window) != search.id || !IsWindowVisible(window)) return TRUE;
  if (search.window_class && !HasClass(window, search.window_class)) return TRUE;
  search.found = window;
  return FALSE;
}

HWND VisibleChild(HWND top, int id, const wchar_t* window_class) {
  ChildSearch search = {id, window_class, nullptr};
  EnumChildWindows(top, &MatchChild, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

BOOL CALLBACK MatchTop(HWND window, LPARAM context) {
  if (!VisibleChild(window, control_id::LVRDVLineConfig, WC_LISTVIEWW)) return TRUE;
  *reinterpret_cast<HWND*>(context) = window;
  return FALSE;
}

BOOL CALLBACK MatchDroppedList(HWND window, LPARAM context) {
  if (!IsWindowVisible(window) || !HasClass(window, L"ComboLBox")) return TRUE;
  *reinterpret_cast<HWND*>(context) = window;
  return FALSE;
}

ScreenPoint MiddleOnScreen(HWND window, const RECT& area) {
  POINT middle = {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
  ClientToScreen(window, &middle);
  return middle;
}

bool HasRow(HWND grid, int row) {
  return row >= 1 && row <= SendMessageW(grid, LVM_GETITEMCOUNT, 0, 0);
}

// A list view answers in memory of its own program only; this lends it some there.
template <typename Content>
class Lent {
 public:
  explicit Lent(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    process_ =
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, process);
    if (process_) {
      address_ = VirtualAllocEx(process_, nullptr, sizeof(Content), MEM_COMMIT, PAGE_READWRITE);
    }
  }
  ~Lent() {
    if (address_) VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    if (process_) CloseHandle(process_);
  }
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;

  bool Write(const Content& value) {
    return address_ && WriteProcessMemory(process_, address_, &value, sizeof value, nullptr);
  }
  bool Read(Content* value) const {
    return address_ && ReadProcessMemory(process_, address_, value, sizeof *value, nullptr);
  }
  // Where the content lies in the other program.
  Content* There() const { return static_cast<Content*>(address_); }

 private:
  HANDLE process_ = nullptr;
  void* address_ = nullptr;
};

struct CellRequest {
  LVITEMW item;
  wchar_t text[260];
};

}  // namespace

HWND FindControlWindow(int id) {
  HWND top = nullptr;
  EnumWindows(&MatchTop, reinterpret_cast<LPARAM>(&top));
  return top ? VisibleChild(top, id, nullptr) : nullptr;
}

std::optional<ScreenPoint> MiddleOfCell(HWND grid, int row, int column) {
  if (!HasRow(grid, row)) return std::nullopt;
  Lent<RECT> lent(grid);
  RECT cell = {LVIR_BOUNDS, column - 1, 0, 0};
  if (!lent.Write(cell) ||
      !SendMessageW(grid, LVM_GETSUBITEMRECT, static_cast<WPARAM>(row - 1),
                    reinterpret_cast<LPARAM>(lent.There())) ||
      !lent.Read(&cell)) {
    return std::nullopt;
  }
  RECT client = {};
  RECT seen = {};
  GetClientRect(grid, &client);
  if (!IntersectRect(&seen, &client, &cell)) return std::nullopt;
  return MiddleOnScreen(grid, seen);
}

std::optional<std::wstring> TextOfCell(HWND grid, int row, int column) {
  if (!HasRow(grid, row)) return std::nullopt;
  Lent<CellRequest> lent(grid);
  CellRequest request = {};
  request.item.iSubItem = column - 1;
  request.item.pszText = lent.There() ? lent.There()->text : nullptr;
  request.item.cchTextMax = static_cast<int>(std::size(request.text));
  if (!lent.Write(request)) return std::nullopt;
  SendMessageW(grid, LVM_GETITEMTEXTW, static_cast<WPARAM>(row - 1),
               reinterpret_cast<LPARAM>(lent.There()));
  if (!lent.Read(&request)) return std::nullopt;
  return request.text;
}

std::optional<ScreenPoint> MiddleOfDroppedEntry(const wchar_t* text) {
  HWND list = nullptr;
  // A dropped list is a child of the desktop or a window of its own.
  EnumWindows(&MatchDroppedList, reinterpret_cast<LPARAM>(&list));
  if (!list) {
    EnumChildWindows(GetDesktopWindow(), &MatchDroppedList, reinterpret_cast<LPARAM>(&list));
  }
  if (!list) return std::nullopt;
  const LRESULT entry = SendMessageW(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                     reinterpret_cast<LPARAM>(text));
  if (entry == LB_ERR) return std::nullopt;
  RECT area = {};
  SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(&area));
  return MiddleOnScreen(list, area);
}

std::optional<ScreenPoint> MiddleOfWindow(HWND window) {
  if (!window || !IsWindowVisible(window) || !IsWindowEnabled(window)) return std::nullopt;
  RECT area = {};
  GetClientRect(window, &area);
  return MiddleOnScreen(window, area);
}

}  // namespace rdv
