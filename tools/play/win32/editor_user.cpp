#include "tools/play/win32/editor_user.h"

#include <cstring>
#include <stdexcept>

#include "tools/play/win32/window_text.h"

namespace rdv::play {
namespace {

COMBOBOXINFO PartsOf(HWND list) {
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  if (!GetComboBoxInfo(list, &parts)) throw std::runtime_error("a list has no parts");
  return parts;
}

void PutOnClipboard(HWND owner, const Text& text) {
  const size_t size = (text.size() + 1) * sizeof(char16_t);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
  std::memcpy(GlobalLock(memory), text.c_str(), size);
  GlobalUnlock(memory);
  if (!OpenClipboard(owner)) throw std::runtime_error("the clipboard is in use");
  EmptyClipboard();
  SetClipboardData(CF_UNICODETEXT, memory);
  CloseClipboard();
}

}  // namespace

// Opens the list, brings the entry into sight and clicks it.
Refusal EditorUser::Pick(int index) {
  if (const Refusal refused = windows_.WhyOutOfReach(window_)) return refused;
  if (index < 0 || index >= SendMessageW(window_, CB_GETCOUNT, 0, 0)) {
    return refusal::kNoSuchEntry;
  }
  SetFocus(window_);
  SendMessageW(window_, CB_SHOWDROPDOWN, TRUE, 0);
  const HWND entries = PartsOf(window_).hwndList;
  SendMessageW(entries, LB_SETTOPINDEX, static_cast<WPARAM>(index), 0);
  RECT place = {};
  SendMessageW(entries, LB_GETITEMRECT, static_cast<WPARAM>(index),
               reinterpret_cast<LPARAM>(&place));
  Click(entries, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
  return std::nullopt;
}

Refusal EditorUser::Type(TextView text) {
  if (const Refusal refused = WhyNotTypeable()) return refused;
  const HWND line = TextPart();
  SetFocus(line);
  SelectAll();
  for (const char16_t unit : text) SendMessageW(line, WM_CHAR, unit, 1);
  return std::nullopt;
}

Refusal EditorUser::Paste(TextView text) {
  if (const Refusal refused = WhyNotTypeable()) return refused;
  const HWND line = TextPart();
  SetFocus(line);
  SelectAll();
  if (text.empty()) {
    SendMessageW(line, WM_CLEAR, 0, 0);
  } else {
    PutOnClipboard(line, Text(text));
    SendMessageW(line, WM_PASTE, 0, 0);
  }
  return std::nullopt;
}

EditorSeen EditorUser::Editor() const {
  EditorSeen seen;
  seen.visible = IsWindowVisible(window_) != FALSE;
  const Rectangle place = windows_.PlaceInFrame(window_);
  seen.left = place.left;
  seen.top = place.top;
  seen.width = place.width;
  seen.text = Shown();
  if (IsList()) seen.index = static_cast<int>(SendMessageW(window_, CB_GETCURSEL, 0, 0));
  return seen;
}

ListSeen EditorUser::List() const {
  ListSeen seen;
  seen.index = static_cast<int>(SendMessageW(window_, CB_GETCURSEL, 0, 0));
  seen.text = Shown();
  seen.drop_down_width = static_cast<int>(SendMessageW(window_, CB_GETDROPPEDWIDTH, 0, 0));
  const auto count = static_cast<WPARAM>(SendMessageW(window_, CB_GETCOUNT, 0, 0));
  for (WPARAM index = 0; index < count; ++index) {
    ListSeen::Entry& entry = seen.entries.emplace_back();
    const auto length = static_cast<size_t>(SendMessageW(window_, CB_GETLBTEXTLEN, index, 0));
    entry.caption.resize(length + 1);
    SendMessageW(window_, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(entry.caption.data()));
    entry.caption.resize(length);
    entry.item_data = static_cast<int32_t>(SendMessageW(window_, CB_GETITEMDATA, index, 0));
  }
  return seen;
}

bool EditorUser::IsList() const {
  return HasClass(window_, L"ComboBox");
}

// Null for a list that takes no typed text.
HWND EditorUser::TextPart() const {
  if (!IsList()) return window_;
  const auto kind = GetWindowLongW(window_, GWL_STYLE) & CBS_DROPDOWNLIST;
  return kind == CBS_DROPDOWNLIST ? nullptr : PartsOf(window_).hwndItem;
}

Refusal EditorUser::WhyNotTypeable() const {
  if (!TextPart()) return refusal::kNotTypeable;
  return windows_.WhyOutOfReach(window_);
}

void EditorUser::SelectAll() const {
  SendMessageW(TextPart(), EM_SETSEL, 0, -1);
}

Text EditorUser::Shown() const {
  return TextOf(window_);
}

}  // namespace rdv::play
