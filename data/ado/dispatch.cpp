#include "data/ado/dispatch.h"

#include <vector>

#include "runtime/error.h"

namespace rdv::ado {
namespace {

// Result codes of this facility carry the numbers that a language's run-time errors have.
constexpr int kControlFacility = 0x0A;

int32_t ErrorNumber(HRESULT result) {
  return HRESULT_FACILITY(result) == kControlFacility ? HRESULT_CODE(result)
                                                      : static_cast<int32_t>(result);
}

Text TextOf(BSTR string) {
  return string == nullptr ? Text()
                           : Text(reinterpret_cast<const char16_t*>(string), SysStringLen(string));
}

Text SystemMessage(HRESULT result) {
  wchar_t buffer[512];
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                      nullptr, static_cast<DWORD>(result), 0, buffer,
                                      static_cast<DWORD>(std::size(buffer)), nullptr);
  Text message(reinterpret_cast<const char16_t*>(buffer), length);
  while (!message.empty() && (message.back() == u'\n' || message.back() == u'\r'))
    message.pop_back();
  return message.empty() ? u"Automation error" : message;
}

[[noreturn]] void RaiseResult(HRESULT result) {
  throw RuntimeError(ErrorNumber(result), SystemMessage(result), Text(kProductSource));
}

// Takes over the texts of the exception.
// The same engine under the names of its successors. Users and hosts know the first one.
struct Renamed {
  TextView source;
  TextView in_texts;
};
constexpr Renamed kFirst = {u"Microsoft JET Database Engine", u"Microsoft Jet database engine"};
constexpr Renamed kSuccessors[] = {
    {u"Microsoft Access Database Engine", u"Microsoft Access database engine"},
    {u"Microsoft Office Access Database Engine", u"Microsoft Office Access database engine"}};

void NameEngine(Text& source, Text& description) {
  for (const Renamed& successor : kSuccessors) {
    if (source != successor.source) continue;
    source = kFirst.source;
    for (size_t at = 0; (at = description.find(successor.in_texts, at)) != Text::npos;
         at += kFirst.in_texts.size())
      description.replace(at, successor.in_texts.size(), kFirst.in_texts);
  }
}

[[noreturn]] void RaiseException(EXCEPINFO& exception) {
  if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
  Text description = TextOf(exception.bstrDescription);
  Text source = TextOf(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
  // Either is told, or neither: an error still has a number then.
  const HRESULT result = FAILED(exception.scode) ? exception.scode : DISP_E_EXCEPTION;
  const int32_t number = exception.wCode != 0 ? int32_t{exception.wCode} : ErrorNumber(result);
  if (description.empty()) description = SystemMessage(result);
  NameEngine(source, description);
  throw RuntimeError(number, std::move(description), std::move(source));
}

}  // namespace

Variant::Variant(int32_t number) : Variant() {
  value_.vt = VT_I4;
  value_.lVal = number;
}

Variant::Variant(double number) : Variant() {
  value_.vt = VT_R8;
  value_.dblVal = number;
}

Variant::Variant(TextView text) : Variant() {
  value_.bstrVal = SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                                     static_cast<UINT>(text.size()));
  if (value_.bstrVal == nullptr) RaiseResult(E_OUTOFMEMORY);
  value_.vt = VT_BSTR;
}

Variant::Variant(IDispatch* object) : Variant() {
  if (object != nullptr) object->AddRef();
  value_.vt = VT_DISPATCH;
  value_.pdispVal = object;
}

Variant Variant::MakeNull() {
  Variant null;
  null.value_.vt = VT_NULL;
  return null;
}

Variant Variant::ReferenceTo(Variant& target) {
  Variant reference;
  reference.value_.vt = VT_BYREF | VT_VARIANT;
  reference.value_.pvarVal = &target.value_;
  return reference;
}

VARIANT* Variant::Receive() {
  VariantClear(&value_);
  return &value_;
}

Object::Object(const Variant& value) {
  if (value.Get().vt != VT_DISPATCH || value.Get().pdispVal == nullptr) return;
  dispatch_ = value.Get().pdispVal;
  dispatch_->AddRef();
}

Object Object::Create(const wchar_t* program_id) {
  CLSID class_id;
  HRESULT result = CLSIDFromProgID(program_id, &class_id);
  Object object;
  if (SUCCEEDED(result)) {
    void* dispatch = nullptr;
    result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                              IID_IDispatch, &dispatch);
    object.dispatch_ = static_cast<IDispatch*>(dispatch);
  }
  if (FAILED(result))
    throw RuntimeError(429, u"ActiveX component can't create object", Text(kProductSource));
  return object;
}

Variant Object::Call(const wchar_t* method, std::initializer_list<const Variant*> arguments) const {
  return Invoke(method, DISPATCH_METHOD, arguments);
}

Variant Object::Get(const wchar_t* property,
                    std::initializer_list<const Variant*> arguments) const {
  return Invoke(property, DISPATCH_PROPERTYGET, arguments);
}

void Object::Put(const wchar_t* property, const Variant& value) const {
  Invoke(property, DISPATCH_PROPERTYPUT, {&value});
}

void Object::PutReference(const wchar_t* property, const Object& object) const {
  const Variant value(object.dispatch_);
  Invoke(property, DISPATCH_PROPERTYPUTREF, {&value});
}

Variant Object::Invoke(const wchar_t* name, WORD kind,
                       std::initializer_list<const Variant*> arguments) const {
  if (dispatch_ == nullptr) Raise(LanguageError::ObjectVariableNotSet);
  // The last argument comes first.
  std::vector<VARIANT> reversed;
  for (auto argument = arguments.end(); argument != arguments.begin();)
    reversed.push_back((*--argument)->Get());
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  DISPID put = DISPID_PROPERTYPUT;
  if ((kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
  }
  DISPID id = 0;
  auto* writable_name = const_cast<LPOLESTR>(name);
  HRESULT outcome = dispatch_->GetIDsOfNames(IID_NULL, &writable_name, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(outcome)) RaiseResult(outcome);
  Variant result;
  EXCEPINFO exception{};
  UINT wrong_argument = 0;
  outcome = dispatch_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                              result.Receive(), &exception, &wrong_argument);
  if (outcome == DISP_E_EXCEPTION) RaiseException(exception);
  if (FAILED(outcome)) RaiseResult(outcome);
  return result;
}

}  // namespace rdv::ado
