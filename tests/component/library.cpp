#include "tests/component/library.h"

#include <gtest/gtest.h>

#include "component/identifiers.h"

namespace rdv::test {
namespace {

int boxes_answered = 0;

LRESULT CALLBACK AnswerBox(int code, WPARAM wparam, LPARAM lparam) {
  if (code == HCBT_ACTIVATE) {
    const auto window = reinterpret_cast<HWND>(wparam);
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    if (lstrcmpW(name, L"#32770") == 0) {
      ++boxes_answered;
      PostMessageW(window, WM_COMMAND, IDOK, 0);
    }
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

}  // namespace

Library::Library() : module_(LoadLibraryW(Path().c_str())) {
  EXPECT_NE(module_, nullptr) << "the library is not beside the test program";
}

Library::~Library() {
  FreeLibrary(module_);
}

std::wstring Library::Path() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring program = path;
  return program.substr(0, program.find_last_of(L'\\') + 1) + L"TLV_RDV_Line_Config.dll";
}

HRESULT Library::Call(const char* name) const {
  using Function = HRESULT(WINAPI*)();
  const auto function =
      reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  return function ? function() : E_NOTIMPL;
}

HRESULT Library::GetClassObject(REFCLSID class_id, REFIID iid, void** object) const {
  using Function = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
  const auto function = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(module_, "DllGetClassObject")));
  return function ? function(class_id, iid, object) : E_NOTIMPL;
}

void Library::CreateUntyped(REFIID iid, void** object) const {
  ComPointer<IClassFactory> factory;
  ASSERT_EQ(GetClassObject(kLineConfigClassId, IID_IClassFactory, factory.ReceiveUntyped()), S_OK);
  ASSERT_EQ(factory->CreateInstance(nullptr, iid, object), S_OK);
}

BoxAnswerer::BoxAnswerer()
    : hook_(SetWindowsHookExW(WH_CBT, &AnswerBox, nullptr, GetCurrentThreadId())) {
  boxes_answered = 0;
}

BoxAnswerer::~BoxAnswerer() {
  UnhookWindowsHookEx(hook_);
}

int BoxAnswerer::Count() {
  return boxes_answered;
}

void PumpMessages() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace rdv::test
