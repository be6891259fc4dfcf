#include "component/control_services.h"

#include <vector>

#include "component/boundary.h"
#include "component/identifiers.h"
#include "component/line_config_object.h"

namespace rdv {

STDMETHODIMP ControlServices::GetControlInfo(CONTROLINFO* info) {
  if (!info) return E_POINTER;
  return AtBoundary([&] {
    std::vector<ACCEL> keys;
    for (const auto& stop : object_.Live().Form().Keyboard().Stops()) {
      if (stop.mnemonic != 0) keys.push_back({FALT | FVIRTKEY, stop.mnemonic, 0});
    }
    info->hAccel = CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
    info->cAccel = static_cast<USHORT>(keys.size());
    info->dwFlags = 0;
    return info->hAccel ? S_OK : E_OUTOFMEMORY;
  });
}

STDMETHODIMP ControlServices::OnMnemonic(LPMSG message) {
  if (!message) return E_POINTER;
  const KeepObject keep(outer_);
  return AtBoundary([&] {
    if (object_.Activation().Current() == InPlace::Activity::None) return S_OK;
    object_.Live().Form().Keyboard().PressMnemonic(static_cast<wchar_t>(message->wParam));
    return S_OK;
  });
}

STDMETHODIMP ControlServices::OnAmbientPropertyChange(DISPID /*property*/) {
  object_.AmbientsChanged();
  return S_OK;
}

STDMETHODIMP ControlServices::FreezeEvents(BOOL freeze) {
  const KeepObject keep(outer_);
  object_.Connections().Freeze(freeze != FALSE);
  return S_OK;
}

STDMETHODIMP ControlServices::QuickActivate(QACONTAINER* container, QACONTROL* control) {
  if (!container || !control) return E_POINTER;
  if (container->cbSize < sizeof(QACONTAINER) || control->cbSize < sizeof(QACONTROL)) {
    return E_INVALIDARG;
  }
  return AtBoundary([&] {
    const ULONG size = control->cbSize;
    *control = {};
    control->cbSize = size;
    object_.Container().SetQuickAmbients(*container);
    object_.Ole().SetClientSite(container->pClientSite);
    if (container->pAdviseSink) {
      object_.Drawing().SetAdvise(DVASPECT_CONTENT, 0, container->pAdviseSink);
    }
    ConnectionPoints& points = object_.Connections();
    if (container->pUnkEventSink) {
      points.Events().Advise(container->pUnkEventSink, &control->dwEventCookie);
    }
    if (container->pPropertyNotifySink) {
      points.PropertyChanges().Advise(container->pPropertyNotifySink, &control->dwPropNotifyCookie);
    }
    control->dwMiscStatus = kMiscStatus;
    control->dwViewStatus = VIEWSTATUS_OPAQUE;
    return S_OK;
  });
}

STDMETHODIMP ControlServices::SetContentExtent(LPSIZEL size) {
  return object_.Ole().SetExtent(DVASPECT_CONTENT, size);
}

STDMETHODIMP ControlServices::GetContentExtent(LPSIZEL size) {
  return object_.Ole().GetExtent(DVASPECT_CONTENT, size);
}

}  // namespace rdv
