// What a host is told when the control cannot be made.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "component/com/boundary.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"

namespace rdv::test {
namespace {

// Refuses every window of a class, without a word about why, as hooks do.
class RefusedWindows {
 public:
  explicit RefusedWindows(const wchar_t* window_class)
      : hook_(SetWindowsHookExW(WH_CBT, &OnWindow, nullptr, GetCurrentThreadId())) {
    refused_ = window_class;
    count_ = 0;
  }
  RefusedWindows(const RefusedWindows&) = delete;
  RefusedWindows& operator=(const RefusedWindows&) = delete;
  ~RefusedWindows() { UnhookWindowsHookEx(hook_); }
  int Count() const { return count_; }

 private:
  static LRESULT CALLBACK OnWindow(int code, WPARAM wparam, LPARAM lparam) {
    if (code == HCBT_CREATEWND) {
      wchar_t name[64] = L"";
      GetClassNameW(reinterpret_cast<HWND>(wparam), name, 64);
      if (lstrcmpiW(name, refused_) == 0) {
        ++count_;
        return 1;
      }
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
  }

  static inline const wchar_t* refused_ = nullptr;
  static inline int count_ = 0;
  const HHOOK hook_;
};

// As the caller of a method asks for it.
struct ErrorReport {
  ErrorReport() {
    ComPointer<IErrorInfo> error;
    if (GetErrorInfo(0, error.Receive()) != S_OK) return;
    there = true;
    description = Take(*error.Get(), &IErrorInfo::GetDescription);
    source = Take(*error.Get(), &IErrorInfo::GetSource);
    help_file = Take(*error.Get(), &IErrorInfo::GetHelpFile);
    error->GetHelpContext(&help_context);
    error->GetGUID(&of);
  }

  static std::wstring Take(IErrorInfo& error, HRESULT (STDMETHODCALLTYPE IErrorInfo::*get)(BSTR*)) {
    BSTR text = nullptr;
    EXPECT_EQ((error.*get)(&text), S_OK);
    std::wstring taken = text ? std::wstring(text, SysStringLen(text)) : std::wstring();
    SysFreeString(text);
    return taken;
  }

  bool there = false;
  std::wstring description;
  std::wstring source;
  std::wstring help_file;
  DWORD help_context = 0;
  GUID of = {};
};

constexpr HRESULT ControlError(int number) {
  return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
}

class Failures : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    control_ = library_.Create<LineConfigInterface>(kLineConfigInterfaceId);
  }

  HRESULT CallByTable() {
    VARIANT result;
    VariantInit(&result);
    return control_->AssignIndextoDefaultBox(6, 6, &result);
  }

  HRESULT CallByName(EXCEPINFO* exception) {
    std::wstring name = L"AssignIndextoDefaultBox";
    LPOLESTR names[] = {name.data()};
    DISPID method = 0;
    EXPECT_EQ(control_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &method), S_OK);
    std::vector<VARIANT> arguments(2);
    for (VARIANT& argument : arguments) {
      argument.vt = VT_I2;
      argument.iVal = 6;
    }
    DISPPARAMS parameters = {arguments.data(), nullptr, 2, 0};
    return control_->Invoke(method, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                            nullptr, exception, nullptr);
  }

  Library library_;
  ComPointer<LineConfigInterface> control_;
};

TEST_F(Failures, OfAnyWindowHaveANumberAndDoNotSpoilTheNextAttempt) {
  for (const wchar_t* window_class :
       {L"TLV_RDV_Line_Config.Parking", L"TLV_RDV_Line_Config.Form", L"TLV_RDV_Line_Config.Frame",
        L"SysListView32", L"COMBOBOX", L"EDIT", L"BUTTON"}) {
    SCOPED_TRACE(testing::Message()
                 << "without windows of the class "
                 << std::string(window_class, window_class + lstrlenW(window_class)));
    {
      const RefusedWindows refused(window_class);
      // The second time the window classes are registered already.
      for (int attempt = 1; attempt <= 2; ++attempt) {
        // Which number depends on the class: the system may say why by itself.
        const HRESULT result = CallByTable();
        EXPECT_TRUE(FAILED(result));
        EXPECT_EQ(HRESULT_FACILITY(result), FACILITY_CONTROL);
        EXPECT_NE(HRESULT_CODE(result), 0);
        EXPECT_GE(refused.Count(), attempt);
        const ErrorReport report;
        EXPECT_TRUE(report.there);
        EXPECT_NE(report.description, L"");
      }
    }
    EXPECT_EQ(CallByTable(), S_OK);
    EXPECT_FALSE(ErrorReport().there);
    control_ = library_.Create<LineConfigInterface>(kLineConfigInterfaceId);
  }
  control_.Reset();
  EXPECT_EQ(library_.CanUnloadNow(), S_OK);
}

TEST_F(Failures, AreReportedWithALineOfTextAndTheProductAsSource) {
  const RefusedWindows refused(L"SysListView32");
  ASSERT_EQ(CallByTable(), ControlError(ERROR_CAN_NOT_COMPLETE));
  const ErrorReport report;
  ASSERT_TRUE(report.there);
  EXPECT_NE(report.description, L"");
  EXPECT_EQ(report.description.find_first_of(L"\r\n"), std::wstring::npos);
  EXPECT_EQ(report.source, L"TLV_RDV_Line_Config");
  // There is no help to send the user to.
  EXPECT_EQ(report.help_file, L"");
  EXPECT_EQ(report.help_context, 0u);
  EXPECT_EQ(report.of, kLineConfigInterfaceId);
}

TEST_F(Failures, OfACallByNameComeWithTheCall) {
  const RefusedWindows refused(L"SysListView32");
  ASSERT_EQ(CallByTable(), ControlError(ERROR_CAN_NOT_COMPLETE));
  const ErrorReport by_table;
  EXCEPINFO exception = {};
  ASSERT_EQ(CallByName(&exception), DISP_E_EXCEPTION);
  if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
  EXPECT_EQ(exception.wCode, 0);
  EXPECT_EQ(exception.scode, ControlError(ERROR_CAN_NOT_COMPLETE));
  EXPECT_EQ(exception.bstrDescription ? exception.bstrDescription : L"", by_table.description);
  EXPECT_EQ(exception.bstrSource ? exception.bstrSource : L"", by_table.source);
  EXPECT_EQ(exception.bstrHelpFile ? exception.bstrHelpFile : L"", by_table.help_file);
  EXPECT_EQ(exception.dwHelpContext, 0u);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
}

TEST_F(Failures, OfACallByNameWithoutAPlaceForItsExceptionAreToldToo) {
  const RefusedWindows refused(L"SysListView32");
  EXPECT_EQ(CallByName(nullptr), DISP_E_EXCEPTION);
}

TEST_F(Failures, OfCallsWithoutAPlaceForTheResultAreReported) {
  for (int method = 0; method < 2; ++method) {
    EXPECT_EQ(method == 0 ? control_->ShowControl(1, nullptr)
                          : control_->AssignIndextoDefaultBox(6, 6, nullptr),
              E_POINTER);
    const ErrorReport report;
    EXPECT_TRUE(report.there);
    EXPECT_NE(report.description, L"");
    EXPECT_EQ(report.description.find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_EQ(report.source, L"TLV_RDV_Line_Config");
    EXPECT_EQ(report.of, kLineConfigInterfaceId);
  }
}

TEST_F(Failures, OfAnEarlierCallAreNotTakenForThisOne) {
  ASSERT_EQ(control_->ShowControl(1, nullptr), E_POINTER);
  EXPECT_EQ(CallByTable(), S_OK);
  EXPECT_FALSE(ErrorReport().there);
  const BoxAnswerer boxes;  // without a database, loading ends with a message
  ASSERT_EQ(control_->ShowControl(1, nullptr), E_POINTER);
  VARIANT_BOOL shown = VARIANT_FALSE;
  EXPECT_EQ(control_->ShowControl(1, &shown), S_OK);
  EXPECT_FALSE(ErrorReport().there);
}

TEST_F(Failures, OfWhateverKindAreReported) {
  struct Unknown {};
  const std::pair<HRESULT, std::function<void()>> failures[] = {
      {E_OUTOFMEMORY, [] { throw std::bad_alloc(); }}, {E_UNEXPECTED, [] { throw Unknown(); }}};
  for (const auto& [result, fail] : failures) {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(AtBoundary([&] {
                fail();
                return S_OK;
              }),
              result);
    const ErrorReport report;
    EXPECT_TRUE(report.there);
    EXPECT_NE(report.description, L"");
    EXPECT_EQ(report.source, L"TLV_RDV_Line_Config");
  }
  // One that the system has no text for.
  EXPECT_EQ(LeaveErrorInfo(ControlError(12345)), ControlError(12345));
  EXPECT_EQ(ErrorReport().description, L"Error 0x800A3039");
}

TEST_F(Failures, NeverCarryTheNumberOfSuccess) {
  const auto raised = [](int32_t number) {
    return AtBoundary([&]() -> HRESULT { throw RuntimeError(number, u"Why", u"Stand-in"); });
  };
  EXPECT_EQ(raised(0), E_FAIL);
  EXPECT_EQ(raised(0x10000), E_FAIL);
  EXPECT_EQ(raised(381), ControlError(381));
  // What another component failed with.
  EXPECT_EQ(raised(E_ACCESSDENIED), E_ACCESSDENIED);
  SetErrorInfo(0, nullptr);
}

}  // namespace
}  // namespace rdv::test
