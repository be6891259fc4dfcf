// Loading and saving the control with its form.
#pragma once

#include "component/object/part.h"

namespace rdv {

// The control has no properties that a form keeps: its state is empty in every format, is never
// dirty, and any state that once was saved loads. Both protocols may be used, in any order with
// the client site, and more than once.
class Persistence final : public Part<IPersistStreamInit, IPersistPropertyBag> {
 public:
  using Part::Part;

  STDMETHODIMP GetClassID(CLSID* class_id) override;
  STDMETHODIMP InitNew() override { return S_OK; }

  STDMETHODIMP IsDirty() override { return S_FALSE; }
  STDMETHODIMP Load(IStream* stream) override { return stream ? S_OK : E_POINTER; }
  STDMETHODIMP Save(IStream* stream, BOOL /*clear_dirty*/) override {
    return stream ? S_OK : E_POINTER;
  }
  STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;

  STDMETHODIMP Load(IPropertyBag* bag, IErrorLog* /*errors*/) override {
    return bag ? S_OK : E_POINTER;
  }
  STDMETHODIMP Save(IPropertyBag* bag, BOOL /*clear_dirty*/, BOOL /*all*/) override {
    return bag ? S_OK : E_POINTER;
  }
};

}  // namespace rdv
