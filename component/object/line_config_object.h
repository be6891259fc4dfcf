// The control as containers and scripts know it: one COM object made of parts, each of which
// carries the interfaces of one subject.
#pragma once

#include <memory>

#include "component/com/module.h"
#include "component/object/automation.h"
#include "component/object/connection_points.h"
#include "component/object/container.h"
#include "component/object/control_services.h"
#include "component/object/data_transfer.h"
#include "component/object/in_place.h"
#include "component/object/live_control.h"
#include "component/object/ole_object.h"
#include "component/object/persistence.h"
#include "component/object/view.h"

namespace rdv {

// May be aggregated. Lives in a single-threaded apartment.
class LineConfigObject final : private IUnknown {
 public:
  // `outer` is the aggregating owner or null.
  static HRESULT Create(IUnknown* outer, REFIID iid, void** object);

  class Container& Container() {
    return container_;
  }
  OleObject& Ole() { return ole_; }
  InPlace& Activation() { return in_place_; }
  View& Drawing() { return view_; }
  DataTransfer& Data() { return data_; }
  ConnectionPoints& Connections() { return connections_; }

  // Made when first needed: a control in a designer's palette or a reader of its type information
  // needs no windows. The windows are made anew where a container has destroyed them. Held by the
  // caller for as long as it works with the windows.
  std::shared_ptr<LiveControl> Live();
  // There are windows, in a container's or not.
  bool WindowsExist() const { return live_ && live_->WindowsExist(); }

  // Takes the windows, where there are any, out of the container's.
  void Park();
  // For containers that are done with the control: some leave procedures of their own in its
  // windows. What the user has done to the lines stays.
  void DestroyWindows();

  // The container has other fonts, colours or another mode than before.
  void AmbientsChanged();

 private:
  explicit LineConfigObject(IUnknown* outer);
  void Connect(LiveControl& live);
  static void Disconnect(LiveControl& live);
  ~LineConfigObject();

  // The object's own identity, as only its creator uses it when it is aggregated.
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

  IUnknown* Find(REFIID iid);

  ModuleLock lock_;
  ULONG references_ = 1;
  IUnknown& outer_;
  class Container container_;
  Automation automation_;
  OleObject ole_;
  InPlace in_place_;
  ControlServices services_;
  View view_;
  DataTransfer data_;
  Persistence persistence_;
  ConnectionPoints connections_;
  std::shared_ptr<LiveControl> live_;
};

}  // namespace rdv
