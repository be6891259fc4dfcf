#include "component/object/data_transfer.h"

#include <cmath>
#include <vector>

#include "component/com/enumerator.h"
#include "component/object/line_config_object.h"

namespace rdv {
namespace {

constexpr int kHimetricPerInch = 2540;

constexpr FORMATETC Format(CLIPFORMAT format, DWORD medium) {
  return {format, nullptr, DVASPECT_CONTENT, -1, medium};
}

// The best first.
constexpr FORMATETC kFormats[] = {Format(CF_METAFILEPICT, TYMED_MFPICT),
                                  Format(CF_ENHMETAFILE, TYMED_ENHMF),
                                  Format(CF_BITMAP, TYMED_GDI)};

void GiveFormat(const FORMATETC& from, FORMATETC& to) {
  to = from;
}
using FormatEnumerator = Enumerator<IEnumFORMATETC, FORMATETC, &GiveFormat>;

SIZE PixelsOf(SIZEL extent) {
  const HDC screen = GetDC(nullptr);
  const SIZE pixels = {MulDiv(extent.cx, GetDeviceCaps(screen, LOGPIXELSX), kHimetricPerInch),
                       MulDiv(extent.cy, GetDeviceCaps(screen, LOGPIXELSY), kHimetricPerInch)};
  ReleaseDC(nullptr, screen);
  return pixels;
}

// Hundredths of a millimetre in the pixels of a metafile's reference device.
int InFrame(HDC context, LONG length, int pixels, int millimetres) {
  constexpr int kPerMillimetre = 100;
  return MulDiv(length, GetDeviceCaps(context, pixels),
                GetDeviceCaps(context, millimetres) * kPerMillimetre);
}

}  // namespace

STDMETHODIMP DataTransfer::QueryGetData(FORMATETC* format) {
  if (!format) return E_POINTER;
  if (format->dwAspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  for (const FORMATETC& each : kFormats) {
    if (each.cfFormat != format->cfFormat) continue;
    return (each.tymed & format->tymed) != 0 ? S_OK : DV_E_TYMED;
  }
  return DV_E_FORMATETC;
}

STDMETHODIMP DataTransfer::GetData(FORMATETC* format, STGMEDIUM* medium) {
  if (!format || !medium) return E_POINTER;
  *medium = {};
  const HRESULT result = QueryGetData(format);
  if (FAILED(result)) return result;
  return Guard([&] {
    switch (format->cfFormat) {
      case CF_METAFILEPICT:
        return GiveMetafile(*medium);
      case CF_ENHMETAFILE:
        return GiveEnhancedMetafile(*medium);
      default:
        return GiveBitmap(*medium);
    }
  });
}

HRESULT DataTransfer::DrawInto(HDC context, SIZE pixels) {
  const RECTL bounds = {0, 0, pixels.cx, pixels.cy};
  return object_.Drawing().Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, context, &bounds,
                                nullptr, nullptr, 0);
}

HRESULT DataTransfer::GiveMetafile(STGMEDIUM& medium) {
  const SIZEL extent = object_.Ole().Extent();
  const SIZE pixels = PixelsOf(extent);
  const HDC context = CreateMetaFileW(nullptr);
  if (!context) return E_OUTOFMEMORY;
  SetMapMode(context, MM_ANISOTROPIC);
  SetWindowOrgEx(context, 0, 0, nullptr);
  SetWindowExtEx(context, pixels.cx, pixels.cy, nullptr);
  const HRESULT drawn = DrawInto(context, pixels);
  const HMETAFILE metafile = CloseMetaFile(context);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
  auto* picture = memory ? static_cast<METAFILEPICT*>(GlobalLock(memory)) : nullptr;
  if (FAILED(drawn) || !metafile || !picture) {
    if (memory) GlobalFree(memory);
    if (metafile) DeleteMetaFile(metafile);
    return FAILED(drawn) ? drawn : E_OUTOFMEMORY;
  }
  *picture = {MM_ANISOTROPIC, extent.cx, extent.cy, metafile};
  GlobalUnlock(memory);
  medium.tymed = TYMED_MFPICT;
  medium.hMetaFilePict = memory;
  return S_OK;
}

HRESULT DataTransfer::GiveEnhancedMetafile(STGMEDIUM& medium) {
  const SIZEL extent = object_.Ole().Extent();
  const RECT frame = {0, 0, extent.cx, extent.cy};
  const HDC context = CreateEnhMetaFileW(nullptr, nullptr, &frame, nullptr);
  if (!context) return E_OUTOFMEMORY;
  // The frame is measured in the screen's millimetres, which need not be those of its resolution:
  // what is drawn is stretched over all of it.
  const SIZE pixels = PixelsOf(extent);
  SetMapMode(context, MM_ANISOTROPIC);
  SetWindowExtEx(context, pixels.cx, pixels.cy, nullptr);
  SetViewportExtEx(context, InFrame(context, extent.cx, HORZRES, HORZSIZE),
                   InFrame(context, extent.cy, VERTRES, VERTSIZE), nullptr);
  const HRESULT drawn = DrawInto(context, pixels);
  const HENHMETAFILE metafile = CloseEnhMetaFile(context);
  if (FAILED(drawn) || !metafile) {
    if (metafile) DeleteEnhMetaFile(metafile);
    return FAILED(drawn) ? drawn : E_OUTOFMEMORY;
  }
  medium.tymed = TYMED_ENHMF;
  medium.hEnhMetaFile = metafile;
  return S_OK;
}

HRESULT DataTransfer::GiveBitmap(STGMEDIUM& medium) {
  const SIZE pixels = PixelsOf(object_.Ole().Extent());
  const HDC screen = GetDC(nullptr);
  const HDC context = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, pixels.cx, pixels.cy);
  ReleaseDC(nullptr, screen);
  HRESULT drawn = E_OUTOFMEMORY;
  if (context && bitmap) {
    const HGDIOBJ before = SelectObject(context, bitmap);
    drawn = DrawInto(context, pixels);
    SelectObject(context, before);
  }
  if (context) DeleteDC(context);
  if (FAILED(drawn)) {
    if (bitmap) DeleteObject(bitmap);
    return drawn;
  }
  medium.tymed = TYMED_GDI;
  medium.hBitmap = bitmap;
  return S_OK;
}

STDMETHODIMP DataTransfer::GetDataHere(FORMATETC* /*format*/, STGMEDIUM* /*medium*/) {
  return DV_E_FORMATETC;
}

STDMETHODIMP DataTransfer::GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* canonical) {
  if (!format || !canonical) return E_POINTER;
  *canonical = *format;
  // Not made for a device.
  canonical->ptd = nullptr;
  return DATA_S_SAMEFORMATETC;
}

STDMETHODIMP DataTransfer::SetData(FORMATETC* /*format*/, STGMEDIUM* /*medium*/, BOOL /*release*/) {
  return E_NOTIMPL;
}

STDMETHODIMP DataTransfer::EnumFormatEtc(DWORD direction, IEnumFORMATETC** enumerator) {
  if (!enumerator) return E_POINTER;
  *enumerator = nullptr;
  if (direction != DATADIR_GET) return E_NOTIMPL;
  return AtBoundary([&] {
    return FormatEnumerator::Create(
        IID_IEnumFORMATETC, std::vector<FORMATETC>(std::begin(kFormats), std::end(kFormats)),
        &outer_, enumerator);
  });
}

STDMETHODIMP DataTransfer::DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink,
                                   DWORD* connection) {
  if (!format || !connection) return E_POINTER;
  *connection = 0;
  return Guard([&] {
    if (!advise_holder_) {
      const HRESULT result = CreateDataAdviseHolder(advise_holder_.Receive());
      if (FAILED(result)) return result;
    }
    const ComPointer<IDataAdviseHolder> holder = advise_holder_;
    return holder->Advise(this, format, flags, sink, connection);
  });
}

STDMETHODIMP DataTransfer::DUnadvise(DWORD connection) {
  return advise_holder_ ? advise_holder_->Unadvise(connection) : OLE_E_NOCONNECTION;
}

STDMETHODIMP DataTransfer::EnumDAdvise(IEnumSTATDATA** enumerator) {
  if (!enumerator) return E_POINTER;
  *enumerator = nullptr;
  return advise_holder_ ? advise_holder_->EnumAdvise(enumerator) : S_OK;
}

void DataTransfer::Changed() {
  if (const ComPointer<IDataAdviseHolder> holder = advise_holder_)
    holder->SendOnDataChange(this, 0, 0);
}

}  // namespace rdv
