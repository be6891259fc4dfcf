#include "component/object/label_validator.h"

#include <optional>

#include "component/com/com_pointer.h"
#include "runtime/error.h"
#include "widgets/win32/wide.h"

namespace rdv {
namespace {

constexpr const wchar_t* kValidatorClass = L"TLV_Validate_TEXTField.Business_Rules";

bool IsText(const TYPEDESC& type) {
  if (type.vt == VT_PTR) return IsText(*type.lptdesc);
  return type.vt == VT_BSTR;
}

bool AsksOneText(const FUNCDESC& function) {
  return function.invkind == INVOKE_FUNC && function.cParams == 1 &&
         IsText(function.lprgelemdescParam[0].tdesc) && function.elemdescFunc.tdesc.vt == VT_BOOL;
}

// The only method that takes one text and returns a Boolean; none when there is not exactly one.
std::optional<DISPID> FindQuestion(IDispatch& component) {
  ComPointer<ITypeInfo> information;
  if (FAILED(component.GetTypeInfo(0, LOCALE_USER_DEFAULT, information.Receive()))) return {};
  TYPEATTR* attributes = nullptr;
  if (FAILED(information->GetTypeAttr(&attributes))) return {};
  const UINT count = attributes->cFuncs;
  information->ReleaseTypeAttr(attributes);
  std::optional<DISPID> question;
  for (UINT index = 0; index < count; ++index) {
    FUNCDESC* function = nullptr;
    if (FAILED(information->GetFuncDesc(index, &function))) continue;
    const bool fits = AsksOneText(*function);
    const DISPID member = function->memid;
    information->ReleaseFuncDesc(function);
    if (!fits) continue;
    if (question) return {};
    question = member;
  }
  return question;
}

class OutsideValidator final : public LabelValidator {
 public:
  OutsideValidator(ComPointer<IDispatch> component, DISPID question)
      : component_(std::move(component)), question_(question) {}

  bool IsAcceptable(TextView label) override {
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_BSTR;
    argument.bstrVal = SysAllocStringLen(reinterpret_cast<const wchar_t*>(label.data()),
                                         static_cast<UINT>(label.size()));
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    VARIANT answer;
    VariantInit(&answer);
    EXCEPINFO exception = {};
    const HRESULT result =
        component_->Invoke(question_, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                           &answer, &exception, nullptr);
    VariantClear(&argument);
    if (FAILED(result)) RaiseFailure(result, exception);
    const bool acceptable = SUCCEEDED(VariantChangeType(&answer, &answer, 0, VT_BOOL)) &&
                            answer.boolVal != VARIANT_FALSE;
    VariantClear(&answer);
    return acceptable;
  }

 private:
  [[noreturn]] static void RaiseFailure(HRESULT result, EXCEPINFO& exception) {
    const auto take = [](BSTR text) {
      Text taken = text ? win32::FromWide({text, SysStringLen(text)}) : Text();
      SysFreeString(text);
      return taken;
    };
    const int32_t number = exception.scode ? exception.scode : result;
    Text description = take(exception.bstrDescription);
    Text source = take(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    throw RuntimeError(number, std::move(description), std::move(source));
  }

  ComPointer<IDispatch> component_;
  DISPID question_;
};

}  // namespace

std::unique_ptr<LabelValidator> MakeLabelValidator() {
  CLSID class_id = {};
  ComPointer<IDispatch> component;
  if (SUCCEEDED(CLSIDFromProgID(kValidatorClass, &class_id)) &&
      SUCCEEDED(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                 IID_IDispatch, component.ReceiveUntyped()))) {
    if (const auto question = FindQuestion(*component.Get())) {
      return std::make_unique<OutsideValidator>(std::move(component), *question);
    }
  }
  return MakeBuiltInLabelValidator();
}

}  // namespace rdv
