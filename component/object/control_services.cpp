#include "component/object/control_services.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "component/com/identifiers.h"
#include "component/object/line_config_object.h"

namespace rdv {

STDMETHODIMP ControlServices::GetControlInfo(CONTROLINFO* info) {
  if (!info) return E_POINTER;
  return Guard([&] {
    const std::shared_ptr<LiveControl> live = object_.Live();
    if (!mnemonics_) {
      std::vector<ACCEL> keys;
      for (const auto& stop : live->Form().Keyboard().Stops()) {
        if (stop.mnemonic != 0) keys.push_back({FALT | FVIRTKEY, stop.mnemonic, 0});
      }
      mnemonics_.reset(CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size())));
      mnemonic_count_ = static_cast<USHORT>(keys.size());
    }
    info->hAccel = mnemonics_.get();
    info->cAccel = mnemonic_count_;
    // Outside an editor the two keys are for the container's default and cancel buttons.
    info->dwFlags =
        live->Form().Keyboard().Editing() ? CTRLINFO_EATS_RETURN | CTRLINFO_EATS_ESCAPE : 0;
    return info->hAccel ? S_OK : E_OUTOFMEMORY;
  });
}

STDMETHODIMP ControlServices::OnMnemonic(LPMSG message) {
  if (!message) return E_POINTER;
  return Guard([&] {
    if (!object_.Activation().Placed() || !object_.Container().TakesInput()) return S_OK;
    object_.Live()->Form().Keyboard().PressMnemonic(static_cast<wchar_t>(message->wParam));
    return S_OK;
  });
}

STDMETHODIMP ControlServices::OnAmbientPropertyChange(DISPID /*property*/) {
  return Guard([&] {
    object_.AmbientsChanged();
    object_.Drawing().Changed();
    return S_OK;
  });
}

STDMETHODIMP ControlServices::FreezeEvents(BOOL freeze) {
  return Guard([&] {
    object_.Connections().Freeze(freeze != FALSE);
    return S_OK;
  });
}

STDMETHODIMP ControlServices::QuickActivate(QACONTAINER* container, QACONTROL* control) {
  if (!container || !control) return E_POINTER;
  // Older frameworks pass what the two had at first.
  constexpr ULONG kLeastContainer = offsetof(QACONTAINER, pBindHost) + sizeof container->pBindHost;
  constexpr ULONG kLeastControl =
      offsetof(QACONTROL, dwPropNotifyCookie) + sizeof control->dwPropNotifyCookie;
  if (container->cbSize < kLeastContainer || control->cbSize < kLeastControl) return E_INVALIDARG;
  return Guard([&] {
    const ULONG size = control->cbSize;
    memset(control, 0, std::min<size_t>(size, sizeof *control));
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

STDMETHODIMP ControlServices::GetPages(CAUUID* pages) {
  if (!pages) return E_POINTER;
  *pages = {};
  return S_OK;
}

STDMETHODIMP ControlServices::SetContentExtent(LPSIZEL size) {
  return object_.Ole().SetExtent(DVASPECT_CONTENT, size);
}

STDMETHODIMP ControlServices::GetContentExtent(LPSIZEL size) {
  return object_.Ole().GetExtent(DVASPECT_CONTENT, size);
}

}  // namespace rdv
