#include "component/object/class_factory.h"

#include <memory>

#include "component/com/boundary.h"
#include "component/com/module.h"
#include "component/object/line_config_object.h"

namespace rdv {
namespace {

// Without state, so that one serves all. Its references lock the library like an object's.
class ClassFactory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
    *object = known ? static_cast<IClassFactory*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  STDMETHODIMP_(ULONG) Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    // An aggregating owner can only ask for the inner object's own IUnknown.
    if (outer && iid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
    return AtBoundary([&] { return LineConfigObject::Create(outer, iid, object); });
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lock ? LockModule() : UnlockModule();
    return S_OK;
  }

 private:
  ~ClassFactory() = default;

  LONG references_ = 1;
  ModuleLock lock_;
};

}  // namespace

HRESULT GetClassFactory(REFIID iid, void** object) {
  return AtBoundary([&] {
    auto* factory = new ClassFactory;
    const HRESULT result = factory->QueryInterface(iid, object);
    factory->Release();
    return result;
  });
}

}  // namespace rdv
