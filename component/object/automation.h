// The control's methods, for compiled hosts and for scripts, and its descriptions of itself.
#pragma once

#include "component/com/com_pointer.h"
#include "component/com/identifiers.h"
#include "component/object/part.h"

namespace rdv {

class Automation final : public Part<LineConfigInterface, IProvideClassInfo2, ISupportErrorInfo> {
 public:
  using Part::Part;

  STDMETHODIMP ShowControl(SHORT Given_ConfigID, VARIANT_BOOL* Result) override;
  STDMETHODIMP AssignIndextoDefaultBox(SHORT Line1LineType, SHORT Line5LineType,
                                       VARIANT* Result) override;

  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** information) override;
  STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags,
                      DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                      UINT* wrong_argument) override;

  STDMETHODIMP GetClassInfo(ITypeInfo** information) override;
  STDMETHODIMP GetGUID(DWORD kind, GUID* id) override;

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override;

 private:
  // Runs the body of a method of the default interface: a failure leaves error information, and
  // nothing of an earlier call's is left.
  template <class Body>
  HRESULT Method(Body&& body) noexcept {
    SetErrorInfo(0, nullptr);
    return Guard(std::forward<Body>(body));
  }
  HRESULT Description();

  ComPointer<ITypeInfo> description_;  // of the default interface, loaded when first needed
};

}  // namespace rdv
