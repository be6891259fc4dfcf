#include "component/object/line_config_object.h"

namespace rdv {

HRESULT LineConfigObject::Create(IUnknown* outer, REFIID iid, void** object) {
  auto* created = new LineConfigObject(outer);
  const HRESULT result = created->QueryInterface(iid, object);
  created->Release();
  return result;
}

LineConfigObject::LineConfigObject(IUnknown* outer)
    : outer_(outer ? *outer : static_cast<IUnknown&>(*this)),
      automation_(*this, outer_),
      ole_(*this, outer_),
      in_place_(*this, outer_),
      services_(*this, outer_),
      view_(*this, outer_),
      data_(*this, outer_),
      persistence_(*this, outer_),
      connections_(*this, outer_) {}

LineConfigObject::~LineConfigObject() {
  if (live_) Disconnect(*live_);
}

std::shared_ptr<LiveControl> LineConfigObject::Live() {
  if (live_ && !live_->WindowsExist()) {
    in_place_.LeaveDestroyedWindows();
  }
  if (live_ && !live_->WindowsExist()) {
    const std::shared_ptr<LiveControl> live = live_;
    live->MakeWindows();
    live->Form().SetAppearance(container_.Appearance());
    return live;
  }
  if (!live_) {
    const std::shared_ptr<LiveControl> live = LiveControl::Create();
    live->Form().SetAppearance(container_.Appearance());
    // The container was asked for its fonts and colours, and may have come back here.
    if (live_) return live_;
    live_ = live;
    Connect(*live_);
  }
  return live_;
}

void LineConfigObject::Connect(LiveControl& live) {
  live.OnRemoveMe([this] { connections_.RaiseRemoveMe(); });
  live.Form().on_focus = [this](bool inside) { in_place_.OnFocus(inside); };
  live.Form().on_editing_change = [this] { container_.TellControlInfoChanged(); };
  live.Form().on_windows_gone = [this] { in_place_.LeaveDestroyedWindows(); };
  live.Form().Screen().hold_host = [this] { return in_place_.DisableHost(); };
}

void LineConfigObject::Disconnect(LiveControl& live) {
  live.OnRemoveMe(nullptr);
  live.Form().on_focus = nullptr;
  live.Form().on_editing_change = nullptr;
  live.Form().on_windows_gone = nullptr;
  live.Form().Screen().hold_host = nullptr;
}

void LineConfigObject::Park() {
  if (!WindowsExist()) return;
  const std::shared_ptr<LiveControl> live = live_;
  live->Park();
}

void LineConfigObject::DestroyWindows() {
  if (!WindowsExist()) return;
  const std::shared_ptr<LiveControl> live = live_;
  live->DestroyWindows();
}

void LineConfigObject::AmbientsChanged() {
  if (!WindowsExist()) return;
  const std::shared_ptr<LiveControl> live = live_;
  live->Form().SetAppearance(container_.Appearance());
  live->SetReachable(container_.TakesInput());
}

STDMETHODIMP LineConfigObject::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  IUnknown* found = Find(iid);
  *object = found;
  if (!found) return E_NOINTERFACE;
  found->AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) LineConfigObject::AddRef() {
  return ++references_;
}

STDMETHODIMP_(ULONG) LineConfigObject::Release() {
  const ULONG left = --references_;
  if (left > 0) return left;
  // Leaving the container's window calls into the container, which may touch the object: it is
  // held meanwhile, and deleted but once.
  references_ = 1;
  in_place_.Deactivate();
  container_.SetSite(nullptr);
  delete this;
  return 0;
}

IUnknown* LineConfigObject::Find(REFIID iid) {
  const struct {
    const IID& iid;
    IUnknown* found;
  } interfaces[] = {
      {IID_IUnknown, this},
      {IID_IDispatch, static_cast<LineConfigInterface*>(&automation_)},
      {kLineConfigInterfaceId, static_cast<LineConfigInterface*>(&automation_)},
      {IID_IProvideClassInfo, static_cast<IProvideClassInfo2*>(&automation_)},
      {IID_IProvideClassInfo2, static_cast<IProvideClassInfo2*>(&automation_)},
      {IID_ISupportErrorInfo, static_cast<ISupportErrorInfo*>(&automation_)},
      {IID_IOleObject, &ole_},
      {IID_IOleWindow, static_cast<IOleInPlaceObject*>(&in_place_)},
      {IID_IOleInPlaceObject, static_cast<IOleInPlaceObject*>(&in_place_)},
      {IID_IOleInPlaceActiveObject, static_cast<IOleInPlaceActiveObject*>(&in_place_)},
      {IID_IOleControl, static_cast<IOleControl*>(&services_)},
      {IID_IQuickActivate, static_cast<IQuickActivate*>(&services_)},
      {IID_ISpecifyPropertyPages, static_cast<ISpecifyPropertyPages*>(&services_)},
      {IID_IViewObject, &view_},
      {IID_IViewObject2, &view_},
      {IID_IViewObjectEx, &view_},
      {IID_IDataObject, &data_},
      {IID_IPersist, static_cast<IPersistStreamInit*>(&persistence_)},
      {IID_IPersistStreamInit, static_cast<IPersistStreamInit*>(&persistence_)},
      {IID_IPersistStorage, static_cast<IPersistStorage*>(&persistence_)},
      {IID_IPersistPropertyBag, static_cast<IPersistPropertyBag*>(&persistence_)},
      {IID_IObjectSafety, static_cast<IObjectSafety*>(&persistence_)},
      {IID_IConnectionPointContainer, &connections_},
  };
  for (const auto& each : interfaces) {
    if (each.iid == iid) return each.found;
  }
  return nullptr;
}

}  // namespace rdv
