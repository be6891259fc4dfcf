#include "component/object/in_place.h"

#include <algorithm>

#include "component/object/line_config_object.h"

namespace rdv {

HRESULT InPlace::Activate(Activity wanted, Entry entry) {
  return Guard([&] {
    // Otherwise a container could keep the control from ever leaving, even at its end.
    if (leaving_) return E_UNEXPECTED;
    LeaveDestroyedWindows();
    if (activity_ == Activity::Activating) {
      // Asked from inside the first step: the call under way leads there.
      wanted_ = std::max(wanted_, wanted);
      return S_OK;
    }
    if (activity_ == Activity::None) {
      // A container that undoes the first step and asks for it at once would do so for ever.
      if (asking_) return E_UNEXPECTED;
      wanted_ = wanted;
      asking_ = true;
      activity_ = Activity::Activating;
      const HRESULT result = AtBoundary([&] { return BecomeVisible(); });
      asking_ = false;
      if (FAILED(result)) {
        if (activity_ == Activity::Activating) activity_ = Activity::None;
        return result;
      }
      wanted = std::max(wanted, wanted_);
    }
    if (Placed()) object_.Live()->Show();
    if (wanted != Activity::UserInterface || !object_.Container().TakesInput()) return S_OK;
    const HRESULT result = BecomeUserInterface();
    if (SUCCEEDED(result)) TakeFocus(entry);
    return result;
  });
}

HRESULT InPlace::BecomeVisible() {
  const auto site = object_.Container().SiteAs<IOleInPlaceSite>(IID_IOleInPlaceSite);
  if (!site) return E_FAIL;
  // Made before the container is told anything: this may fail, and asks for fonts and colours.
  const std::shared_ptr<LiveControl> live = object_.Live();
  const bool reachable = object_.Container().TakesInput();
  Surroundings surroundings;
  HRESULT result = AskForPlace(*site.Get(), surroundings);
  if (FAILED(result)) return result;
  site_ = site;
  frame_ = std::move(surroundings.frame);
  document_ = std::move(surroundings.document);
  activity_ = Activity::Visible;
  result = live->PlaceIn(surroundings.parent, surroundings.place, surroundings.clip, reachable);
  if (FAILED(result)) {
    Deactivate();
    return result;
  }
  const ComPointer<IOleClientSite> client = object_.Container().Site();
  if (client && Placed()) client->ShowObject();
  return Placed() ? S_OK : E_FAIL;
}

// On failure the container has been told that the activation which it had agreed to is over.
HRESULT InPlace::AskForPlace(IOleInPlaceSite& site, Surroundings& surroundings) {
  const auto undone = [&] { return activity_ != Activity::Activating; };
  if (undone()) return E_FAIL;
  const HRESULT allowed = site.CanInPlaceActivate();
  if (allowed != S_OK || undone()) return OLE_E_NOT_INPLACEACTIVE;
  HRESULT result = site.OnInPlaceActivate();
  if (FAILED(result)) return result;

  OLEINPLACEFRAMEINFO frame_info = {};
  frame_info.cb = sizeof frame_info;
  if (!undone()) result = site.GetWindow(&surroundings.parent);
  if (SUCCEEDED(result) && !undone()) {
    result = site.GetWindowContext(surroundings.frame.Receive(), surroundings.document.Receive(),
                                   &surroundings.place, &surroundings.clip, &frame_info);
  }
  if (SUCCEEDED(result) && (undone() || !IsWindow(surroundings.parent))) result = E_FAIL;
  if (FAILED(result)) site.OnInPlaceDeactivate();
  return result;
}

HRESULT InPlace::BecomeUserInterface() {
  if (activity_ == Activity::UserInterface) return S_OK;
  if (activity_ != Activity::Visible || leaving_) return E_FAIL;
  const ComPointer<IOleInPlaceSite> site = site_;
  activity_ = Activity::UserInterface;
  const HRESULT result = site->OnUIActivate();
  if (FAILED(result)) {
    if (activity_ == Activity::UserInterface) activity_ = Activity::Visible;
    return result;
  }
  if (activity_ == Activity::UserInterface) TellWindows(this, Activity::UserInterface);
  return activity_ == Activity::UserInterface ? S_OK : E_FAIL;
}

// Who has the keyboard. Ends when the container has left the activity `meanwhile`.
void InPlace::TellWindows(IOleInPlaceActiveObject* active_object, Activity meanwhile) {
  const ComPointer<IOleInPlaceUIWindow> windows[] = {ComPointer<IOleInPlaceUIWindow>(frame_.Get()),
                                                     document_};
  for (const auto& window : windows) {
    if (!window) continue;
    if (activity_ == meanwhile) window->SetActiveObject(active_object, nullptr);
    if (activity_ == meanwhile && active_object) window->SetBorderSpace(nullptr);
  }
}

void InPlace::TakeFocus(Entry entry) {
  if (!Placed()) return;
  const std::shared_ptr<LiveControl> live = object_.Live();
  if (IsChild(live->Form().Handle(), GetFocus())) return;
  live->Form().Keyboard().Enter(entry == Entry::AtTheEnd);
}

HRESULT InPlace::Hide() {
  return Guard([&] {
    const bool left_already = std::exchange(leaving_, true);
    UIDeactivate();
    if (Placed()) {
      const std::shared_ptr<LiveControl> live = object_.Live();
      live->Hide();
    }
    TellFocus(false);
    leaving_ = left_already;
    LeaveDestroyedWindows();
    return S_OK;
  });
}

void InPlace::Deactivate() {
  const KeepObject keep(outer_);
  if (activity_ == Activity::Activating) {
    // The call under way sees it and tells the container.
    activity_ = Activity::None;
    return;
  }
  const bool left_already = std::exchange(leaving_, true);
  UIDeactivate();
  if (activity_ == Activity::Visible) {
    activity_ = Activity::None;
    const ComPointer<IOleInPlaceSite> site = std::move(site_);
    frame_.Reset();
    document_.Reset();
    object_.Park();
    TellFocus(false);
    site->OnInPlaceDeactivate();
  }
  leaving_ = left_already;
}

void InPlace::LeaveDestroyedWindows() {
  if (activity_ > Activity::Activating && !Placed()) Deactivate();
}

bool InPlace::Placed() const {
  return activity_ > Activity::Activating && object_.WindowsExist();
}

void InPlace::OnFocus(bool inside) {
  const KeepObject keep(outer_);
  if (!inside) {
    TellFocus(false);
    // Another program, or a message box, only borrows the keyboard; the host's own windows keep it.
    if (Placed() && HostHasFocus()) UIDeactivate();
    return;
  }
  if (!Placed() || !object_.Container().TakesInput()) return;
  // However often the container has taken the keyboard away, or refused it, before.
  BecomeUserInterface();
  if (Placed()) TellFocus(true);
}

bool InPlace::HostHasFocus() const {
  const HWND focus = GetFocus();
  const HWND form = object_.Live()->Form().Handle();
  const HWND host = GetAncestor(form, GA_ROOT);
  return focus && focus != host && IsChild(host, focus) && focus != form && !IsChild(form, focus);
}

void InPlace::TellFocus(bool inside) {
  if (std::exchange(focus_told_, inside) != inside) object_.Container().TellFocus(inside);
}

std::shared_ptr<void> InPlace::DisableHost() {
  const ComPointer<IOleInPlaceFrame> frame = frame_;
  if (!frame) return nullptr;
  frame->EnableModeless(FALSE);
  return std::shared_ptr<void>(nullptr, [frame](void*) { frame->EnableModeless(TRUE); });
}

// The keyboard may have come back to another window of the host than the control it had left.
HRESULT InPlace::OnActivate(BOOL activate) {
  return Guard([&] {
    if (activate && Placed() && HostHasFocus()) UIDeactivate();
    return S_OK;
  });
}

STDMETHODIMP InPlace::GetWindow(HWND* window) {
  if (!window) return E_POINTER;
  *window = nullptr;
  return Guard([&] {
    if (!Placed()) return E_FAIL;
    *window = object_.Live()->Form().Handle();
    return S_OK;
  });
}

STDMETHODIMP InPlace::ContextSensitiveHelp(BOOL /*enter*/) {
  return E_NOTIMPL;
}

STDMETHODIMP InPlace::InPlaceDeactivate() {
  return Guard([&] {
    Deactivate();
    return S_OK;
  });
}

STDMETHODIMP InPlace::UIDeactivate() {
  return Guard([&] {
    if (activity_ != Activity::UserInterface) return S_OK;
    activity_ = Activity::Visible;
    const ComPointer<IOleInPlaceSite> site = site_;
    TellWindows(nullptr, Activity::Visible);
    site->OnUIDeactivate(FALSE);
    return S_OK;
  });
}

STDMETHODIMP InPlace::SetObjectRects(LPCRECT place, LPCRECT clip) {
  if (!place) return E_INVALIDARG;
  return Guard([&] {
    if (Placed()) object_.Live()->Move(*place, clip ? *clip : *place);
    return S_OK;
  });
}

STDMETHODIMP InPlace::TranslateAccelerator(LPMSG message) {
  if (!message) return E_POINTER;
  return Guard([&] {
    if (!Placed() || !object_.Container().TakesInput()) return S_FALSE;
    const std::shared_ptr<LiveControl> live = object_.Live();
    if (live->Form().Keyboard().Translate(*message)) return S_OK;
    return object_.Container().OfferKey(message) ? S_OK : S_FALSE;
  });
}

}  // namespace rdv
