#include "widgets/win32/combo_box_window.h"

#include "runtime/error.h"
#include "widgets/win32/form_messages.h"
#include "widgets/win32/wide.h"

namespace rdv::win32 {
namespace {

constexpr int kDroppedRows = 30;
// Around the text of a closed combo box: border and padding, above and below.
constexpr int kClosedPadding = 6;

// Of the window's font; 0 where nothing is painted.
int LineHeight(HWND window) {
  const HDC context = GetDC(window);
  const HGDIOBJ before =
      SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)));
  TEXTMETRICW metrics = {};
  GetTextMetricsW(context, &metrics);
  SelectObject(context, before);
  ReleaseDC(window, context);
  return metrics.tmHeight;
}

}  // namespace

// Asked for the least width of the open list, the platform answers with that of the box where this
// one is wider. Here it is what was set last, by whomever, whatever cell the box lies over; before
// any was set the platform's answer stands. A list is filled with a thousand messages: the
// procedure does nothing but pass them on.
std::optional<LRESULT> ComboBoxWindow::Before(const HookedMessage& message) {
  if (message.message == CB_GETDROPPEDWIDTH && drop_down_width_) return drop_down_width_;
  if (const auto answer = BeforeList(message)) return answer;
  const LRESULT result = message.PassOn();
  // The platform takes no more.
  if (message.message == CB_SETDROPPEDWIDTH && result != CB_ERR && message.wparam <= INT16_MAX) {
    drop_down_width_ = static_cast<LRESULT>(message.wparam);
  }
  // The platform may take the selection off before it tells of what was typed, or after.
  if (message.message == WM_COMMAND && HIWORD(message.wparam) == EN_CHANGE) {
    // What was typed may have ended the form.
    const auto* list = dynamic_cast<const ComboBoxWindow*>(TargetOf(message.window));
    if (list && !list->setting_) list->SelectInPlatform();
  }
  return result;
}

// Only a choice changes data: the wheel over a closed list scrolls what lies under it, and the
// arrows to the sides lead to the neighbouring cells.
std::optional<LRESULT> ComboBoxWindow::BeforeList(const HookedMessage& message) {
  switch (message.message) {
    case WM_MOUSEWHEEL:
      if (DroppedDown()) return std::nullopt;
      return SendMessageW(GetParent(Handle()), WM_MOUSEWHEEL, message.wparam, message.lparam);
    case WM_KEYDOWN: {
      const bool to_a_side = message.wparam == VK_LEFT || message.wparam == VK_RIGHT;
      if (!to_a_side || entry_ == TextEntry::Typed || DroppedDown()) return std::nullopt;
      // It may hide the list, and end the form.
      const auto hold = HoldForm(Handle());
      Notify(on_step, message.wparam == VK_LEFT);
      return 0;
    }
    case WM_PAINT:
      FillAroundText();
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

// The text part is only as high as its text, and the older common controls paint nothing above and
// below it.
void ComboBoxWindow::FillAroundText() const {
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  if (entry_ != TextEntry::Typed || !GetComboBoxInfo(Handle(), &parts)) return;
  const HDC context = GetDC(Handle());
  RECT text = {};
  GetWindowRect(parts.hwndItem, &text);
  MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&text), 2);
  ExcludeClipRect(context, text.left, text.top, text.right, text.bottom);
  FillRect(context, &parts.rcItem, GetSysColorBrush(Enabled() ? COLOR_WINDOW : COLOR_BTNFACE));
  ReleaseDC(Handle(), context);
}

ComboBoxWindow::ComboBoxWindow(HWND parent, int id, TextEntry entry) : entry_(entry) {
  const DWORD kind = entry == TextEntry::Typed ? CBS_DROPDOWN | CBS_AUTOHSCROLL : CBS_DROPDOWNLIST;
  Create(parent, {.window_class = L"COMBOBOX", .style = WS_TABSTOP | WS_VSCROLL | kind, .id = id});
  ComboBoxWindow::OnMade();
}

void ComboBoxWindow::OnMade() {
  hook_ = std::make_unique<WindowHook>(Handle(), static_cast<WindowWatcher&>(*this));
}

bool ComboBoxWindow::DroppedDown() const {
  return SendMessageW(Handle(), CB_GETDROPPEDSTATE, 0, 0) != 0;
}

// Which of the two ends of a choice the platform tells of when the list is closed for the user, no
// document says.
void ComboBoxWindow::TakeHighlighted() {
  const int highlighted = PlatformIndex();
  setting_ = true;
  SendMessageW(Handle(), CB_SHOWDROPDOWN, FALSE, 0);
  setting_ = false;
  if (highlighted >= 0) SetListIndex(highlighted);
}

void ComboBoxWindow::SetVisible(bool visible) {
  if (!visible && DroppedDown()) SendMessageW(Handle(), CB_SHOWDROPDOWN, FALSE, 0);
  EditorWindow::SetVisible(visible);
}

// The width of the open list is in pixels of the window's resolution.
void ComboBoxWindow::SetScale(Scale scale, Twips height) {
  const bool changes = scale != CurrentScale();
  EditorWindow::SetScale(scale, height);
  if (changes && wished_width_ != 0) ApplyDropDownWidth();
}

rdv::Text ComboBoxWindow::Text() const {
  if (list_index_ >= 0) return List(list_index_);
  return entry_ == TextEntry::Typed ? WindowText(Handle()) : rdv::Text();
}

void ComboBoxWindow::SetText(TextView text) {
  if (entry_ == TextEntry::FromListOnly) {
    for (int index = 0; index < ListCount(); ++index) {
      if (List(index) == text) return SetListIndex(index);
    }
    return;
  }
  if (text == Text()) return;
  known_text_ = text;
  list_index_ = -1;
  setting_ = true;
  SendMessageW(Handle(), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
  SetWindowTextW(Handle(), Wide(known_text_));
  setting_ = false;
  SetCaret(0);
  Notify(on_change);
}

size_t ComboBoxWindow::Caret() const {
  if (entry_ == TextEntry::FromListOnly) return 0;
  DWORD start = 0;
  SendMessageW(Handle(), CB_GETEDITSEL, reinterpret_cast<WPARAM>(&start), 0);
  return start;
}

void ComboBoxWindow::SetCaret(size_t position) {
  const auto at = static_cast<WORD>(position);
  SendMessageW(Handle(), CB_SETEDITSEL, 0, MAKELPARAM(at, at));
}

void ComboBoxWindow::Clear() {
  list_index_ = -1;
  known_text_.clear();
  setting_ = true;
  SendMessageW(Handle(), CB_RESETCONTENT, 0, 0);
  if (entry_ == TextEntry::Typed) SetWindowTextW(Handle(), L"");
  setting_ = false;
}

void ComboBoxWindow::AddItem(TextView caption, int32_t item_data) {
  const rdv::Text text(caption);
  const LRESULT index =
      SendMessageW(Handle(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
  if (index == CB_ERR || index == CB_ERRSPACE) RaiseOutOfMemory();
  SendMessageW(Handle(), CB_SETITEMDATA, static_cast<WPARAM>(index), item_data);
}

int ComboBoxWindow::ListCount() const {
  return static_cast<int>(SendMessageW(Handle(), CB_GETCOUNT, 0, 0));
}

rdv::Text ComboBoxWindow::List(int index) const {
  CheckIndex(index);
  const LRESULT length = SendMessageW(Handle(), CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
  rdv::Text text(static_cast<size_t>(length) + 1, u'\0');
  SendMessageW(Handle(), CB_GETLBTEXT, static_cast<WPARAM>(index),
               reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}

int32_t ComboBoxWindow::ItemData(int index) const {
  CheckIndex(index);
  return static_cast<int32_t>(
      SendMessageW(Handle(), CB_GETITEMDATA, static_cast<WPARAM>(index), 0));
}

void ComboBoxWindow::SetListIndex(int index) {
  if (index < -1 || index >= ListCount()) Raise(LanguageError::InvalidPropertyValue);
  list_index_ = index;
  setting_ = true;
  SendMessageW(Handle(), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  setting_ = false;
  known_text_ = Text();
  // The platform highlights what it writes into the text part.
  if (entry_ == TextEntry::Typed) SetCaret(0);
  if (index >= 0) Notify(on_click);
}

void ComboBoxWindow::SetDropDownWidth(int pixels) {
  wished_width_ = pixels;
  ApplyDropDownWidth();
}

void ComboBoxWindow::ApplyDropDownWidth() {
  constexpr int kUsualDotsPerInch = 96;
  const int width = MulDiv(wished_width_, CurrentScale().DotsPerInch(), kUsualDotsPerInch);
  SendMessageW(Handle(), CB_SETDROPPEDWIDTH, static_cast<WPARAM>(width), 0);
}

// What is typed replaces the old text.
void ComboBoxWindow::SetFocus() {
  EditorWindow::SetFocus();
  if (entry_ == TextEntry::Typed && Focused())
    SendMessageW(Handle(), CB_SETEDITSEL, 0, MAKELPARAM(0, -1));
}

void ComboBoxWindow::OnCommand(WORD code) {
  // Whoever sets something tells of it himself.
  if (setting_ && code != CBN_DROPDOWN && code != CBN_CLOSEUP) return;
  switch (code) {
    case CBN_DROPDOWN:
      dropped_ = true;
      break;
    case CBN_SELENDOK:
      OnPicked();
      break;
    case CBN_SELCHANGE:
      // Moving through the open list is no pick yet; in a closed list the arrow keys pick.
      if (!dropped_ && PlatformIndex() != list_index_) OnPicked();
      break;
    case CBN_CLOSEUP:
      dropped_ = false;
      break;
    case CBN_SELENDCANCEL:
      if (list_index_ >= 0 || entry_ == TextEntry::FromListOnly) {
        SendMessageW(Handle(), CB_SETCURSEL, static_cast<WPARAM>(list_index_), 0);
      }
      break;
    case CBN_EDITCHANGE:
      OnTyped();
      break;
    default:
      break;
  }
}

void ComboBoxWindow::Remember() {
  EditorWindow::Remember();
  kept_text_ = Text();
  kept_entries_.clear();
  for (int index = 0; index < ListCount(); ++index)
    kept_entries_.push_back({List(index), ItemData(index)});
}

void ComboBoxWindow::MakeAnew(HWND parent) {
  dropped_ = false;
  EditorWindow::MakeAnew(parent);
  setting_ = true;
  for (const Entry& entry : kept_entries_) AddItem(entry.caption, entry.item_data);
  SendMessageW(Handle(), CB_SETCURSEL, static_cast<WPARAM>(list_index_), 0);
  if (list_index_ < 0) SetWindowTextW(Handle(), Wide(kept_text_));
  setting_ = false;
  if (wished_width_ != 0) ApplyDropDownWidth();
}

void ComboBoxWindow::PlaceAt(const RECT& place) {
  const int closed_height = place.bottom - place.top;
  SendMessageW(Handle(), CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), closed_height - kClosedPadding);
  const auto row_height = static_cast<int>(SendMessageW(Handle(), CB_GETITEMHEIGHT, 0, 0));
  // A combo box is as high as its text part; the height given is that with the list open, which
  // some platforms ask for in rows instead.
  RECT opened = place;
  opened.bottom += kDroppedRows * row_height + 2;
  SendMessageW(Handle(), CB_SETMINVISIBLE, kDroppedRows, 0);
  const LRESULT highlighted = SendMessageW(Handle(), CB_GETEDITSEL, 0, 0);
  MoveTo(Handle(), opened);
  // The platform highlights the whole text of a combo box that it resizes.
  if (entry_ == TextEntry::Typed) SendMessageW(Handle(), CB_SETEDITSEL, 0, highlighted);
  CenterText();
}

// Text that is typed stands at the top of its part, which is higher than a line of it.
void ComboBoxWindow::CenterText() const {
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  if (entry_ != TextEntry::Typed || !GetComboBoxInfo(Handle(), &parts)) return;
  const RECT& whole = parts.rcItem;
  const int line = LineHeight(parts.hwndItem);
  const int spare = whole.bottom - whole.top - line;
  if (line == 0 || spare < 0) return;
  const int top = whole.top + spare / 2;
  MoveTo(parts.hwndItem, {whole.left, top, whole.right, top + line});
}

void ComboBoxWindow::CheckIndex(int index) const {
  if (index < 0 || index >= ListCount()) Raise(LanguageError::InvalidPropertyArrayIndex);
}

int ComboBoxWindow::PlatformIndex() const {
  return static_cast<int>(SendMessageW(Handle(), CB_GETCURSEL, 0, 0));
}

void ComboBoxWindow::OnPicked() {
  const int index = PlatformIndex();
  if (index < 0) return;
  list_index_ = index;
  known_text_ = Text();
  Notify(on_click);
}

// Set directly in the list: the combo box's own message would replace the text being typed.
void ComboBoxWindow::SelectInPlatform() const {
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  if (GetComboBoxInfo(Handle(), &parts)) {
    SendMessageW(parts.hwndList, LB_SETCURSEL, static_cast<WPARAM>(list_index_), 0);
  }
}

void ComboBoxWindow::OnTyped() {
  rdv::Text text = WindowText(Handle());
  const bool changes = text != known_text_;
  if (changes) {
    known_text_ = std::move(text);
    list_index_ = -1;
  }
  if (changes) Notify(on_change);
}

}  // namespace rdv::win32
