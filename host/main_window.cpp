#include "host/main_window.h"

#include <climits>

namespace rdvhost {
namespace {

constexpr const wchar_t* kWindowClass = L"rdvhost";
constexpr const wchar_t* kPanelClass = L"rdvhost.panel";
constexpr const wchar_t* kTitle = L"Site administration";
constexpr const wchar_t* kWrongNumber =
    L"The configuration must be a whole number from 1 to 32767.";
constexpr UINT kRemoveControl = WM_APP;  // posted by the control's event

enum ChildId : int { kNumber = 10, kShow = IDOK, kPanel = 12 };

// At 96 dots per inch.
constexpr int kMargin = 8;
constexpr int kRowHeight = 24;
constexpr int kFieldHeight = 20;  // what one line of text takes
constexpr int kLabelWidth = 90;
constexpr int kNumberWidth = 60;
constexpr int kButtonWidth = 75;

// What a control of the usual size takes.
constexpr SIZE kFallbackControlSize = {920, 448};

// The program has one. What a window itself holds for its owner any process can change.
MainWindow* the_window = nullptr;

}  // namespace

MainWindow::MainWindow(const Options& options) : options_(options) {
  const HINSTANCE module = GetModuleHandleW(nullptr);
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.hInstance = module;
  description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  description.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  description.lpfnWndProc = &Procedure;
  description.lpszClassName = kWindowClass;
  RegisterClassExW(&description);
  description.lpfnWndProc = &PanelProcedure;
  description.lpszClassName = kPanelClass;
  RegisterClassExW(&description);

  window_ = CreateWindowExW(0, kWindowClass, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                            CW_USEDEFAULT, CW_USEDEFAULT, 800, 500, nullptr, nullptr, module, this);
  CreateChildren();
  FitToControl();
  ShowWindow(window_, SW_SHOW);
  if (options_.configuration) {
    SetDlgItemTextW(window_, kNumber, options_.configuration->c_str());
    ShowConfiguration();
  } else {
    SetFocus(number_);
  }
}

int MainWindow::Run() {
  MSG message = {};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    // The control sees the keys first while it has the keyboard; Tab and the arrow keys would
    // never reach it otherwise.
    if (control_ && control_->Translate(message)) continue;
    if (IsDialogMessageW(window_, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return static_cast<int>(message.wParam);
}

LRESULT CALLBACK MainWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lparam);
    the_window = static_cast<MainWindow*>(creation->lpCreateParams);
  }
  MainWindow* const self = the_window;
  if (!self || !self->panel_) return DefWindowProcW(window, message, wparam, lparam);
  return self->Handle(message, wparam, lparam);
}

LRESULT MainWindow::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      LayOut();
      return 0;
    case WM_ACTIVATE:
      // The system would give the keyboard to this window, which has no use for it.
      if (LOWORD(wparam) == WA_INACTIVE) {
        focus_ = GetFocus();
        return 0;
      }
      if (!focus_ || !IsChild(window_, focus_))
        return DefWindowProcW(window_, message, wparam, lparam);
      SetFocus(focus_);
      return 0;
    case WM_SETFOCUS:
      if (focus_ && IsChild(window_, focus_)) SetFocus(focus_);
      return 0;
    case WM_COMMAND:
      if (LOWORD(wparam) == kShow) ShowConfiguration();
      return 0;
    case kRemoveControl:
      RemoveControl();
      return 0;
    case WM_SYSCOLORCHANGE:
      // Only top-level windows are told; the controls inside need to know too.
      SendMessageW(panel_, message, wparam, lparam);
      return 0;
    case WM_CLOSE:
      RemoveControl();
      DestroyWindow(window_);
      return 0;
    case WM_DESTROY:
      DeleteObject(font_);
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window_, message, wparam, lparam);
  }
}

// The control's parent: when Tab comes to it, the control gets the focus.
LRESULT CALLBACK MainWindow::PanelProcedure(HWND window, UINT message, WPARAM wparam,
                                            LPARAM lparam) {
  MainWindow* const self = the_window;
  if (message == WM_SETFOCUS && self && self->control_) {
    self->control_->GiveFocus();
    return 0;
  }
  if (message == WM_SYSCOLORCHANGE) {
    if (const HWND inside = ::GetWindow(window, GW_CHILD)) {
      SendMessageW(inside, message, wparam, lparam);
    }
    return 0;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

void MainWindow::CreateChildren() {
  const HINSTANCE module = GetModuleHandleW(nullptr);
  const auto create = [&](const wchar_t* name, const wchar_t* text, DWORD style, int id) {
    return CreateWindowExW(0, name, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module, nullptr);
  };
  label_ = create(L"STATIC", L"Confi&guration:", SS_CENTERIMAGE, -1);
  number_ = create(L"EDIT", L"1", WS_TABSTOP | WS_BORDER | ES_NUMBER | ES_AUTOHSCROLL, kNumber);
  show_ = create(L"BUTTON", L"&Show", WS_TABSTOP | BS_DEFPUSHBUTTON, kShow);
  panel_ = create(kPanelClass, L"", WS_TABSTOP | WS_CLIPCHILDREN, kPanel);

  const HDC screen = GetDC(nullptr);
  dots_per_inch_ = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  font_ = CreateFontIndirectW(&metrics.lfMessageFont);
  for (const HWND child : {label_, number_, show_}) {
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_), TRUE);
  }
}

SIZE MainWindow::WantedControlSize() const {
  const int width =
      options_.width ? options_.width : MulDiv(kFallbackControlSize.cx, dots_per_inch_, 96);
  const int height =
      options_.height ? options_.height : MulDiv(kFallbackControlSize.cy, dots_per_inch_, 96);
  return {width, height};
}

void MainWindow::FitToControl() {
  const SIZE control = WantedControlSize();
  const auto pixels = [&](int at_96) { return MulDiv(at_96, dots_per_inch_, 96); };
  RECT size = {0, 0, control.cx, control.cy + pixels(kRowHeight + 2 * kMargin)};
  AdjustWindowRectEx(&size, WS_OVERLAPPEDWINDOW, FALSE, 0);
  SetWindowPos(window_, nullptr, 0, 0, size.right - size.left, size.bottom - size.top,
               SWP_NOMOVE | SWP_NOZORDER);
  LayOut();
}

void MainWindow::LayOut() {
  const auto pixels = [&](int at_96) { return MulDiv(at_96, dots_per_inch_, 96); };
  RECT client = {};
  GetClientRect(window_, &client);
  int left = pixels(kMargin);
  const auto place = [&](HWND child, int width, int height) {
    MoveWindow(child, left, pixels(kMargin + (kRowHeight - height) / 2), pixels(width),
               pixels(height), TRUE);
    left += pixels(width + kMargin);
  };
  place(label_, kLabelWidth, kRowHeight);
  place(number_, kNumberWidth, kFieldHeight);
  place(show_, kButtonWidth, kRowHeight);
  const int top = pixels(kRowHeight + 2 * kMargin);
  MoveWindow(panel_, 0, top, client.right, client.bottom - top, TRUE);
  if (control_) control_->Resize();
}

void MainWindow::ShowConfiguration() {
  const std::optional<SHORT> number = ConfigurationNumber();
  if (!number) {
    MessageBoxW(window_, kWrongNumber, kTitle, MB_OK | MB_ICONWARNING);
    SetFocus(number_);
    SendMessageW(number_, EM_SETSEL, 0, -1);
  }
  const bool shown = number && CreateControl() && control_->Show(*number);
  if (shown) control_->GiveFocus();
  WriteReadyFile(shown);
}

// The control takes an Integer of 16 bits: a larger number would become another one.
std::optional<SHORT> MainWindow::ConfigurationNumber() const {
  BOOL is_number = FALSE;
  const UINT number = GetDlgItemInt(window_, kNumber, &is_number, FALSE);
  if (!is_number || number < 1 || number > SHRT_MAX) return std::nullopt;
  return static_cast<SHORT>(number);
}

// True as well when it is there already.
bool MainWindow::CreateControl() {
  if (control_) return true;
  control_ = std::make_unique<LineControl>(panel_, [this] {
    RECT area = {};
    GetClientRect(panel_, &area);
    return area;
  });
  control_->on_remove_me = [this] { PostMessageW(window_, kRemoveControl, 0, 0); };
  if (SUCCEEDED(control_->Create())) return true;
  control_.reset();
  MessageBoxW(window_, L"The line configuration control is not registered on this machine.", kTitle,
              MB_OK | MB_ICONERROR);
  return false;
}

// The event may have come twice: the second time there is nothing left to take away.
void MainWindow::RemoveControl() {
  if (!control_) return;
  control_.reset();
  SetFocus(number_);
}

void MainWindow::WriteReadyFile(bool shown) const {
  if (options_.ready_file.empty()) return;
  UpdateWindow(window_);
  const HANDLE file = CreateFileW(options_.ready_file.c_str(), GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  const char* text = shown ? "shown\n" : "failed\n";
  DWORD written = 0;
  WriteFile(file, text, static_cast<DWORD>(lstrlenA(text)), &written, nullptr);
  CloseHandle(file);
}

}  // namespace rdvhost
