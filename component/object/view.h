// The control as a picture: in form designers, on paper, and wherever it is not active.
#pragma once

#include "component/com/com_pointer.h"
#include "component/object/part.h"

namespace rdv {

class View final : public Part<IViewObjectEx> {
 public:
  using Part::Part;

  STDMETHODIMP Draw(DWORD aspect, LONG index, void* aspect_data, DVTARGETDEVICE* target,
                    HDC target_context, HDC context, LPCRECTL bounds, LPCRECTL metafile_bounds,
                    BOOL(STDMETHODCALLTYPE* go_on)(ULONG_PTR), ULONG_PTR argument) override;
  STDMETHODIMP GetColorSet(DWORD aspect, LONG index, void* aspect_data, DVTARGETDEVICE* target,
                           HDC context, LOGPALETTE** colors) override;
  STDMETHODIMP Freeze(DWORD aspect, LONG index, void* aspect_data, DWORD* key) override;
  STDMETHODIMP Unfreeze(DWORD key) override;
  STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
  STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
  // The picture is another one now.
  void Changed();

  STDMETHODIMP GetRect(DWORD aspect, LPRECTL rectangle) override;
  STDMETHODIMP GetViewStatus(DWORD* status) override;
  STDMETHODIMP QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG close,
                             DWORD* result) override;
  STDMETHODIMP QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT area, LONG close,
                            DWORD* result) override;
  STDMETHODIMP GetNaturalExtent(DWORD aspect, LONG index, DVTARGETDEVICE* target, HDC context,
                                DVEXTENTINFO* information, LPSIZEL size) override;

  STDMETHODIMP GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE* target, LPSIZEL size) override;

 private:
  DWORD advise_aspects_ = 0;
  DWORD advise_flags_ = 0;
  ComPointer<IAdviseSink> advise_sink_;
};

}  // namespace rdv
