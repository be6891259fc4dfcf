#include "component/in_place.h"

#include "component/boundary.h"
#include "component/line_config_object.h"

namespace rdv {

HRESULT InPlace::Activate(Activity wanted) {
  return AtBoundary([&] {
    const KeepObject keep(outer_);
    if (activity_ == Activity::None) {
      const HRESULT result = BecomeVisible();
      if (FAILED(result)) return result;
    }
    if (wanted == Activity::UserInterface) return BecomeUserInterface(true);
    return S_OK;
  });
}

HRESULT InPlace::BecomeVisible() {
  auto site = object_.Container().SiteAs<IOleInPlaceSite>(IID_IOleInPlaceSite);
  if (!site) return E_FAIL;
  if (site->CanInPlaceActivate() != S_OK) return OLE_E_NOT_INPLACEACTIVE;
  LiveControl& live = object_.Live();
  HRESULT result = site->OnInPlaceActivate();
  if (FAILED(result)) return result;

  HWND parent = nullptr;
  RECT place = {};
  RECT clip = {};
  OLEINPLACEFRAMEINFO frame_info = {};
  frame_info.cb = sizeof frame_info;
  ComPointer<IOleInPlaceFrame> frame;
  ComPointer<IOleInPlaceUIWindow> document;
  result = site->GetWindow(&parent);
  if (SUCCEEDED(result)) {
    result =
        site->GetWindowContext(frame.Receive(), document.Receive(), &place, &clip, &frame_info);
  }
  if (FAILED(result) || !IsWindow(parent)) {
    site->OnInPlaceDeactivate();
    return FAILED(result) ? result : E_FAIL;
  }
  site_ = std::move(site);
  frame_ = std::move(frame);
  document_ = std::move(document);
  activity_ = Activity::Visible;
  live.PlaceIn(parent, place, clip, object_.Container().UserMode());
  if (IOleClientSite* client = object_.Container().Site()) client->ShowObject();
  return S_OK;
}

HRESULT InPlace::BecomeUserInterface(bool take_focus) {
  if (activity_ == Activity::Visible && object_.Container().UserMode()) {
    const HRESULT result = site_->OnUIActivate();
    if (FAILED(result)) return result;
    // The container may have taken the control away in that call.
    if (activity_ != Activity::Visible) return E_FAIL;
    activity_ = Activity::UserInterface;
    if (frame_) {
      frame_->SetActiveObject(this, nullptr);
      frame_->SetBorderSpace(nullptr);
    }
    if (document_) {
      document_->SetActiveObject(this, nullptr);
      document_->SetBorderSpace(nullptr);
    }
  }
  if (!take_focus || activity_ != Activity::UserInterface) return S_OK;
  LiveControl& live = object_.Live();
  if (!IsChild(live.Form().Handle(), GetFocus())) live.Form().Keyboard().Enter(false);
  return S_OK;
}

void InPlace::Deactivate() {
  const KeepObject keep(outer_);
  UIDeactivate();
  if (activity_ == Activity::None) return;
  activity_ = Activity::None;
  object_.Park();
  const ComPointer<IOleInPlaceSite> site = std::move(site_);
  frame_.Reset();
  document_.Reset();
  site->OnInPlaceDeactivate();
}

void InPlace::OnFocusChange(bool inside) {
  if (activity_ == Activity::None) return;
  const KeepObject keep(outer_);
  if (inside) BecomeUserInterface(false);
  object_.Container().TellFocus(inside);
}

void InPlace::OnModal(bool modal) {
  if (const ComPointer<IOleInPlaceFrame> frame = frame_) frame->EnableModeless(!modal);
}

STDMETHODIMP InPlace::GetWindow(HWND* window) {
  if (!window) return E_POINTER;
  *window = activity_ == Activity::None ? nullptr : object_.Live().Form().Handle();
  return *window ? S_OK : E_FAIL;
}

STDMETHODIMP InPlace::ContextSensitiveHelp(BOOL /*enter*/) {
  return E_NOTIMPL;
}

STDMETHODIMP InPlace::InPlaceDeactivate() {
  Deactivate();
  return S_OK;
}

STDMETHODIMP InPlace::UIDeactivate() {
  if (activity_ != Activity::UserInterface) return S_OK;
  const KeepObject keep(outer_);
  activity_ = Activity::Visible;
  if (frame_) frame_->SetActiveObject(nullptr, nullptr);
  if (document_) document_->SetActiveObject(nullptr, nullptr);
  if (site_) site_->OnUIDeactivate(FALSE);
  return S_OK;
}

STDMETHODIMP InPlace::SetObjectRects(LPCRECT place, LPCRECT clip) {
  if (!place) return E_INVALIDARG;
  if (activity_ == Activity::None) return S_OK;
  return AtBoundary([&] {
    object_.Live().Move(*place, clip ? *clip : *place);
    return S_OK;
  });
}

STDMETHODIMP InPlace::TranslateAccelerator(LPMSG message) {
  if (!message) return E_POINTER;
  if (activity_ == Activity::None) return S_FALSE;
  const KeepObject keep(outer_);
  return AtBoundary([&] {
    if (object_.Live().Form().Keyboard().Translate(*message)) return S_OK;
    return object_.Container().OfferKey(message) ? S_OK : S_FALSE;
  });
}

}  // namespace rdv
