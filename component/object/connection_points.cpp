#include "component/object/connection_points.h"

#include <algorithm>

#include "component/com/enumerator.h"
#include "component/com/identifiers.h"

namespace rdv {
namespace {

void GiveConnection(const CONNECTDATA& from, CONNECTDATA& to) {
  to = from;
  to.pUnk->AddRef();
}

void GivePoint(IConnectionPoint* const& from, IConnectionPoint*& to) {
  to = from;
  to->AddRef();
}

using ConnectionEnumerator = Enumerator<IEnumConnections, CONNECTDATA, GiveConnection>;
using PointEnumerator = Enumerator<IEnumConnectionPoints, IConnectionPoint*, GivePoint>;

}  // namespace

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  const bool known = iid == IID_IUnknown || iid == IID_IConnectionPoint;
  *object = known ? static_cast<IConnectionPoint*>(this) : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) {
  if (!iid) return E_POINTER;
  *iid = outgoing_;
  return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
  if (!container) return E_POINTER;
  return outer_.QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(container));
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
  if (!sink || !cookie) return E_POINTER;
  *cookie = 0;
  return AtBoundary([&] {
    // Scripts offer a plain dispatch object for the events.
    auto connected = ComPointer<IUnknown>::From(sink, outgoing_);
    if (!connected && outgoing_ == kLineConfigEventsId) {
      connected = ComPointer<IUnknown>::From(sink, IID_IDispatch);
    }
    if (!connected) return CONNECT_E_CANNOTCONNECT;
    *cookie = ++last_cookie_;
    connections_.push_back({*cookie, std::move(connected)});
    return S_OK;
  });
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
  const auto found = std::find_if(connections_.begin(), connections_.end(),
                                  [&](const Connection& each) { return each.cookie == cookie; });
  if (found == connections_.end()) return CONNECT_E_NOCONNECTION;
  // Released only when the list is in order again: the sink may be the last to hold the control.
  const Connection removed = std::move(*found);
  connections_.erase(found);
  return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** enumerator) {
  // Before the items have references that nobody would release.
  if (!enumerator) return E_POINTER;
  return AtBoundary([&] {
    std::vector<CONNECTDATA> items;
    for (const Connection& each : connections_) {
      items.push_back({each.sink.Get(), each.cookie});
      each.sink->AddRef();
    }
    return ConnectionEnumerator::Create(IID_IEnumConnections, std::move(items), &outer_,
                                        enumerator);
  });
}

std::vector<ComPointer<IUnknown>> ConnectionPoint::Sinks() const {
  std::vector<ComPointer<IUnknown>> sinks;
  for (const Connection& each : connections_) sinks.push_back(each.sink);
  return sinks;
}

ConnectionPoints::ConnectionPoints(LineConfigObject& object, IUnknown& outer)
    : Part(object, outer),
      events_(outer, kLineConfigEventsId),
      property_changes_(outer, IID_IPropertyNotifySink) {}

STDMETHODIMP ConnectionPoints::EnumConnectionPoints(IEnumConnectionPoints** enumerator) {
  return AtBoundary([&] {
    std::vector<IConnectionPoint*> items = {&events_, &property_changes_};
    for (IConnectionPoint* each : items) each->AddRef();
    return PointEnumerator::Create(IID_IEnumConnectionPoints, std::move(items), &outer_,
                                   enumerator);
  });
}

STDMETHODIMP ConnectionPoints::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
  if (!point) return E_POINTER;
  *point = nullptr;
  for (const auto& [outgoing, found] : {std::pair{kLineConfigEventsId, &events_},
                                        std::pair{IID_IPropertyNotifySink, &property_changes_}}) {
    if (outgoing != iid) continue;
    found->AddRef();
    *point = found;
    return S_OK;
  }
  return CONNECT_E_NOCONNECTION;
}

void ConnectionPoints::RaiseRemoveMe() {
  if (frozen_ > 0) {
    ++waiting_;
    return;
  }
  const KeepObject keep(outer_);
  for (const auto& sink : events_.Sinks()) {
    // What Advise was given an interface of: the events', which is one of dispatch, or dispatch.
    // Asked for dispatch once more, a sink may answer with that of another object.
    auto* dispatch = static_cast<IDispatch*>(sink.Get());
    DISPPARAMS none = {};
    dispatch->Invoke(kRemoveMeEvent, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                     nullptr, nullptr);
  }
}

void ConnectionPoints::Freeze(bool freeze) {
  if (freeze) {
    ++frozen_;
    return;
  }
  if (frozen_ == 0 || --frozen_ > 0) return;
  for (int events = std::exchange(waiting_, 0); events > 0; --events) RaiseRemoveMe();
}

}  // namespace rdv
