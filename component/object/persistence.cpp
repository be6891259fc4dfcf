#include "component/object/persistence.h"

#include "component/com/com_pointer.h"
#include "component/com/identifiers.h"

namespace rdv {

STDMETHODIMP Persistence::GetClassID(CLSID* class_id) {
  if (!class_id) return E_POINTER;
  *class_id = kLineConfigClassId;
  return S_OK;
}

STDMETHODIMP Persistence::GetSizeMax(ULARGE_INTEGER* size) {
  if (!size) return E_POINTER;
  size->QuadPart = 0;
  return S_OK;
}

namespace {

// What the interface is safe for, whoever asks.
DWORD SafetyOf(REFIID iid) {
  for (const IID& each :
       {IID_IPersist, IID_IPersistStreamInit, IID_IPersistPropertyBag, IID_IPersistStorage}) {
    if (each == iid) return INTERFACESAFE_FOR_UNTRUSTED_DATA;
  }
  return 0;
}

}  // namespace

STDMETHODIMP Persistence::GetInterfaceSafetyOptions(REFIID iid, DWORD* supported, DWORD* enabled) {
  if (!supported || !enabled) return E_POINTER;
  *supported = *enabled = SafetyOf(iid);
  return ComPointer<IUnknown>::From(&outer_, iid) ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP Persistence::SetInterfaceSafetyOptions(REFIID iid, DWORD mask, DWORD options) {
  if (!ComPointer<IUnknown>::From(&outer_, iid)) return E_NOINTERFACE;
  return (mask & options & ~SafetyOf(iid)) == 0 ? S_OK : E_FAIL;
}

}  // namespace rdv
