// Loading and saving the control with its form.
#pragma once

#include "component/object/part.h"

namespace rdv {

// The control has no properties that a form keeps: its state is empty in every format, is never
// dirty, and any state that once was saved loads. All protocols may be used, in any order with
// the client site, and more than once.
//
// Of the "safe" promises that browsers and office programs ask about, one is true: data from an
// unknown source does no harm, because none is read. Scripts may not have the control: its methods
// write to the site's database.
class Persistence final
    : public Part<IPersistStreamInit, IPersistPropertyBag, IPersistStorage, IObjectSafety> {
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

  // Documents give the control a storage of its own; nothing is kept in it.
  STDMETHODIMP InitNew(IStorage* storage) override { return storage ? S_OK : E_POINTER; }
  STDMETHODIMP Load(IStorage* storage) override { return storage ? S_OK : E_POINTER; }
  STDMETHODIMP Save(IStorage* storage, BOOL /*same_as_loaded*/) override {
    return storage ? S_OK : E_POINTER;
  }
  STDMETHODIMP SaveCompleted(IStorage* /*storage*/) override { return S_OK; }
  STDMETHODIMP HandsOffStorage() override { return S_OK; }

  STDMETHODIMP GetInterfaceSafetyOptions(REFIID iid, DWORD* supported, DWORD* enabled) override;
  STDMETHODIMP SetInterfaceSafetyOptions(REFIID iid, DWORD mask, DWORD options) override;

  STDMETHODIMP Load(IPropertyBag* bag, IErrorLog* /*errors*/) override {
    return bag ? S_OK : E_POINTER;
  }
  STDMETHODIMP Save(IPropertyBag* bag, BOOL /*clear_dirty*/, BOOL /*all*/) override {
    return bag ? S_OK : E_POINTER;
  }
};

}  // namespace rdv
