#include "tests/component/support/stand_in_class.h"

#include <gtest/gtest.h>

#include "tests/component/support/registry_text.h"

namespace rdv::test {
namespace {

constexpr CLSID kStandIn = {
    0xB3A5A3C1, 0x0A6D, 0x4C55, {0x8B, 0x2E, 0x5D, 0x0E, 0x61, 0x7C, 0x40, 0x11}};
constexpr IID kStandInInterface = {
    0xB3A5A3C1, 0x0A6D, 0x4C55, {0x8B, 0x2E, 0x5D, 0x0E, 0x61, 0x7C, 0x40, 0x12}};
constexpr wchar_t kStandInText[] = L"{B3A5A3C1-0A6D-4C55-8B2E-5D0E617C4011}";
#ifdef _WIN64
constexpr SYSKIND kSystem = SYS_WIN64;
#else
constexpr SYSKIND kSystem = SYS_WIN32;
#endif

}  // namespace

class StandInClass::Object final : public IDispatch {
 public:
  explicit Object(StandInClass& of) : class_(of) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    *object = iid == IID_IDispatch || iid == IID_IUnknown ? this : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      if (class_.on_object_gone) class_.on_object_gone();
      delete this;
    }
    return left;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** information) override {
    *information = ComPointer<ITypeInfo>(class_.description_).Detach();
    return S_OK;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT*) override {
    return class_.Answer(member, flags, *parameters, *result, *exception);
  }

 private:
  StandInClass& class_;
  ULONG references_ = 1;  // of whoever made it
};

StandInClass::StandInClass(const wchar_t* name, const std::vector<StandInMethod>& methods)
    : root_(MachineIsOpen() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER),
      key_(std::wstring(kClasses) + L"\\" + name) {
  EXPECT_EQ(RegSetKeyValueW(root_, (key_ + L"\\CLSID").c_str(), nullptr, REG_SZ, kStandInText,
                            sizeof kStandInText),
            ERROR_SUCCESS);
  Describe(methods);
  EXPECT_EQ(CoRegisterClassObject(kStandIn, static_cast<IClassFactory*>(this), CLSCTX_INPROC_SERVER,
                                  REGCLS_MULTIPLEUSE, &registered_),
            S_OK);
}

StandInClass::~StandInClass() {
  CoRevokeClassObject(registered_);
  RegDeleteTreeW(root_, key_.c_str());
}

void StandInClass::Describe(const std::vector<StandInMethod>& methods) {
  // Never saved: it describes the object from memory.
  ComPointer<ICreateTypeLib2> library;
  ASSERT_EQ(CreateTypeLib2(kSystem, L"stand-in.tlb", library.Receive()), S_OK);
  std::wstring name = L"StandIn";
  ComPointer<ICreateTypeInfo> type;
  ASSERT_EQ(library->CreateTypeInfo(name.data(), TKIND_DISPATCH, type.Receive()), S_OK);
  ASSERT_EQ(type->SetGuid(kStandInInterface), S_OK);
  for (const StandInMethod& method : methods) {
    const auto index = static_cast<UINT>(names_.size());
    names_.emplace_back(method.name);
    TYPEDESC pointed = {};
    pointed.vt = method.takes;
    ELEMDESC argument = {};
    argument.tdesc.vt = method.takes;
    if (method.by_reference) {
      argument.tdesc.vt = VT_PTR;
      argument.tdesc.lptdesc = &pointed;
    }
    FUNCDESC function = {};
    function.memid = static_cast<MEMBERID>(names_.size());
    function.funckind = FUNC_DISPATCH;
    function.invkind = INVOKE_FUNC;
    function.callconv = CC_STDCALL;
    function.cParams = method.takes == VT_EMPTY ? 0 : 1;
    function.lprgelemdescParam = &argument;
    function.elemdescFunc.tdesc.vt = method.result;
    ASSERT_EQ(type->AddFuncDesc(index, &function), S_OK);
    LPOLESTR text = names_.back().data();
    ASSERT_EQ(type->SetFuncAndParamNames(index, &text, 1), S_OK);
  }
  ASSERT_EQ(type->LayOut(), S_OK);
  description_ = ComPointer<ITypeInfo>::From(type.Get(), IID_ITypeInfo);
  ASSERT_TRUE(description_);
}

STDMETHODIMP StandInClass::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (iid == IID_IClassFactory || iid == IID_IUnknown) *object = static_cast<IClassFactory*>(this);
  return *object ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP StandInClass::CreateInstance(IUnknown*, REFIID iid, void** object) {
  ComPointer<IDispatch> made;
  *made.Receive() = new Object(*this);
  return made->QueryInterface(iid, object);
}

HRESULT StandInClass::Answer(DISPID member, WORD flags, const DISPPARAMS& parameters,
                             VARIANT& result, EXCEPINFO& exception) {
  const bool one_text = flags == DISPATCH_METHOD && parameters.cArgs == 1 &&
                        parameters.rgvarg[0].vt == VT_BSTR && member >= 1 &&
                        static_cast<size_t>(member) <= names_.size();
  EXPECT_TRUE(one_text);
  if (!one_text) return DISP_E_MEMBERNOTFOUND;
  asked.push_back(names_[static_cast<size_t>(member) - 1] + L": " + parameters.rgvarg[0].bstrVal);
  if (!failure.empty()) {
    exception.scode = kStandInFailure;
    exception.bstrDescription = SysAllocString(failure.c_str());
    exception.bstrSource = SysAllocString(L"Stand-in");
    return DISP_E_EXCEPTION;
  }
  result.vt = VT_BOOL;
  result.boolVal = answer;
  return S_OK;
}

}  // namespace rdv::test
