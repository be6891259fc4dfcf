#include "tests/component/support/test_container.h"

#include "component/com/identifiers.h"

namespace rdv::test {

TestContainer::TestContainer(const Profile& profile)
    : profile_(profile),
      window_(CreateWindowExW(0, L"STATIC", L"Test container",
                              WS_OVERLAPPEDWINDOW | (profile.visible ? WS_VISIBLE : 0u), 0, 0, 1000,
                              500, nullptr, nullptr, nullptr, nullptr)) {}

TestContainer::~TestContainer() {
  DestroyWindow(window_);
}

STDMETHODIMP TestContainer::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (iid == IID_IUnknown || iid == IID_IOleClientSite) {
    *object = static_cast<IOleClientSite*>(this);
  } else if (iid == IID_IOleInPlaceSite || iid == IID_IOleWindow) {
    *object = static_cast<IOleInPlaceSite*>(this);
  } else if (iid == IID_IOleControlSite && profile_.control_site) {
    *object = static_cast<IOleControlSite*>(this);
  } else if (iid == IID_IDispatch || iid == kLineConfigEventsId) {
    *object = static_cast<IDispatch*>(this);
  }
  if (!*object) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP TestContainer::GetWindow(HWND* window) {
  *window = place_in ? place_in : window_;
  return S_OK;
}

STDMETHODIMP TestContainer::CanInPlaceActivate() {
  Note("CanInPlaceActivate");
  return profile_.allows_activation ? S_OK : S_FALSE;
}

STDMETHODIMP TestContainer::GetWindowContext(IOleInPlaceFrame** frame,
                                             IOleInPlaceUIWindow** document, LPRECT rectangle,
                                             LPRECT clip, LPOLEINPLACEFRAMEINFO info) {
  Note("GetWindowContext");
  *frame = profile_.frame ? this : nullptr;
  if (*frame) AddRef();
  *document = nullptr;
  *rectangle = place;
  *clip = place;
  info->fMDIApp = FALSE;
  info->hwndFrame = window_;
  info->haccel = nullptr;
  info->cAccelEntries = 0;
  return S_OK;
}

STDMETHODIMP TestContainer::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) {
  active_object_ = ComPointer<IOleInPlaceActiveObject>(object);
  return Note(object ? "SetActiveObject(object)" : "SetActiveObject(null)");
}

STDMETHODIMP TestContainer::Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS*,
                                   VARIANT* result, EXCEPINFO*, UINT*) {
  if ((flags & DISPATCH_METHOD) != 0 && member == kRemoveMeEvent) {
    ++events_;
    if (on_event) on_event();
    return S_OK;
  }
  const bool known = member == DISPID_AMBIENT_USERMODE || member == DISPID_AMBIENT_UIDEAD;
  if (!profile_.ambients || !result || !known) return DISP_E_MEMBERNOTFOUND;
  const bool answer = member == DISPID_AMBIENT_USERMODE ? profile_.user_mode : ui_dead;
  result->vt = VT_BOOL;
  result->boolVal = answer ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

}  // namespace rdv::test
