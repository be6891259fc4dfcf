#include "tests/component/support/library.h"

#include <gtest/gtest.h>

#include <utility>

#include "component/com/identifiers.h"
#include "tools/play/win32/box_buttons.h"

namespace rdv::test {
namespace {

constexpr int kBoxText = 0xFFFF;  // the identifier of the text in a message box

std::wstring BoxText(HWND box) {
  wchar_t text[1024] = L"";
  GetDlgItemTextW(box, kBoxText, text, 1024);
  return text;
}

std::string Narrow(const std::wstring& text) {
  return {text.begin(), text.end()};  // the boxes speak ASCII
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

BoxAnswerer* BoxAnswerer::current_ = nullptr;

BoxAnswerer::BoxAnswerer() : before_(std::exchange(current_, this)) {}

BoxAnswerer::~BoxAnswerer() {
  current_ = before_;
}

BoxWatch::BoxWatch() : hook_(SetWindowsHookExW(WH_CBT, &OnWindow, nullptr, GetCurrentThreadId())) {}

BoxWatch::~BoxWatch() {
  UnhookWindowsHookEx(hook_);
}

LRESULT CALLBACK BoxWatch::OnWindow(int code, WPARAM wparam, LPARAM lparam) {
  if (code == HCBT_ACTIVATE) {
    const auto window = reinterpret_cast<HWND>(wparam);
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    if (lstrcmpW(name, L"#32770") == 0) {
      if (BoxAnswerer::current_) {
        BoxAnswerer::current_->texts_.push_back(BoxText(window));
        play::PressInBox(window, IDOK);
      } else {
        ADD_FAILURE() << "an unexpected message box: " << Narrow(BoxText(window));
        play::PressInBox(window, IDCANCEL);
      }
    }
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

void PumpMessages() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace rdv::test
