#include "component/object/live_control.h"

#include "component/com/boundary.h"
#include "component/com/module.h"
#include "component/object/current_controls.h"
#include "component/object/label_validator.h"
#include "rules/grid_columns.h"

namespace rdv {

LiveControl::LiveControl()
    : parking_(ModuleInstance()),
      form_(ModuleInstance(), parking_.Handle(), kGridContent),
      control_(form_.Widgets(), ControlOptions{.make_label_validator = MakeLabelValidator}) {
  parking_.TellOfChanges(form_);
  form_.make_windows = [this] { MakeWindows(); };
}

void LiveControl::MakeWindows() {
  const CurrentControls controls;
  if (!WindowsExist()) form_.PutInto(parking_.Handle());
}

void LiveControl::DestroyWindows() {
  if (WindowsExist()) form_.DestroyWindows();
}

std::shared_ptr<LiveControl> LiveControl::Create() {
  const CurrentControls controls;
  const std::shared_ptr<LiveControl> live(new LiveControl);
  // A container may let go of the control while its windows are at work.
  live->form_.KeepAlive(live);
  return live;
}

HRESULT LiveControl::PlaceIn(HWND parent, const RECT& place, const RECT& clip, bool reachable) {
  return AtBoundary([&] {
    {
      const CurrentControls controls;
      form_.PutInto(parent);
    }
    form_.FollowScreen();
    form_.FollowCues();
    Move(place, clip);
    EnableWindow(form_.Handle(), reachable);
    ShowWindow(form_.Handle(), SW_SHOWNA);
    return S_OK;
  });
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

void LiveControl::Hide() {
  GiveFocusBack();
  ShowWindow(form_.Handle(), SW_HIDE);
}

void LiveControl::Park() {
  Hide();
  // The parking window keeps the awareness of resolutions that it was made with.
  if (!form_.TryPutInto(parking_.Handle())) DestroyWindows();
}

}  // namespace rdv
