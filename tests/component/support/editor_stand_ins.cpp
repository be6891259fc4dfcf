#include "tests/component/support/editor_stand_ins.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace rdv::test {
namespace {

constexpr int kTextPart = 1001;  // the identifier that the platform gives to it

struct ComboBox {
  struct Entry {
    std::wstring text;
    LPARAM data = 0;
  };

  std::vector<Entry> entries;
  LRESULT selected = CB_ERR;
  WPARAM dropped_width = 0;
  HWND text_part = nullptr;  // of one that can be typed into
};

template <class State>
std::map<HWND, State>& All() {
  static std::map<HWND, State> all;
  return all;
}

void Notify(HWND window, WORD code) {
  SendMessageW(GetParent(window), WM_COMMAND,
               MAKEWPARAM(static_cast<WORD>(GetDlgCtrlID(window)), code),
               reinterpret_cast<LPARAM>(window));
}

LRESULT Select(ComboBox& box, WPARAM index) {
  const bool exists = index < box.entries.size();
  box.selected = exists ? static_cast<LRESULT>(index) : CB_ERR;
  if (box.text_part) {
    SetWindowTextW(box.text_part, exists ? box.entries[index].text.c_str() : L"");
  }
  return box.selected;
}

// An arrow key in a closed list picks the neighbouring entry.
void SelectNeighbour(HWND window, ComboBox& box, int direction) {
  const LRESULT next = box.selected + direction;
  if (next < 0 || next >= static_cast<LRESULT>(box.entries.size())) return;
  Select(box, static_cast<WPARAM>(next));
  Notify(window, CBN_SELENDOK);
  Notify(window, CBN_SELCHANGE);
}

LRESULT OnListMessage(ComboBox& box, UINT message, WPARAM wparam, LPARAM lparam) {
  ComboBox::Entry* entry = wparam < box.entries.size() ? &box.entries[wparam] : nullptr;
  switch (message) {
    case CB_ADDSTRING:
      box.entries.push_back({reinterpret_cast<const wchar_t*>(lparam), 0});
      return static_cast<LRESULT>(box.entries.size()) - 1;
    case CB_RESETCONTENT:
      box.entries.clear();
      Select(box, static_cast<WPARAM>(CB_ERR));
      return CB_OKAY;
    case CB_GETCOUNT:
      return static_cast<LRESULT>(box.entries.size());
    case CB_SETITEMDATA:
      if (entry) entry->data = lparam;
      return entry ? CB_OKAY : CB_ERR;
    case CB_GETITEMDATA:
      return entry ? static_cast<LRESULT>(entry->data) : CB_ERR;
    case CB_GETLBTEXTLEN:
      return entry ? static_cast<LRESULT>(entry->text.size()) : CB_ERR;
    case CB_GETLBTEXT:
      if (entry) lstrcpyW(reinterpret_cast<wchar_t*>(lparam), entry->text.c_str());
      return entry ? static_cast<LRESULT>(entry->text.size()) : CB_ERR;
    case CB_SETCURSEL:
      return Select(box, wparam);
    case CB_GETCURSEL:
      return box.selected;
    case CB_SETDROPPEDWIDTH:
      box.dropped_width = wparam;
      return static_cast<LRESULT>(wparam);
    case CB_GETDROPPEDWIDTH:
      return static_cast<LRESULT>(box.dropped_width);
    case CB_SETEDITSEL:
      return SendMessageW(box.text_part, EM_SETSEL, LOWORD(lparam), HIWORD(lparam));
    case CB_GETEDITSEL:
      return SendMessageW(box.text_part, EM_GETSEL, wparam, lparam);
    default:
      return 0;  // what concerns the list that is never dropped down
  }
}

void CreateTextPart(HWND window, ComboBox& box) {
  if ((GetWindowLongW(window, GWL_STYLE) & 3) != CBS_DROPDOWN) return;
  box.text_part =
      CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10, window,
                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(kTextPart)), nullptr, nullptr);
}

LRESULT CALLBACK ComboBoxProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  ComboBox& box = All<ComboBox>()[window];
  if (message >= CB_GETEDITSEL && message < CB_MSGMAX) {
    return OnListMessage(box, message, wparam, lparam);
  }
  switch (message) {
    case WM_NCCREATE:
      return TRUE;
    case WM_CREATE:
      CreateTextPart(window, box);
      return 0;
    case WM_SETTEXT:
    case WM_GETTEXT:
    case WM_GETTEXTLENGTH:
      if (box.text_part) return SendMessageW(box.text_part, message, wparam, lparam);
      break;
    case WM_SETFOCUS:
      if (box.text_part) {
        SetFocus(box.text_part);
      } else {
        Notify(window, CBN_SETFOCUS);
      }
      return 0;
    case WM_KEYDOWN:
      if (wparam == VK_DOWN || wparam == VK_UP) {
        SelectNeighbour(window, box, wparam == VK_DOWN ? 1 : -1);
      }
      return 0;
    case WM_KILLFOCUS:
      if (!box.text_part) Notify(window, CBN_KILLFOCUS);
      return 0;
    case WM_COMMAND:
      if (HIWORD(wparam) == EN_SETFOCUS) Notify(window, CBN_SETFOCUS);
      if (HIWORD(wparam) == EN_KILLFOCUS) Notify(window, CBN_KILLFOCUS);
      if (HIWORD(wparam) == EN_CHANGE) Notify(window, CBN_EDITCHANGE);
      return 0;
    case WM_NCDESTROY:
      All<ComboBox>().erase(window);
      break;
    default:
      break;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

struct TextBox {
  std::wstring text;
  DWORD from = 0;
  DWORD to = 0;
};

void Replace(HWND window, TextBox& box, std::wstring text, size_t caret) {
  box.text = std::move(text);
  box.from = box.to = static_cast<DWORD>(caret);
  Notify(window, EN_CHANGE);
}

LRESULT CALLBACK TextBoxProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  TextBox& box = All<TextBox>()[window];
  switch (message) {
    case WM_SETTEXT:
      Replace(window, box, reinterpret_cast<const wchar_t*>(lparam), 0);
      return TRUE;
    case WM_GETTEXTLENGTH:
      return static_cast<LRESULT>(box.text.size());
    case WM_GETTEXT:
      lstrcpynW(reinterpret_cast<wchar_t*>(lparam), box.text.c_str(), static_cast<int>(wparam));
      return lstrlenW(reinterpret_cast<const wchar_t*>(lparam));
    case WM_CHAR:
      if (wparam >= L' ') {
        std::wstring text = box.text;
        text.replace(box.from, box.to - box.from, 1, static_cast<wchar_t>(wparam));
        Replace(window, box, std::move(text), box.from + 1);
      }
      return 0;
    case EM_SETSEL:
      box.from = std::min(static_cast<DWORD>(wparam), static_cast<DWORD>(box.text.size()));
      box.to = std::min(static_cast<DWORD>(lparam), static_cast<DWORD>(box.text.size()));
      return 0;
    case EM_GETSEL:
      if (wparam) *reinterpret_cast<DWORD*>(wparam) = box.from;
      if (lparam) *reinterpret_cast<DWORD*>(lparam) = box.to;
      return MAKELONG(box.from, box.to);
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      Notify(window, message == WM_SETFOCUS ? EN_SETFOCUS : EN_KILLFOCUS);
      return 0;
    case WM_NCDESTROY:
      All<TextBox>().erase(window);
      break;
    default:
      break;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

LRESULT CALLBACK OnCreate(int code, WPARAM wparam, LPARAM lparam) {
  if (code == HCBT_CREATEWND) {
    const auto window = reinterpret_cast<HWND>(wparam);
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    const WNDPROC procedure = lstrcmpiW(name, L"COMBOBOX") == 0 ? &ComboBoxProcedure
                              : lstrcmpiW(name, L"EDIT") == 0   ? &TextBoxProcedure
                                                                : nullptr;
    if (procedure) {
      SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

}  // namespace

bool CanPaint() {
  const HDC context = CreateCompatibleDC(nullptr);
  if (context) DeleteDC(context);
  return context != nullptr;
}

EditorStandIns::EditorStandIns() {
  if (!CanPaint()) {
    hook_ = SetWindowsHookExW(WH_CBT, &OnCreate, nullptr, GetCurrentThreadId());
  }
}

EditorStandIns::~EditorStandIns() {
  if (hook_) UnhookWindowsHookEx(hook_);
}

}  // namespace rdv::test
