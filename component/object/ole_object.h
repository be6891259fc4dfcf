// The control as an object in a compound document or a form: its site, verbs, size and status.
#pragma once

#include "component/com/com_pointer.h"
#include "component/object/part.h"

namespace rdv {

class OleObject final : public Part<IOleObject> {
 public:
  OleObject(LineConfigObject& object, IUnknown& outer);

  STDMETHODIMP SetClientSite(IOleClientSite* site) override;
  STDMETHODIMP GetClientSite(IOleClientSite** site) override;
  STDMETHODIMP SetHostNames(LPCOLESTR application, LPCOLESTR document) override;
  STDMETHODIMP Close(DWORD save_option) override;
  STDMETHODIMP SetMoniker(DWORD which, IMoniker* moniker) override;
  STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
  STDMETHODIMP InitFromData(IDataObject* data, BOOL creation, DWORD reserved) override;
  STDMETHODIMP GetClipboardData(DWORD reserved, IDataObject** data) override;
  STDMETHODIMP DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG index, HWND parent,
                      LPCRECT place) override;
  STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
  STDMETHODIMP Update() override { return S_OK; }
  STDMETHODIMP IsUpToDate() override { return S_OK; }
  STDMETHODIMP GetUserClassID(CLSID* class_id) override;
  STDMETHODIMP GetUserType(DWORD form, LPOLESTR* name) override;
  STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
  STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
  STDMETHODIMP Advise(IAdviseSink* sink, DWORD* connection) override;
  STDMETHODIMP Unadvise(DWORD connection) override;
  STDMETHODIMP EnumAdvise(IEnumSTATDATA** enumerator) override;
  STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
  STDMETHODIMP SetColorScheme(LOGPALETTE* palette) override;

  // In hundredths of a millimetre.
  SIZEL Extent() const { return extent_; }

 private:
  SIZEL extent_;
  ComPointer<IOleAdviseHolder> advise_holder_;
};

}  // namespace rdv
