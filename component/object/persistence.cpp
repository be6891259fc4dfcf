#include "component/object/persistence.h"

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

}  // namespace rdv
