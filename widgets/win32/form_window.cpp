#include "widgets/win32/form_window.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>
#include <vector>

#include "widgets/win32/accessible_name.h"
#include "widgets/win32/awareness.h"
#include "widgets/win32/parking_window.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/wide.h"
#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

constexpr const wchar_t* kFormClass = L"TLV_RDV_Line_Config.Form";
// With whether a window of the form was given the focus, or pressed.
constexpr UINT kCheckFocus = WM_APP;

bool IsMousePress(UINT message) {
  return message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN || message == WM_MBUTTONDOWN ||
         message == WM_XBUTTONDOWN;
}

WindowMap<FormWindow>& Forms() {
  static WindowMap<FormWindow> forms;
  return forms;
}

FormWindow* FormOf(HWND window) {
  return Forms().Find(window);
}

void RegisterClasses(HINSTANCE module, WNDPROC procedure) {
  INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.lpfnWndProc = procedure;
  description.hInstance = module;
  description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  description.lpszClassName = kFormClass;
  RegisterClassExW(&description);  // fails, as it should, for all forms but the first
}

// A list that is typed into has the keyboard in its text part, which is a window of its own.
void NameWithParts(HWND window, const Text& name) {
  SetAccessibleName(window, Wide(name));
  if (const HWND text_part = FindWindowExW(window, nullptr, L"EDIT", nullptr)) {
    SetAccessibleName(text_part, Wide(name));
  }
}

BOOL CALLBACK AddWindow(HWND window, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

BOOL CALLBACK SetFont(HWND window, LPARAM font) {
  SendMessageW(window, WM_SETFONT, static_cast<WPARAM>(font), TRUE);
  return TRUE;
}

}  // namespace

HBRUSH FormBackground(HWND form) {
  const FormWindow* window = FormOf(form);
  if (window && window->background_) return window->background_;
  const HBRUSH wished = window && window->appearance_.background
                            ? window->appearance_.background->SystemBrush()
                            : nullptr;
  return wished ? wished : GetSysColorBrush(COLOR_BTNFACE);
}

COLORREF FormTextColor(HWND form) {
  const FormWindow* window = FormOf(form);
  if (window && window->appearance_.text_color) return window->appearance_.text_color->Now();
  return GetSysColor(COLOR_BTNTEXT);
}

HFONT FormFont(HWND form) {
  const FormWindow* window = FormOf(form);
  return window ? window->font_.get() : nullptr;
}

HWND FormAround(HWND window) {
  for (; window; window = GetAncestor(window, GA_PARENT)) {
    const auto procedure = reinterpret_cast<WNDPROC>(GetClassLongPtrW(window, GCLP_WNDPROC));
    if (procedure == &FormWindow::Procedure) return window;
  }
  return nullptr;
}

std::shared_ptr<void> HoldForm(HWND window) {
  const HWND around = FormAround(window);
  const FormWindow* form = around ? FormOf(around) : nullptr;
  return form ? form->owner_.lock() : nullptr;
}

void ReflectFocus(HWND form, const Notification& notification) {
  if (!notification.target) return;
  const FocusCodes codes = notification.target->CodesOfFocus();
  const bool gained = codes.gained == notification.code;
  if (!gained && codes.lost != notification.code) return;
  // Only when the change is complete is it known where the focus went.
  PostMessageW(form, kCheckFocus, gained, 0);
}

void ReflectPress(HWND window) {
  const HWND form = FormAround(window);
  if (form) PostMessageW(form, kCheckFocus, TRUE, 0);
}

void UnregisterFormClasses(HINSTANCE module) {
  UnregisterClassW(kFormClass, module);
  UnregisterClassW(FrameWindow::kClass, module);
  UnregisterClassW(ParkingWindow::kClass, module);
}

FormWindowHandle::FormWindowHandle(HINSTANCE module, HWND parent) : module_(module) {
  RegisterClasses(module, &FormWindow::Procedure);
  MakeAnew(parent);
}

void FormWindowHandle::MakeAnew(HWND parent) {
  window_ = MakeWindow(module_, parent,
                       {.window_class = kFormClass,
                        .style = WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS,
                        .extended_style = WS_EX_CONTROLPARENT});
}

// The window of the table's i-th entry. Those before it are made already.
template <size_t i>
auto FormWindow::MakeWidget() const {
  constexpr const WidgetEntry& entry = kFormTable[i];
  const HWND parent = ContainerOf(entry);
  if constexpr (entry.kind == WidgetKind::Frame) {
    return FrameWindow(parent, entry.id, WideLiteral(entry.text));
  } else if constexpr (entry.kind == WidgetKind::Grid) {
    return LineGridWindow(parent, entry.id);
  } else if constexpr (entry.kind == WidgetKind::TextBox) {
    return TextBoxWindow(parent, entry.id);
  } else if constexpr (entry.kind == WidgetKind::Button) {
    return ButtonWindow(parent, entry.id, WideLiteral(entry.text));
  } else {
    return ComboBoxWindow(parent, entry.id, entry.Typing());
  }
}

HWND FormWindow::ContainerOf(const WidgetEntry& entry) const {
  switch (entry.within) {
    case Within::Configuration:
      return widgets_.fraConfiguration.Handle();
    case Within::Defaults:
      return widgets_.fraDefault.Handle();
    case Within::Window:
      break;
  }
  return window_;
}

FormWindow::FormWindow(HINSTANCE module, HWND parent, const GridContent& content)
    : content_(content),
      window_(module, parent),
      scale_(Scale::Of(window_)),
      widgets_(MakeWidgets<WindowParts>([this]<size_t i>() { return MakeWidget<i>(); })),
      screen_(window_),
      form_(FormOf(widgets_, screen_)),
      keyboard_(form_, widgets_.LVRDVLineConfig) {
  widgets_.cmbRDVType.SetVisible(true);
  widgets_.cmdApply.SetEnabled(false);
  screen_.on_opening = [this] { focus_before_box_ = HasFocus(window_) ? GetFocus() : nullptr; };
  screen_.on_closed = [this] { AfterBox(); };
  ForEachWidget(widgets_, [this]<class Window>(Window& window, const WidgetEntry& entry) {
    if constexpr (std::is_same_v<Window, ComboBoxWindow>) {
      if (!entry.IsInPlace()) return;
      window.on_step = [this](bool backward) {
        Notify(widgets_.LVRDVLineConfig.on_edit_next, backward);
      };
    }
  });
  LineGridWindow& grid = widgets_.LVRDVLineConfig;
  grid.on_cell_set = [this, &grid](int row, int column) {
    if (grid.NamesRow(column)) NameRow(row);
  };
  grid.on_rows_going = [&grid] { ForgetAccessibleItems(grid.Handle(), grid.RowCount()); };
  Finish();
}

void FormWindow::AfterBox() {
  const HWND before = std::exchange(focus_before_box_, nullptr);
  if (!WindowsExist()) {
    if (on_windows_gone) on_windows_gone();
    if (!WindowsExist() && make_windows) make_windows();
    return;
  }
  // The system gives it to the host's window.
  if (before && !HasFocus(window_) && !keyboard_.GoTo(before)) FocusTo(window_);
}

// What belongs to the windows of now.
void FormWindow::Finish() {
  Forms().RemoveAllOf(this);
  Forms().Add(window_, this);
  screen_.SetForm(window_);
  widgets_.fraConfiguration.SetMainChild(widgets_.LVRDVLineConfig.Handle());
  std::vector<KeyboardWalk::Stop> stops;
  ForEachWidget(widgets_, [&]<class Window>(const Window& window, const WidgetEntry& entry) {
    if (entry.kind == WidgetKind::Frame || entry.IsInPlace()) return;
    wchar_t mnemonic = 0;
    if constexpr (std::is_same_v<Window, ButtonWindow>) mnemonic = window.Mnemonic();
    stops.push_back({window.Handle(), mnemonic});
  });
  keyboard_.SetStops(std::move(stops));
  NameWidgets();
  ApplyFont();
  Layout();
}

// The windows go, and with them what belongs to them; what they show stays.
void FormWindow::LeaveWindows() {
  ForEachWidget(widgets_, [this](auto& window, const WidgetEntry&) {
    if (!making_) window.Remember();
    ForgetTarget(window.Handle(), &window);
  });
  ForgetNames();
  widgets_.LVRDVLineConfig.Unhook();
}

bool FormWindow::TryPutInto(HWND parent) {
  return WindowsExist() && ShareAwareness(window_, parent) && SetParent(window_, parent) != nullptr;
}

void FormWindow::PutInto(HWND parent) {
  if (TryPutInto(parent)) return;
  DestroyWindows();
  MakeAnew(parent);
}

void FormWindow::DestroyWindows() {
  DestroyWindow(window_);
}

void FormWindow::MakeAnew(HWND parent) {
  const AwarenessOf like_the_parent(parent);
  making_ = true;
  try {
    window_.MakeAnew(parent);
    ForEachWidget(widgets_, [this](Lasting& window, const WidgetEntry& entry) {
      window.MakeAnew(ContainerOf(entry));
    });
  } catch (...) {
    DestroyWindow(window_);
    making_ = false;
    throw;
  }
  making_ = false;
  scale_ = Scale::Of(window_);
  editing_ = false;
  Finish();
  // The new grid is scrolled to its start: an editor would lie over another cell.
  for (Editor* editor : form_.Editors()) editor->SetVisible(false);
}

FormWindow::~FormWindow() {
  Forms().RemoveAllOf(this);
  if (IsWindow(window_)) ForgetNames();
  widgets_.LVRDVLineConfig.Unhook();
  if (background_) DeleteObject(background_);
}

void FormWindow::SetAppearance(Appearance appearance) {
  if (appearance == appearance_) return;
  appearance_ = std::move(appearance);
  if (background_) DeleteObject(background_);
  const auto& wished = appearance_.background;
  background_ = wished && !wished->SystemBrush() ? CreateSolidBrush(wished->Now()) : nullptr;
  Refresh();
}

void FormWindow::FollowScreen() {
  const Scale scale = Scale::Of(window_);
  if (scale == scale_) return;
  scale_ = scale;
  Refresh();
}

void FormWindow::FollowCues() {
  const auto hidden = LOWORD(SendMessageW(GetParent(window_), WM_QUERYUISTATE, 0, 0));
  const auto shown = static_cast<WORD>(~hidden & (UISF_HIDEFOCUS | UISF_HIDEACCEL));
  SendMessageW(window_, WM_UPDATEUISTATE, MAKEWPARAM(UIS_SET, hidden), 0);
  SendMessageW(window_, WM_UPDATEUISTATE, MAKEWPARAM(UIS_CLEAR, shown), 0);
}

void FormWindow::Refresh() {
  ApplyFont();
  Layout();
  RefreshColors();
}

// Frames and buttons are called by their captions.
void FormWindow::NameWidgets() {
  ForEachWidget(widgets_, [this]<class Window>(Window& window, const WidgetEntry& entry) {
    if (entry.kind == WidgetKind::Frame || entry.IsButton()) return;
    NameWithParts(window.Handle(), Text(entry.text));
    if constexpr (std::is_base_of_v<Editor, Window>) {
      if (!entry.IsInPlace()) return;
      window.on_showing = [this, &window, name = entry.text] {
        NameWithParts(window.Handle(), NameOverCell(window, name));
      };
    }
  });
}

Text FormWindow::NameOverCell(const Editor& editor, TextView name) const {
  const LineGridWindow& grid = widgets_.LVRDVLineConfig;
  // The row that it has been placed over need not be selected yet.
  const std::optional<int> row =
      grid.HitTest(editor.Left() - grid.Left(), editor.Top() - grid.Top());
  const Text row_name = row ? grid.RowName(*row) : Text();
  return row_name.empty() ? Text(name) : row_name + u", " + Text(name);
}

// By itself the list view says the text of the first column, a code that nobody sees.
void FormWindow::NameRow(int row) const {
  const LineGridWindow& grid = widgets_.LVRDVLineConfig;
  Text name = grid.RowName(row);
  if (const Text label = grid.RowLabel(row); !label.empty()) name += u", " + label;
  SetAccessibleItemName(grid.Handle(), row, Wide(name));
}

void FormWindow::ForgetNames() const {
  ForgetAccessibleItems(widgets_.LVRDVLineConfig.Handle(), widgets_.LVRDVLineConfig.RowCount());
  std::vector<HWND> windows;
  EnumChildWindows(window_, &AddWindow, reinterpret_cast<LPARAM>(&windows));
  ForgetAccessibleTexts(windows);
}

void FormWindow::Layout() {
  RECT client = {};
  GetClientRect(window_, &client);
  const FormLayout layout =
      LayOut({scale_.ToTwips(client.right), scale_.ToTwips(client.bottom)}, content_, texts_);
  const std::array<std::pair<HWND, Rectangle>, 6> places = {{
      {widgets_.fraConfiguration.Handle(), layout.fraConfiguration},
      {widgets_.fraDefault.Handle(), layout.fraDefault},
      {widgets_.cmdShowDefaults.Handle(), layout.cmdShowDefaults},
      {widgets_.cmdOK.Handle(), layout.cmdOK},
      {widgets_.cmdCancel.Handle(), layout.cmdCancel},
      {widgets_.cmdApply.Handle(), layout.cmdApply},
  }};
  for (const auto& [window, place] : places) MoveTo(window, scale_.Pixels(place));
  widgets_.LVRDVLineConfig.Place(layout.grid, scale_, texts_);
  const Twips editor_height = texts_.EditorHeight();
  ForEachWidget(widgets_, [this, editor_height]<class Window>(Window& window, const WidgetEntry&) {
    if constexpr (std::is_base_of_v<Editor, Window>) window.SetScale(scale_, editor_height);
  });
  widgets_.cmbRDVType.SetLeft(layout.cmbRDVType.left);
  widgets_.cmbRDVType.SetTop(layout.cmbRDVType.top);
  widgets_.cmbRDVType.SetWidth(layout.cmbRDVType.width);
}

void FormWindow::ApplyFont() {
  Font font = appearance_.font ? MakeFont(*appearance_.font, scale_) : MakeSystemFont(scale_);
  EnumChildWindows(window_, SetFont, reinterpret_cast<LPARAM>(font.get()));
  font_ = std::move(font);
  const TextSizes before = std::exchange(texts_, MeasureTexts());
  if (texts_.GridRowHeight() == before.GridRowHeight()) return;
  // The rows move away from below an editor that is open.
  for (Editor* editor : form_.Editors()) editor->SetVisible(false);
}

TextSizes FormWindow::MeasureTexts() const {
  const auto width = [this](const ButtonWindow& button) {
    const Text caption = WindowText(button.Handle());
    return scale_.ToTwips(TextExtent(font_.get(), {Wide(caption), caption.size()}).cx);
  };
  return {.line = scale_.ToTwips(TextExtent(font_.get(), L"X").cy),
          .captions = std::max(
              {width(widgets_.cmdOK), width(widgets_.cmdCancel), width(widgets_.cmdApply)}),
          .restore = width(widgets_.cmdShowDefaults)};
}

// Of the many settings only the font matters here; an open editor is left alone by the others.
void FormWindow::FollowSystemFont() {
  if (appearance_.font) return;
  LOGFONTW before = {};
  LOGFONTW now = {};
  const Font font = MakeSystemFont(scale_);
  GetObjectW(font_.get(), sizeof before, &before);
  GetObjectW(font.get(), sizeof now, &now);
  if (memcmp(&before, &now, sizeof now) != 0) Refresh();
}

void FormWindow::RefreshColors() {
  widgets_.LVRDVLineConfig.RefreshColors();
  RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormWindow::CheckFocus(bool gained) {
  const HWND focus = GetFocus();
  const bool inside = focus == window_ || IsChild(window_, focus);
  if (inside && focus != window_ && focus != widgets_.fraConfiguration.Handle())
    keyboard_.Note(focus);
  // What one window inside lost, another has gained, and tells of it.
  if (on_focus && (gained || !inside)) on_focus(inside);
  const bool editing = keyboard_.Editing();
  if (std::exchange(editing_, editing) != editing && on_editing_change) on_editing_change();
}

// They hear from the system only through their parents.
void FormWindow::TellCommonControls(UINT message, WPARAM wparam, LPARAM lparam) const {
  const HWND grid = widgets_.LVRDVLineConfig.Handle();
  SendMessageW(grid, message, wparam, lparam);
  SendMessageW(reinterpret_cast<HWND>(SendMessageW(grid, LVM_GETHEADER, 0, 0)), message, wparam,
               lparam);
}

std::optional<LRESULT> FormWindow::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      // A container may resize for a new resolution without a word about that.
      if (Scale::Of(window_) == scale_) {
        Layout();
      } else {
        FollowScreen();
      }
      return 0;
    case WM_COMMAND:
    case WM_NOTIFY: {
      const Notification notification(message, wparam, lparam);
      ReflectFocus(window_, notification);
      return ReflectNotification(notification);
    }
    case WM_SETCURSOR:
      if (screen_.ShowPointer()) return TRUE;
      return std::nullopt;
    case WM_LBUTTONDOWN:
      keyboard_.Enter(false);
      return 0;
    case WM_PARENTNOTIFY:
      if (IsMousePress(LOWORD(wparam))) ReflectPress(window_);
      return std::nullopt;
    case WM_SETFOCUS:
      // The window itself has no use for the keyboard; a container gives it what it gives the
      // control.
      keyboard_.Resume();
      CheckFocus(true);
      return 0;
    case kCheckFocus:
      CheckFocus(wparam != FALSE);
      return 0;
    case WM_ERASEBKGND: {
      RECT area = {};
      GetClientRect(window_, &area);
      FillRect(reinterpret_cast<HDC>(wparam), &area, FormBackground(window_));
      return 1;
    }
    case WM_CTLCOLORBTN:
      return reinterpret_cast<LRESULT>(FormBackground(window_));
    case WM_SYSCOLORCHANGE:
      TellCommonControls(message, wparam, lparam);
      RefreshColors();
      return std::nullopt;
    case WM_THEMECHANGED:
      RefreshColors();
      return std::nullopt;
    case WM_SETTINGCHANGE:
      TellCommonControls(message, wparam, lparam);
      FollowSystemFont();
      return std::nullopt;
    case WM_DPICHANGED_AFTERPARENT:
      FollowScreen();
      return 0;
    case WM_DESTROY:
      LeaveWindows();
      return 0;
    default:
      return std::nullopt;
  }
}

LRESULT CALLBACK FormWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto hold = HoldForm(window);
  if (FormWindow* form = FormOf(window)) {
    if (const auto answer = form->OnMessage(message, wparam, lparam)) return *answer;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace rdv::win32
