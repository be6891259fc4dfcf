// The control's picture as data: documents and worksheets that embed an object keep one.
#pragma once

#include "component/com/com_pointer.h"
#include "component/object/part.h"

namespace rdv {

// As metafile, enhanced metafile and bitmap. Takes no data.
class DataTransfer final : public Part<IDataObject> {
 public:
  using Part::Part;

  STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override;
  STDMETHODIMP GetDataHere(FORMATETC* format, STGMEDIUM* medium) override;
  STDMETHODIMP QueryGetData(FORMATETC* format) override;
  STDMETHODIMP GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* canonical) override;
  STDMETHODIMP SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override;
  STDMETHODIMP EnumFormatEtc(DWORD direction, IEnumFORMATETC** enumerator) override;
  STDMETHODIMP DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink,
                       DWORD* connection) override;
  STDMETHODIMP DUnadvise(DWORD connection) override;
  STDMETHODIMP EnumDAdvise(IEnumSTATDATA** enumerator) override;

  // The picture is another one now.
  void Changed();

 private:
  HRESULT DrawInto(HDC context, SIZE pixels);
  HRESULT GiveMetafile(STGMEDIUM& medium);
  HRESULT GiveEnhancedMetafile(STGMEDIUM& medium);
  HRESULT GiveBitmap(STGMEDIUM& medium);

  ComPointer<IDataAdviseHolder> advise_holder_;
};

}  // namespace rdv
