#include "component/object/automation.h"

#include "component/com/module.h"
#include "component/object/line_config_object.h"

namespace rdv {

STDMETHODIMP Automation::ShowControl(SHORT Given_ConfigID, VARIANT_BOOL* Result) {
  return Method([&] {
    if (!Result) return LeaveErrorInfo(E_POINTER);
    *Result = VARIANT_FALSE;
    // In a form designer the control is a picture of itself and touches no data.
    if (!object_.Container().UserMode()) return S_OK;
    if (object_.Live()->ShowControl(Given_ConfigID)) *Result = VARIANT_TRUE;
    return S_OK;
  });
}

STDMETHODIMP Automation::AssignIndextoDefaultBox(SHORT Line1LineType, SHORT Line5LineType,
                                                 VARIANT* Result) {
  return Method([&] {
    if (!Result) return LeaveErrorInfo(E_POINTER);
    VariantInit(Result);
    if (!object_.Container().UserMode()) return S_OK;
    object_.Live()->AssignIndextoDefaultBox(Line1LineType, Line5LineType);
    return S_OK;
  });
}

STDMETHODIMP Automation::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 1;
  return S_OK;
}

STDMETHODIMP Automation::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** information) {
  if (!information) return E_POINTER;
  *information = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  const HRESULT result = Description();
  if (FAILED(result)) return result;
  description_->AddRef();
  *information = description_.Get();
  return S_OK;
}

STDMETHODIMP Automation::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                       LCID /*locale*/, DISPID* ids) {
  if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  const HRESULT result = Description();
  return FAILED(result) ? result : description_->GetIDsOfNames(names, count, ids);
}

STDMETHODIMP Automation::Invoke(DISPID member, REFIID reserved, LCID /*locale*/, WORD flags,
                                DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                UINT* wrong_argument) {
  if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (!parameters) return E_POINTER;
  const HRESULT described = Description();
  if (FAILED(described)) return described;
  SetErrorInfo(0, nullptr);
  const KeepObject keep(outer_);
  const ComPointer<ITypeInfo> description = description_;
  return description->Invoke(static_cast<LineConfigInterface*>(this), member, flags, parameters,
                             result, exception, wrong_argument);
}

STDMETHODIMP Automation::GetClassInfo(ITypeInfo** information) {
  if (!information) return E_POINTER;
  ComPointer<ITypeInfo> class_information;
  const HRESULT result = LoadOwnTypeInformation(kLineConfigClassId, class_information);
  *information = class_information.Get();
  if (*information) (*information)->AddRef();
  return result;
}

STDMETHODIMP Automation::GetGUID(DWORD kind, GUID* id) {
  if (!id) return E_POINTER;
  if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
  *id = kLineConfigEventsId;
  return S_OK;
}

STDMETHODIMP Automation::InterfaceSupportsErrorInfo(REFIID iid) {
  return iid == kLineConfigInterfaceId ? S_OK : S_FALSE;
}

HRESULT Automation::Description() {
  return description_ ? S_OK : LoadOwnTypeInformation(kLineConfigInterfaceId, description_);
}

}  // namespace rdv
