// The library's entry points.
#include <new>

#include "component/com/identifiers.h"
#include "component/com/module.h"
#include "component/object/class_factory.h"
#include "component/registration/registration.h"

STDAPI DllCanUnloadNow() {
  return rdv::ModuleInUse() ? S_FALSE : S_OK;
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (class_id != rdv::kLineConfigClassId) return CLASS_E_CLASSNOTAVAILABLE;
  return rdv::GetClassFactory(iid, object);
}

STDAPI DllRegisterServer() {
  return rdv::RegisterComponent();
}

STDAPI DllUnregisterServer() {
  return rdv::UnregisterComponent();
}
