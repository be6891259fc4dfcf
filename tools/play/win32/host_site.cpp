#include "tools/play/win32/host_site.h"

namespace rdv::play {
namespace {

constexpr DISPID kRemoveMe = 1;

}  // namespace

STDMETHODIMP HostSite::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (iid == IID_IUnknown || iid == IID_IOleClientSite) {
    *object = static_cast<IOleClientSite*>(this);
  } else if (iid == IID_IOleInPlaceSite || iid == IID_IOleWindow) {
    *object = static_cast<IOleInPlaceSite*>(this);
  } else if (iid == IID_IOleInPlaceFrame || iid == IID_IOleInPlaceUIWindow) {
    *object = static_cast<IOleInPlaceFrame*>(this);
  }
  return *object ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP HostSite::GetContainer(IOleContainer** container) {
  if (!container) return E_POINTER;
  *container = nullptr;
  return E_NOINTERFACE;
}

STDMETHODIMP HostSite::GetWindow(HWND* window) {
  if (!window) return E_POINTER;
  *window = window_;
  return S_OK;
}

STDMETHODIMP HostSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                        LPRECT place, LPRECT clip, LPOLEINPLACEFRAMEINFO info) {
  if (!frame || !document || !place || !clip || !info) return E_POINTER;
  *frame = this;
  *document = nullptr;
  GetClientRect(window_, place);
  *clip = *place;
  *info = {.cb = sizeof *info,
           .fMDIApp = FALSE,
           .hwndFrame = window_,
           .haccel = nullptr,
           .cAccelEntries = 0};
  return S_OK;
}

STDMETHODIMP EventSink::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == events_;
  *object = known ? this : nullptr;
  return known ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP EventSink::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP EventSink::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                               UINT*) {
  if (member != kRemoveMe) return DISP_E_MEMBERNOTFOUND;
  on_remove_me_();
  return S_OK;
}

}  // namespace rdv::play
