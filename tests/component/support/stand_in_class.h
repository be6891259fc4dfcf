// A component of another maker, made up for a test: a registered name, and an object with methods
// of the test's choice that is described by a type library.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "component/com/com_pointer.h"

namespace rdv::test {

struct StandInMethod {
  const wchar_t* name;
  VARTYPE takes = VT_EMPTY;  // the type of its only argument, or none
  VARTYPE result = VT_BOOL;
  bool by_reference = false;
};

inline constexpr HRESULT kStandInFailure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x321);

// Registered as long as it lives: its name for the machine, its class for the process.
class StandInClass final : public IClassFactory {
 public:
  StandInClass(const wchar_t* name, const std::vector<StandInMethod>& methods);
  StandInClass(const StandInClass&) = delete;
  StandInClass& operator=(const StandInClass&) = delete;
  ~StandInClass();

  // What the methods do.
  VARIANT_BOOL answer = VARIANT_TRUE;
  std::wstring failure;             // its description; without one they succeed
  std::vector<std::wstring> asked;  // "method: argument"
  // Called when the last reference to one of its objects is gone.
  std::function<void()> on_object_gone;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }

 private:
  class Object;

  void Describe(const std::vector<StandInMethod>& methods);
  HRESULT Answer(DISPID member, WORD flags, const DISPPARAMS& parameters, VARIANT& result,
                 EXCEPINFO& exception);

  const HKEY root_;
  const std::wstring key_;
  std::vector<std::wstring> names_;  // of the methods, whose numbers count from 1
  ComPointer<ITypeInfo> description_;
  DWORD registered_ = 0;
};

}  // namespace rdv::test
