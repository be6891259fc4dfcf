#include "component/object/live_control.h"

#include "component/com/module.h"
#include "component/object/label_validator.h"

namespace rdv {

namespace {

constexpr UINT_PTR kSubclass = 1;

}  // namespace

ParkingWindow::ParkingWindow()
    : window_(win32::MakeWindow(ModuleInstance(), nullptr,
                                {.window_class = L"STATIC", .style = WS_POPUP})) {
  SetWindowSubclass(window_, &Procedure, kSubclass, 0);
}

ParkingWindow::~ParkingWindow() {
  RemoveWindowSubclass(window_, &Procedure, kSubclass);
  DestroyWindow(window_);
}

LRESULT CALLBACK ParkingWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                          UINT_PTR /*id*/, DWORD_PTR /*unused*/) {
  if (message == WM_SYSCOLORCHANGE || message == WM_SETTINGCHANGE) {
    const auto form = reinterpret_cast<HWND>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (form) SendMessageW(form, message, wparam, lparam);
  }
  return DefSubclassProc(window, message, wparam, lparam);
}

LiveControl::LiveControl()
    : form_(ModuleInstance(), parking_.Handle()),
      control_(form_.Widgets(), ControlOptions{.make_label_validator = MakeLabelValidator}) {
  parking_.TellOfChanges(form_.Handle());
}

std::shared_ptr<LiveControl> LiveControl::Create() {
  const std::shared_ptr<LiveControl> live(new LiveControl);
  // A container may let go of the control while its windows are at work.
  live->form_.KeepAlive(live);
  return live;
}

HRESULT LiveControl::PlaceIn(HWND parent, const RECT& place, const RECT& clip, bool reachable) {
  SetLastError(ERROR_SUCCESS);
  if (!SetParent(form_.Handle(), parent)) {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
  }
  form_.FollowScreen();
  form_.FollowCues();
  Move(place, clip);
  EnableWindow(form_.Handle(), reachable);
  ShowWindow(form_.Handle(), SW_SHOWNA);
  return S_OK;
}

void LiveControl::Move(const RECT& place, const RECT& clip) {
  RECT visible = {};
  const HWND form = form_.Handle();
  if (IntersectRect(&visible, &place, &clip) && !EqualRect(&visible, &place)) {
    OffsetRect(&visible, -place.left, -place.top);
    SetWindowRgn(form, CreateRectRgnIndirect(&visible), TRUE);
  } else {
    SetWindowRgn(form, nullptr, TRUE);
  }
  win32::MoveTo(form, place);
}

void LiveControl::SetReachable(bool reachable) {
  EnableWindow(form_.Handle(), reachable);
  // The keys would go on coming to whichever window has it.
  if (!reachable) GiveFocusBack();
}

void LiveControl::GiveFocusBack() {
  const HWND form = form_.Handle();
  const auto inside = [form] { return GetFocus() == form || IsChild(form, GetFocus()); };
  if (inside()) SetFocus(GetParent(form));
  // The container's window may be disabled, or hand the focus on to the control.
  if (inside()) SetFocus(nullptr);
}

void LiveControl::Park() {
  GiveFocusBack();
  ShowWindow(form_.Handle(), SW_HIDE);
  SetParent(form_.Handle(), parking_.Handle());
}

}  // namespace rdv
