// The control's events and the places where hosts connect to them.
#pragma once

#include <vector>

#include "component/com/com_pointer.h"
#include "component/object/part.h"

namespace rdv {

// One outgoing interface. An object of its own for QueryInterface, but it lives and counts with
// the control.
class ConnectionPoint final : public IConnectionPoint {
 public:
  ConnectionPoint(IUnknown& outer, REFIID outgoing) : outer_(outer), outgoing_(outgoing) {}
  ConnectionPoint(const ConnectionPoint&) = delete;
  ConnectionPoint& operator=(const ConnectionPoint&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return outer_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return outer_.Release(); }

  STDMETHODIMP GetConnectionInterface(IID* iid) override;
  STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
  STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumConnections(IEnumConnections** enumerator) override;

  // The sinks of now: those that come or go while an event is under way do not matter to it.
  std::vector<ComPointer<IUnknown>> Sinks() const;

 private:
  struct Connection {
    DWORD cookie;
    ComPointer<IUnknown> sink;
  };

  IUnknown& outer_;
  const IID outgoing_;
  std::vector<Connection> connections_;
  DWORD last_cookie_ = 0;
};

class ConnectionPoints final : public Part<IConnectionPointContainer> {
 public:
  ConnectionPoints(LineConfigObject& object, IUnknown& outer);

  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** enumerator) override;
  STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

  ConnectionPoint& Events() { return events_; }
  ConnectionPoint& PropertyChanges() { return property_changes_; }

  // Raises RemoveME in every sink. While the container has frozen the events they wait.
  void RaiseRemoveMe();
  void Freeze(bool freeze);

 private:
  ConnectionPoint events_;
  ConnectionPoint property_changes_;
  int frozen_ = 0;
  int waiting_ = 0;
};

}  // namespace rdv
