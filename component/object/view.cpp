#include "component/object/view.h"

#include "component/object/line_config_object.h"
#include "rules/grid_columns.h"
#include "widgets/win32/form_picture.h"
#include "widgets/win32/window_picture.h"

namespace rdv {

STDMETHODIMP View::Draw(DWORD aspect, LONG /*index*/, void* /*aspect_data*/,
                        DVTARGETDEVICE* /*target*/, HDC /*target_context*/, HDC context,
                        LPCRECTL bounds, LPCRECTL /*metafile_bounds*/,
                        BOOL(STDMETHODCALLTYPE* /*go_on*/)(ULONG_PTR), ULONG_PTR /*argument*/) {
  if (aspect != DVASPECT_CONTENT && aspect != DVASPECT_OPAQUE) return DV_E_DVASPECT;
  if (!context || !bounds) return E_POINTER;
  return Guard([&] {
    const RECT area = {bounds->left, bounds->top, bounds->right, bounds->bottom};
    if (object_.WindowsExist() && object_.Container().UserMode()) {
      const std::shared_ptr<LiveControl> live = object_.Live();
      if (win32::DrawWindow(live->Form().Handle(), context, area)) return S_OK;
    }
    win32::DrawForm(context, area, object_.Ole().Extent(), object_.Container().Appearance(),
                    kGridContent);
    return S_OK;
  });
}

STDMETHODIMP View::GetColorSet(DWORD /*aspect*/, LONG /*index*/, void* /*aspect_data*/,
                               DVTARGETDEVICE* /*target*/, HDC /*context*/, LOGPALETTE** colors) {
  if (!colors) return E_POINTER;
  *colors = nullptr;
  return S_FALSE;
}

STDMETHODIMP View::Freeze(DWORD /*aspect*/, LONG /*index*/, void* /*aspect_data*/, DWORD* /*key*/) {
  return E_NOTIMPL;
}

STDMETHODIMP View::Unfreeze(DWORD /*key*/) {
  return E_NOTIMPL;
}

STDMETHODIMP View::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
  advise_aspects_ = aspects;
  advise_flags_ = flags;
  advise_sink_ = ComPointer<IAdviseSink>(sink);
  return Guard([&] {
    if ((flags & ADVF_PRIMEFIRST) != 0) Changed();
    return S_OK;
  });
}

void View::Changed() {
  object_.Data().Changed();
  const ComPointer<IAdviseSink> sink = advise_sink_;
  if (!sink || (advise_aspects_ & DVASPECT_CONTENT) == 0) return;
  if ((advise_flags_ & ADVF_ONLYONCE) != 0) advise_sink_.Reset();
  sink->OnViewChange(DVASPECT_CONTENT, -1);
}

STDMETHODIMP View::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
  if (aspects) *aspects = advise_aspects_;
  if (flags) *flags = advise_flags_;
  if (sink) {
    *sink = advise_sink_.Get();
    if (*sink) (*sink)->AddRef();
  }
  return S_OK;
}

STDMETHODIMP View::GetRect(DWORD aspect, LPRECTL rectangle) {
  if (!rectangle) return E_POINTER;
  if (aspect != DVASPECT_CONTENT && aspect != DVASPECT_OPAQUE) return DV_E_DVASPECT;
  const SIZEL size = object_.Ole().Extent();
  *rectangle = {0, 0, size.cx, size.cy};
  return S_OK;
}

STDMETHODIMP View::GetViewStatus(DWORD* status) {
  if (!status) return E_POINTER;
  *status = VIEWSTATUS_OPAQUE;
  return S_OK;
}

STDMETHODIMP View::QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG /*close*/,
                                 DWORD* result) {
  if (!bounds || !result) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *result = static_cast<DWORD>(PtInRect(bounds, point) ? HITRESULT_HIT : HITRESULT_OUTSIDE);
  return S_OK;
}

STDMETHODIMP View::QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT area, LONG /*close*/,
                                DWORD* result) {
  if (!bounds || !area || !result) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  RECT common = {};
  *result =
      static_cast<DWORD>(IntersectRect(&common, bounds, area) ? HITRESULT_HIT : HITRESULT_OUTSIDE);
  return S_OK;
}

STDMETHODIMP View::GetNaturalExtent(DWORD aspect, LONG /*index*/, DVTARGETDEVICE* /*target*/,
                                    HDC /*context*/, DVEXTENTINFO* /*information*/, LPSIZEL size) {
  return object_.Ole().GetExtent(aspect, size);
}

STDMETHODIMP View::GetExtent(DWORD aspect, LONG /*index*/, DVTARGETDEVICE* /*target*/,
                             LPSIZEL size) {
  return object_.Ole().GetExtent(aspect, size);
}

}  // namespace rdv
