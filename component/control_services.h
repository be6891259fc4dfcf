// What containers of controls, beyond those of documents, talk about: mnemonics, ambient
// properties, the freezing of events, and activation in one call.
#pragma once

#include "component/part.h"

namespace rdv {

class ControlServices final : public Part<IOleControl, IQuickActivate> {
 public:
  using Part::Part;

  STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
  STDMETHODIMP OnMnemonic(LPMSG message) override;
  STDMETHODIMP OnAmbientPropertyChange(DISPID property) override;
  STDMETHODIMP FreezeEvents(BOOL freeze) override;

  STDMETHODIMP QuickActivate(QACONTAINER* container, QACONTROL* control) override;
  STDMETHODIMP SetContentExtent(LPSIZEL size) override;
  STDMETHODIMP GetContentExtent(LPSIZEL size) override;
};

}  // namespace rdv
