// The methods as scripts call them.
#include <gtest/gtest.h>

#include "component/com/boundary.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"

namespace rdv::test {
namespace {

class Scripts : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    control_ = library_.Create<IDispatch>(IID_IDispatch);
  }

  HRESULT Call(const wchar_t* name, std::vector<VARIANT> arguments, VARIANT& result) {
    std::wstring copy = name;
    LPOLESTR names[] = {copy.data()};
    DISPID method = 0;
    const HRESULT found = control_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &method);
    if (FAILED(found)) return found;
    DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    VariantInit(&result);
    return control_->Invoke(method, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                            &result, nullptr, nullptr);
  }

  static VARIANT Number(LONG number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_I4;
    value.lVal = number;
    return value;
  }
  static VARIANT Words(const wchar_t* text) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text);
    return value;
  }

  Library library_;
  BoxAnswerer boxes_;
  ComPointer<IDispatch> control_;
  VARIANT result_;
};

TEST_F(Scripts, ShowControlAnswersABooleanWithoutAContainer) {
  EXPECT_EQ(Call(L"ShowControl", {Number(1)}, result_), S_OK);
  EXPECT_EQ(result_.vt, VT_BOOL);
  EXPECT_EQ(Call(L"showcontrol", {Number(1)}, result_), S_OK);
}

TEST_F(Scripts, AssignAnswersEmpty) {
  EXPECT_EQ(Call(L"AssignIndextoDefaultBox", {Number(6), Number(6)}, result_), S_OK);
  EXPECT_EQ(result_.vt, VT_EMPTY);
}

TEST_F(Scripts, WrongArgumentsAreErrorsOfTheCall) {
  EXPECT_EQ(Call(L"ShowControl", {}, result_), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"ShowControl", {Number(1), Number(2)}, result_), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"ShowControl", {Number(70000)}, result_), DISP_E_OVERFLOW);
  VARIANT words = Words(L"one");
  EXPECT_EQ(Call(L"ShowControl", {words}, result_), DISP_E_TYPEMISMATCH);
  VariantClear(&words);
  EXPECT_EQ(Call(L"Refresh", {}, result_), DISP_E_UNKNOWNNAME);
}

TEST_F(Scripts, AMethodTableCallNeedsAPlaceForItsResult) {
  const auto methods =
      ComPointer<LineConfigInterface>::From(control_.Get(), kLineConfigInterfaceId);
  EXPECT_EQ(methods->ShowControl(1, nullptr), E_POINTER);
  EXPECT_EQ(methods->AssignIndextoDefaultBox(5, 5, nullptr), E_POINTER);
}

TEST_F(Scripts, ErrorInformationIsOfferedForTheMethods) {
  const auto support = ComPointer<ISupportErrorInfo>::From(control_.Get(), IID_ISupportErrorInfo);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(kLineConfigInterfaceId), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IOleObject), S_FALSE);
}

HRESULT Failing() {
  return AtBoundary(
      []() -> HRESULT { throw RuntimeError(381, u"Invalid property array index", u"Stand-in"); });
}

TEST_F(Scripts, AFailureLeavesItsTextAndSource) {
  EXPECT_EQ(Failing(), MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, 381));
  ComPointer<IErrorInfo> error;
  ASSERT_EQ(GetErrorInfo(0, error.Receive()), S_OK);
  BSTR text = nullptr;
  BSTR source = nullptr;
  GUID of = {};
  EXPECT_EQ(error->GetDescription(&text), S_OK);
  EXPECT_EQ(error->GetSource(&source), S_OK);
  EXPECT_EQ(error->GetGUID(&of), S_OK);
  EXPECT_STREQ(text, L"Invalid property array index");
  EXPECT_STREQ(source, L"Stand-in");
  EXPECT_EQ(of, kLineConfigInterfaceId);
  SysFreeString(text);
  SysFreeString(source);
}

TEST_F(Scripts, WhatElseIsThrownBecomesAResultCode) {
  EXPECT_EQ(AtBoundary([]() -> HRESULT { throw std::bad_alloc(); }), E_OUTOFMEMORY);
  EXPECT_EQ(AtBoundary([]() -> HRESULT { throw 7; }), E_UNEXPECTED);
  EXPECT_EQ(AtBoundary([] { return S_FALSE; }), S_FALSE);
}

// What an earlier call left is not taken for this one's.
TEST_F(Scripts, ACallStartsWithoutErrorInformation) {
  Failing();
  EXPECT_EQ(Call(L"AssignIndextoDefaultBox", {Number(6), Number(6)}, result_), S_OK);
  ComPointer<IErrorInfo> error;
  EXPECT_EQ(GetErrorInfo(0, error.Receive()), S_FALSE);
}

}  // namespace
}  // namespace rdv::test
