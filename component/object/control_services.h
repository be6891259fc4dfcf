// What containers of controls, beyond those of documents, talk about: mnemonics, ambient
// properties, the freezing of events, and activation in one call.
#pragma once

#include <memory>
#include <type_traits>

#include "component/object/part.h"

namespace rdv {

class ControlServices final : public Part<IOleControl, IQuickActivate, ISpecifyPropertyPages> {
 public:
  using Part::Part;

  STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
  STDMETHODIMP OnMnemonic(LPMSG message) override;
  STDMETHODIMP OnAmbientPropertyChange(DISPID property) override;
  STDMETHODIMP FreezeEvents(BOOL freeze) override;

  STDMETHODIMP QuickActivate(QACONTAINER* container, QACONTROL* control) override;
  // There are no properties that a page could show.
  STDMETHODIMP GetPages(CAUUID* pages) override;

  STDMETHODIMP SetContentExtent(LPSIZEL size) override;
  STDMETHODIMP GetContentExtent(LPSIZEL size) override;

 private:
  struct TableDeleter {
    void operator()(HACCEL table) const { DestroyAcceleratorTable(table); }
  };

  // Stays the control's when a container has it; made when first asked for.
  std::unique_ptr<std::remove_pointer_t<HACCEL>, TableDeleter> mnemonics_;
  USHORT mnemonic_count_ = 0;
};

}  // namespace rdv
