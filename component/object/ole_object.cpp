#include "component/object/ole_object.h"

#include <cmath>

#include "component/com/enumerator.h"
#include "component/com/identifiers.h"
#include "component/object/line_config_object.h"
#include "rules/grid_columns.h"

namespace rdv {
namespace {

constexpr double kHimetricPerTwip = 2540.0 / 1440.0;

SIZEL DesignExtent() {
  const Size size = DesignSize(kGridContent);
  return {std::lround(size.width * kHimetricPerTwip), std::lround(size.height * kHimetricPerTwip)};
}

wchar_t* CopyForCaller(const wchar_t* text) {
  const size_t size = (std::char_traits<wchar_t>::length(text) + 1) * sizeof(wchar_t);
  auto* copy = static_cast<wchar_t*>(CoTaskMemAlloc(size));
  if (copy) memcpy(copy, text, size);
  return copy;
}

void GiveVerb(const OLEVERB& from, OLEVERB& to) {
  to = from;
  to.lpszVerbName = CopyForCaller(from.lpszVerbName);
}
using VerbEnumerator = Enumerator<IEnumOLEVERB, OLEVERB, &GiveVerb>;

// With the key that brought the keyboard here: Shift+Tab comes from behind.
InPlace::Entry EntryBy(const MSG* message) {
  const bool backward = message && message->message == WM_KEYDOWN && message->wParam == VK_TAB &&
                        GetKeyState(VK_SHIFT) < 0;
  return backward ? InPlace::Entry::AtTheEnd : InPlace::Entry::AtTheStart;
}

}  // namespace

OleObject::OleObject(LineConfigObject& object, IUnknown& outer)
    : Part(object, outer), extent_(DesignExtent()) {}

STDMETHODIMP OleObject::SetClientSite(IOleClientSite* site) {
  return Guard([&] {
    // It cannot stay in the window of a container that has let go of it.
    if (site != object_.Container().Site().Get()) {
      object_.Activation().Deactivate();
      if (!site) object_.DestroyWindows();
    }
    object_.Container().SetSite(site);
    object_.AmbientsChanged();
    return S_OK;
  });
}

STDMETHODIMP OleObject::GetClientSite(IOleClientSite** site) {
  if (!site) return E_POINTER;
  *site = object_.Container().Site().Detach();
  return S_OK;
}

STDMETHODIMP OleObject::SetHostNames(LPCOLESTR /*application*/, LPCOLESTR /*document*/) {
  return S_OK;
}

STDMETHODIMP OleObject::Close(DWORD /*save_option*/) {
  return Guard([&] {
    object_.Activation().Deactivate();
    object_.DestroyWindows();
    if (const ComPointer<IOleAdviseHolder> holder = advise_holder_) holder->SendOnClose();
    return S_OK;
  });
}

STDMETHODIMP OleObject::SetMoniker(DWORD /*which*/, IMoniker* /*moniker*/) {
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::GetMoniker(DWORD /*assign*/, DWORD /*which*/, IMoniker** moniker) {
  if (!moniker) return E_POINTER;
  *moniker = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::InitFromData(IDataObject* /*data*/, BOOL /*creation*/, DWORD /*reserved*/) {
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::GetClipboardData(DWORD /*reserved*/, IDataObject** data) {
  if (!data) return E_POINTER;
  *data = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::DoVerb(LONG verb, LPMSG message, IOleClientSite* /*site*/, LONG /*index*/,
                               HWND /*parent*/, LPCRECT /*place*/) {
  const KeepObject keep(outer_);
  switch (verb) {
    case OLEIVERB_PRIMARY:
    case OLEIVERB_UIACTIVATE:
      return object_.Activation().Activate(InPlace::Activity::UserInterface, EntryBy(message));
    case OLEIVERB_SHOW:
    case OLEIVERB_INPLACEACTIVATE:
      return object_.Activation().Activate(InPlace::Activity::Visible);
    case OLEIVERB_HIDE:
      return object_.Activation().Hide();
    case OLEIVERB_OPEN:
    case OLEIVERB_DISCARDUNDOSTATE:
      return E_NOTIMPL;
    default:
      // An unknown verb of the object's own runs the first one and says so.
      if (verb < 0) return E_NOTIMPL;
      return SUCCEEDED(object_.Activation().Activate(InPlace::Activity::UserInterface))
                 ? OLEOBJ_S_INVALIDVERB
                 : E_FAIL;
  }
}

STDMETHODIMP OleObject::EnumVerbs(IEnumOLEVERB** verbs) {
  if (!verbs) return E_POINTER;
  *verbs = nullptr;
  // Not from the registration, which there need not be.
  OLEVERB edit = {};
  edit.lVerb = OLEIVERB_PRIMARY;
  edit.lpszVerbName = CopyForCaller(kEditVerbName);
  if (!edit.lpszVerbName) return E_OUTOFMEMORY;
  edit.grfAttribs = kEditVerbAttributes;
  return VerbEnumerator::Create(IID_IEnumOLEVERB, {edit}, &outer_, verbs);
}

STDMETHODIMP OleObject::GetUserClassID(CLSID* class_id) {
  if (!class_id) return E_POINTER;
  *class_id = kLineConfigClassId;
  return S_OK;
}

STDMETHODIMP OleObject::GetUserType(DWORD /*form*/, LPOLESTR* name) {
  if (!name) return E_POINTER;
  *name = CopyForCaller(kUserClassName);
  return *name ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP OleObject::SetExtent(DWORD aspect, SIZEL* size) {
  if (!size) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  return Guard([&] {
    // The windows take their size from the container's rectangles, not from here.
    const bool changes = extent_.cx != size->cx || extent_.cy != size->cy;
    extent_ = *size;
    if (changes) object_.Drawing().Changed();
    return S_OK;
  });
}

STDMETHODIMP OleObject::GetExtent(DWORD aspect, SIZEL* size) {
  if (!size) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *size = extent_;
  return S_OK;
}

STDMETHODIMP OleObject::Advise(IAdviseSink* sink, DWORD* connection) {
  if (!connection) return E_POINTER;
  if (!advise_holder_) {
    const HRESULT result = CreateOleAdviseHolder(advise_holder_.Receive());
    if (FAILED(result)) return result;
  }
  return advise_holder_->Advise(sink, connection);
}

STDMETHODIMP OleObject::Unadvise(DWORD connection) {
  return advise_holder_ ? advise_holder_->Unadvise(connection) : OLE_E_NOCONNECTION;
}

STDMETHODIMP OleObject::EnumAdvise(IEnumSTATDATA** enumerator) {
  if (!enumerator) return E_POINTER;
  *enumerator = nullptr;
  return advise_holder_ ? advise_holder_->EnumAdvise(enumerator) : S_OK;
}

STDMETHODIMP OleObject::GetMiscStatus(DWORD aspect, DWORD* status) {
  if (!status) return E_POINTER;
  *status = aspect == DVASPECT_CONTENT ? kMiscStatus : 0;
  return aspect == DVASPECT_CONTENT ? S_OK : DV_E_DVASPECT;
}

STDMETHODIMP OleObject::SetColorScheme(LOGPALETTE* /*palette*/) {
  return E_NOTIMPL;
}

}  // namespace rdv
