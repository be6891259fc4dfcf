#include "widgets/win32/form_window.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "widgets/layout.h"
#include "widgets/win32/accessible_name.h"
#include "widgets/win32/awareness.h"
#include "widgets/win32/control_ids.h"
#include "widgets/win32/form_captions.h"
#include "widgets/win32/parking_window.h"
#include "widgets/win32/platform.h"
#include "widgets/win32/wide.h"
#include "widgets/win32/window_map.h"

namespace rdv::win32 {
namespace {

constexpr const wchar_t* kFormClass = L"TLV_RDV_Line_Config.Form";
// With whether a window of the form was given the focus, or pressed.
constexpr UINT kCheckFocus = WM_APP;
// Of the grid: the line's number, as the user sees it, and what he calls it.
constexpr int kLineColumn = 10;
constexpr int kLabelColumn = 20;

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
void NameWithParts(HWND window, const wchar_t* name) {
  SetAccessibleName(window, name);
  if (const HWND text_part = FindWindowExW(window, nullptr, L"EDIT", nullptr)) {
    SetAccessibleName(text_part, name);
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

void ReflectFocus(HWND form, UINT message, WPARAM wparam, LPARAM lparam) {
  // The codes of the child classes for gaining and losing the focus.
  const UINT code =
      message == WM_NOTIFY ? reinterpret_cast<const NMHDR*>(lparam)->code : HIWORD(wparam);
  constexpr std::array<UINT, 4> kGains = {NM_SETFOCUS, EN_SETFOCUS, CBN_SETFOCUS, BN_SETFOCUS};
  constexpr std::array<UINT, 4> kLosses = {NM_KILLFOCUS, EN_KILLFOCUS, CBN_KILLFOCUS, BN_KILLFOCUS};
  const bool gained = std::find(kGains.begin(), kGains.end(), code) != kGains.end();
  if (!gained && std::find(kLosses.begin(), kLosses.end(), code) == kLosses.end()) return;
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

FormWindow::FormWindow(HINSTANCE module, HWND parent)
    : window_(module, parent),
      scale_(Scale::Of(window_)),
      fraConfiguration_(window_, control_id::fraConfiguration, caption::kConfigurationFrame),
      cmbPartition_(fraConfiguration_.Handle(), control_id::cmbPartition, TextEntry::FromListOnly),
      cmbStartingNodeName_(fraConfiguration_.Handle(), control_id::cmbStartingNodeName,
                           TextEntry::FromListOnly),
      cmbStartingNodeNumber_(fraConfiguration_.Handle(), control_id::cmbStartingNodeNumber,
                             TextEntry::Typed),
      cmbVolume_(fraConfiguration_.Handle(), control_id::cmbVolume, TextEntry::FromListOnly),
      cmbModeType_(fraConfiguration_.Handle(), control_id::cmbModeType, TextEntry::FromListOnly),
      cmbModeNumber_(fraConfiguration_.Handle(), control_id::cmbModeNumber, TextEntry::Typed),
      cmbNISOption_(fraConfiguration_.Handle(), control_id::cmbNISOption, TextEntry::FromListOnly),
      txtEWTOption_(fraConfiguration_.Handle(), control_id::txtEWTOption),
      cmbLineType_(fraConfiguration_.Handle(), control_id::cmbLineType, TextEntry::FromListOnly),
      cmbImpedance_(fraConfiguration_.Handle(), control_id::cmbImpedance, TextEntry::FromListOnly),
      cmbSoftStop_(fraConfiguration_.Handle(), control_id::cmbSoftStop, TextEntry::FromListOnly),
      txtLabel_(fraConfiguration_.Handle(), control_id::txtLabel),
      LVRDVLineConfig_(fraConfiguration_.Handle(), control_id::LVRDVLineConfig),
      fraDefault_(window_, control_id::fraDefault, caption::kDefaultsFrame),
      cmbRDVType_(fraDefault_.Handle(), control_id::cmbRDVType, TextEntry::Typed),
      cmdShowDefaults_(fraDefault_.Handle(), control_id::cmdShowDefaults, caption::kRestore),
      cmdOK_(window_, control_id::cmdOK, caption::kOk),
      cmdCancel_(window_, control_id::cmdCancel, caption::kCancel),
      cmdApply_(window_, control_id::cmdApply, caption::kApply),
      screen_(window_),
      form_{fraConfiguration_,
            LVRDVLineConfig_,
            cmbPartition_,
            cmbStartingNodeName_,
            cmbStartingNodeNumber_,
            cmbVolume_,
            cmbModeType_,
            cmbModeNumber_,
            cmbNISOption_,
            txtEWTOption_,
            cmbLineType_,
            cmbImpedance_,
            cmbSoftStop_,
            txtLabel_,
            fraDefault_,
            cmbRDVType_,
            cmdShowDefaults_,
            cmdOK_,
            cmdCancel_,
            cmdApply_,
            screen_},
      keyboard_(form_, LVRDVLineConfig_) {
  cmbRDVType_.SetVisible(true);
  cmdApply_.SetEnabled(false);
  screen_.on_opening = [this] { focus_before_box_ = HasFocus(window_) ? GetFocus() : nullptr; };
  screen_.on_closed = [this] { AfterBox(); };
  for (Editor* editor : form_.Editors()) {
    if (auto* list = dynamic_cast<ComboBoxWindow*>(editor)) {
      list->on_step = [this](bool backward) { Notify(LVRDVLineConfig_.on_edit_next, backward); };
    }
  }
  LVRDVLineConfig_.on_cell_set = [this](int row, int column) {
    if (column == kLineColumn || column == kLabelColumn) NameRow(row);
  };
  LVRDVLineConfig_.on_rows_going = [this] {
    ForgetAccessibleItems(LVRDVLineConfig_.Handle(), LVRDVLineConfig_.RowCount());
  };
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
  fraConfiguration_.SetMainChild(LVRDVLineConfig_.Handle());
  keyboard_.SetStops({{{LVRDVLineConfig_.Handle(), 0},
                       {cmbRDVType_.Handle(), 0},
                       {cmdShowDefaults_.Handle(), cmdShowDefaults_.Mnemonic()},
                       {cmdOK_.Handle(), cmdOK_.Mnemonic()},
                       {cmdCancel_.Handle(), cmdCancel_.Mnemonic()},
                       {cmdApply_.Handle(), cmdApply_.Mnemonic()}}});
  NameWidgets();
  ApplyFont();
  Layout();
}

// In the order in which they are made: what comes first lies above what comes later.
std::vector<FormWindow::PlacedWidget> FormWindow::AllWidgets() {
  return {{&fraConfiguration_, nullptr},
          {&cmbPartition_, &fraConfiguration_},
          {&cmbStartingNodeName_, &fraConfiguration_},
          {&cmbStartingNodeNumber_, &fraConfiguration_},
          {&cmbVolume_, &fraConfiguration_},
          {&cmbModeType_, &fraConfiguration_},
          {&cmbModeNumber_, &fraConfiguration_},
          {&cmbNISOption_, &fraConfiguration_},
          {&txtEWTOption_, &fraConfiguration_},
          {&cmbLineType_, &fraConfiguration_},
          {&cmbImpedance_, &fraConfiguration_},
          {&cmbSoftStop_, &fraConfiguration_},
          {&txtLabel_, &fraConfiguration_},
          {&LVRDVLineConfig_, &fraConfiguration_},
          {&fraDefault_, nullptr},
          {&cmbRDVType_, &fraDefault_},
          {&cmdShowDefaults_, &fraDefault_},
          {&cmdOK_, nullptr},
          {&cmdCancel_, nullptr},
          {&cmdApply_, nullptr}};
}

void FormWindow::Remember() {
  if (making_) return;
  for (const PlacedWidget& each : AllWidgets()) each.widget->Remember();
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
    for (const PlacedWidget& each : AllWidgets())
      each.widget->MakeAnew(each.frame ? each.frame->Handle() : HWND{window_});
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
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  LVRDVLineConfig_.Unhook();
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

void FormWindow::NameWidgets() {
  SetAccessibleName(LVRDVLineConfig_.Handle(), L"Lines");
  NameWithParts(cmbRDVType_.Handle(), L"Unit Type");
  const auto name_editor = [this](auto& editor, const wchar_t* name) {
    NameWithParts(editor.Handle(), name);
    editor.on_showing = [this, &editor, name] {
      NameWithParts(editor.Handle(), NameOverCell(editor, name).c_str());
    };
  };
  name_editor(cmbPartition_, L"Partition");
  name_editor(cmbStartingNodeName_, L"Starting Node");
  name_editor(cmbStartingNodeNumber_, L"Starting Node Number");
  name_editor(cmbVolume_, L"Volume");
  name_editor(cmbModeType_, L"Mode");
  name_editor(cmbModeNumber_, L"Mode Number");
  name_editor(cmbNISOption_, L"NIS Option");
  name_editor(txtEWTOption_, L"EWT Option");
  name_editor(cmbLineType_, L"Line Type");
  name_editor(cmbImpedance_, L"Impedance");
  name_editor(cmbSoftStop_, L"Soft Stop");
  name_editor(txtLabel_, L"Label");
}

std::wstring FormWindow::NameOverCell(const Editor& editor, const wchar_t* name) const {
  // The row that it has been placed over need not be selected yet.
  const std::optional<int> row = LVRDVLineConfig_.HitTest(editor.Left() - LVRDVLineConfig_.Left(),
                                                          editor.Top() - LVRDVLineConfig_.Top());
  if (!row || LVRDVLineConfig_.ColumnCount() < kLineColumn) return name;
  const Text line = LVRDVLineConfig_.Cell(*row, kLineColumn);
  return L"Line " + std::wstring(Wide(line)) + L", " + name;
}

// By itself the list view says the text of the first column, a code that nobody sees.
void FormWindow::NameRow(int row) const {
  const Text line = LVRDVLineConfig_.Cell(row, kLineColumn);
  std::wstring name = L"Line " + std::wstring(Wide(line));
  if (LVRDVLineConfig_.ColumnCount() >= kLabelColumn) {
    const Text label = LVRDVLineConfig_.Cell(row, kLabelColumn);
    if (!label.empty()) name.append(L", ").append(Wide(label));
  }
  SetAccessibleItemName(LVRDVLineConfig_.Handle(), row, name.c_str());
}

void FormWindow::ForgetNames() const {
  ForgetAccessibleItems(LVRDVLineConfig_.Handle(), LVRDVLineConfig_.RowCount());
  std::vector<HWND> windows;
  EnumChildWindows(window_, &AddWindow, reinterpret_cast<LPARAM>(&windows));
  ForgetAccessibleTexts(windows);
}

void FormWindow::Layout() {
  RECT client = {};
  GetClientRect(window_, &client);
  const FormLayout layout = LayOut({scale_.ToTwips(client.right), scale_.ToTwips(client.bottom)});
  const std::array<std::pair<HWND, Rectangle>, 6> places = {{
      {fraConfiguration_.Handle(), layout.fraConfiguration},
      {fraDefault_.Handle(), layout.fraDefault},
      {cmdShowDefaults_.Handle(), layout.cmdShowDefaults},
      {cmdOK_.Handle(), layout.cmdOK},
      {cmdCancel_.Handle(), layout.cmdCancel},
      {cmdApply_.Handle(), layout.cmdApply},
  }};
  for (const auto& [window, place] : places) MoveTo(window, scale_.Pixels(place));
  LVRDVLineConfig_.Place(layout.grid, scale_);
  for (Editor* editor : form_.Editors()) {
    if (auto* list = dynamic_cast<ComboBoxWindow*>(editor)) list->SetScale(scale_);
  }
  txtEWTOption_.SetScale(scale_);
  txtLabel_.SetScale(scale_);
  cmbRDVType_.SetScale(scale_);
  cmbRDVType_.SetLeft(layout.cmbRDVType.left);
  cmbRDVType_.SetTop(layout.cmbRDVType.top);
  cmbRDVType_.SetWidth(layout.cmbRDVType.width);
}

void FormWindow::ApplyFont() {
  Font font = appearance_.font ? MakeFont(*appearance_.font, scale_) : MakeSystemFont(scale_);
  EnumChildWindows(window_, SetFont, reinterpret_cast<LPARAM>(font.get()));
  font_ = std::move(font);
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
  LVRDVLineConfig_.RefreshColors();
  RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormWindow::CheckFocus(bool gained) {
  const HWND focus = GetFocus();
  const bool inside = focus == window_ || IsChild(window_, focus);
  if (inside && focus != window_ && focus != fraConfiguration_.Handle()) keyboard_.Note(focus);
  // What one window inside lost, another has gained, and tells of it.
  if (on_focus && (gained || !inside)) on_focus(inside);
  const bool editing = keyboard_.Editing();
  if (std::exchange(editing_, editing) != editing && on_editing_change) on_editing_change();
}

// They hear from the system only through their parents.
void FormWindow::TellCommonControls(UINT message, WPARAM wparam, LPARAM lparam) const {
  const HWND grid = LVRDVLineConfig_.Handle();
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
    case WM_NOTIFY:
      ReflectFocus(window_, message, wparam, lparam);
      return ReflectNotification(message, wparam, lparam);
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
      Remember();
      ForgetNames();
      LVRDVLineConfig_.Unhook();
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
