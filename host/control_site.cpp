#include "host/control_site.h"

#include <iterator>

namespace rdvhost {
namespace {

constexpr DISPID kRemoveMe = 1;  // of the control's events

HRESULT SetBoolean(VARIANT* result, bool value) {
  result->vt = VT_BOOL;
  result->boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

}  // namespace

STDMETHODIMP ControlSite::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  const struct {
    const IID& iid;
    IUnknown* found;
  } interfaces[] = {
      {IID_IUnknown, static_cast<IOleClientSite*>(this)},
      {IID_IOleClientSite, static_cast<IOleClientSite*>(this)},
      {IID_IOleWindow, static_cast<IOleInPlaceSite*>(this)},
      {IID_IOleInPlaceSite, static_cast<IOleInPlaceSite*>(this)},
      {IID_IOleInPlaceUIWindow, static_cast<IOleInPlaceFrame*>(this)},
      {IID_IOleInPlaceFrame, static_cast<IOleInPlaceFrame*>(this)},
      {IID_IOleControlSite, static_cast<IOleControlSite*>(this)},
      {IID_IDispatch, static_cast<IDispatch*>(this)},
  };
  *object = nullptr;
  for (const auto& each : interfaces) {
    if (each.iid != iid) continue;
    *object = each.found;
    AddRef();
    return S_OK;
  }
  return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) ControlSite::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

STDMETHODIMP ControlSite::GetMoniker(DWORD /*assign*/, DWORD /*which*/, IMoniker** moniker) {
  if (moniker) *moniker = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP ControlSite::GetContainer(IOleContainer** container) {
  if (container) *container = nullptr;
  return E_NOINTERFACE;
}

STDMETHODIMP ControlSite::GetWindow(HWND* window) {
  if (!window) return E_POINTER;
  *window = window_;
  return S_OK;
}

STDMETHODIMP ControlSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                           LPRECT place, LPRECT clip, LPOLEINPLACEFRAMEINFO info) {
  if (!frame || !document || !place || !clip || !info) return E_POINTER;
  *frame = this;
  AddRef();
  *document = nullptr;
  *place = place_();
  *clip = *place;
  info->fMDIApp = FALSE;
  info->hwndFrame = GetAncestor(window_, GA_ROOT);
  info->haccel = nullptr;
  info->cAccelEntries = 0;
  return S_OK;
}

// Called on the frame when the control gets the keyboard (and with null when it loses it): from
// then on the message loop offers it every key first.
STDMETHODIMP ControlSite::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR /*name*/) {
  active_object_.Set(object);
  return S_OK;
}

STDMETHODIMP ControlSite::GetExtendedControl(IDispatch** control) {
  if (control) *control = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP ControlSite::TransformCoords(POINTL* /*himetric*/, POINTF* /*container*/,
                                          DWORD /*flags*/) {
  return E_NOTIMPL;
}

// A key that the control does not want: Tab leaves it for the next window of the form.
STDMETHODIMP ControlSite::TranslateAccelerator(MSG* message, DWORD /*modifiers*/) {
  if (!message || message->message != WM_KEYDOWN || message->wParam != VK_TAB) return S_FALSE;
  const HWND form = GetAncestor(window_, GA_ROOT);
  const bool backward = GetKeyState(VK_SHIFT) < 0;
  SetFocus(GetNextDlgTabItem(form, window_, backward));
  return S_OK;
}

STDMETHODIMP ControlSite::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP ControlSite::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** information) {
  if (information) *information = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP ControlSite::GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/,
                                        LCID /*locale*/, DISPID* /*ids*/) {
  return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP ControlSite::Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD flags,
                                 DISPPARAMS* /*parameters*/, VARIANT* result,
                                 EXCEPINFO* /*exception*/, UINT* /*wrong_argument*/) {
  if ((flags & DISPATCH_METHOD) != 0 && member == kRemoveMe) {
    if (on_remove_me) on_remove_me();
    return S_OK;
  }
  if ((flags & DISPATCH_PROPERTYGET) == 0 || !result) return DISP_E_MEMBERNOTFOUND;
  switch (member) {
    case DISPID_AMBIENT_USERMODE:
      return SetBoolean(result, true);
    case DISPID_AMBIENT_UIDEAD:
      return SetBoolean(result, false);
    case DISPID_AMBIENT_LOCALEID:
      result->vt = VT_I4;
      result->lVal = static_cast<LONG>(GetUserDefaultLCID());
      return S_OK;
    default:
      // Font and colours: the control then takes those of the system.
      return DISP_E_MEMBERNOTFOUND;
  }
}

}  // namespace rdvhost
