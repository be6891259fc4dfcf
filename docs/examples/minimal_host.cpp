// The smallest host: a window that is the container itself, through the system's atl.dll. It needs
// the registered control and nothing else.
//
// With mingw (for 32 bits i686-w64-mingw32-g++), on one line:
//   x86_64-w64-mingw32-g++ -std=c++20 -municode -mwindows -static minimal_host.cpp
//       -o minimal_host.exe -lole32 -loleaut32 -luuid
// With MSVC, in the command prompt of the word size wanted, on one line:
//   cl /std:c++20 /EHsc minimal_host.cpp
//       /link /SUBSYSTEM:WINDOWS user32.lib ole32.lib oleaut32.lib uuid.lib
#include <windows.h>
// windows.h comes first.
#include <ocidl.h>

#include <cstdio>

namespace {

constexpr const wchar_t* kControl = L"TLV_RDV_Line_Config.ucRDVLineConfig";
constexpr IID kEvents = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x03}};
constexpr DISPID kRemoveMe = 1;
constexpr UINT kForwardMessage = 0x037F;  // WM_FORWARDMSG: "AtlAxWin" offers it to the control

// Receives the control's events. It lives as long as the program: references are not counted.
class Events final : public IDispatch {
 public:
  explicit Events(HWND window) : window_(window) {}
  virtual ~Events() = default;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == kEvents;
    *object = known ? static_cast<IDispatch*>(this) : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 1; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    // The control is still at work in here: take it away later, with a message of its own.
    if (id == kRemoveMe) PostMessageW(window_, WM_CLOSE, 0, 0);
    return S_OK;
  }

 private:
  HWND window_;
};

// Tells why the program ends, with the result code and the system's text for it.
int EndWith(const wchar_t* what, HRESULT result) {
  wchar_t reason[256] = L"";
  FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                 static_cast<DWORD>(result), 0, reason, 256, nullptr);
  wchar_t text[512];
  swprintf(text, 512, L"%ls\n\nResult code %08lX: %ls", what, static_cast<unsigned long>(result),
           reason);
  MessageBoxW(nullptr, text, L"Minimal host", MB_ICONERROR);
  return 1;
}

// Whether the control can be made in this process at all: a window that is its container does not
// say why it cannot.
HRESULT TryToCreate() {
  CLSID id = {};
  HRESULT result = CLSIDFromProgID(kControl, &id);
  IUnknown* control = nullptr;
  if (SUCCEEDED(result))
    result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control));
  if (control) control->Release();
  return result;
}

// Calls ShowControl(configuration): True when the lines are shown. The control itself has told the
// user of a failure.
bool ShowControl(IDispatch* control, SHORT configuration) {
  wchar_t name[] = L"ShowControl";
  LPOLESTR names[] = {name};
  DISPID id = 0;
  if (FAILED(control->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) return false;
  VARIANT argument = {};
  argument.vt = VT_I2;
  argument.iVal = configuration;
  DISPPARAMS arguments = {&argument, nullptr, 1, 0};
  VARIANT result = {};
  const HRESULT called = control->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                         &arguments, &result, nullptr, nullptr);
  return SUCCEEDED(called) && result.vt == VT_BOOL && result.boolVal != VARIANT_FALSE;
}

void Connect(IUnknown* control, Events* events) {
  IConnectionPointContainer* container = nullptr;
  if (FAILED(control->QueryInterface(IID_PPV_ARGS(&container)))) return;
  IConnectionPoint* point = nullptr;
  if (SUCCEEDED(container->FindConnectionPoint(kEvents, &point))) {
    DWORD cookie = 0;
    point->Advise(events, &cookie);
    point->Release();
  }
  container->Release();
}

template <typename Function>
Function FunctionOf(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace

int WINAPI wWinMain(HINSTANCE module, HINSTANCE, PWSTR, int) {
  // A thread that is a single-threaded apartment: the control refuses every other.
  HRESULT result = OleInitialize(nullptr);
  if (FAILED(result)) return EndWith(L"COM cannot be initialised.", result);
  result = TryToCreate();
  if (FAILED(result)) {
    return EndWith(
        L"The control cannot be created. Register TLV_RDV_Line_Config.dll of this program's word "
        L"size: regsvr32 TLV_RDV_Line_Config.dll",
        result);
  }
  const HMODULE atl = LoadLibraryExW(L"atl.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (!atl) return EndWith(L"The system has no atl.dll.", HRESULT_FROM_WIN32(GetLastError()));
  const auto initialize = FunctionOf<BOOL(WINAPI*)()>(atl, "AtlAxWinInit");
  const auto control_of = FunctionOf<HRESULT(WINAPI*)(HWND, IUnknown**)>(atl, "AtlAxGetControl");
  if (!initialize || !control_of || !initialize())
    return EndWith(L"The system's atl.dll offers no container.", E_FAIL);

  // The text of such a window names the control that it holds.
  const HWND window =
      CreateWindowExW(0, L"AtlAxWin", kControl, WS_OVERLAPPEDWINDOW | WS_VISIBLE | WS_CLIPCHILDREN,
                      CW_USEDEFAULT, CW_USEDEFAULT, 960, 500, nullptr, nullptr, module, nullptr);
  if (!window) return EndWith(L"The window was not made.", HRESULT_FROM_WIN32(GetLastError()));
  IUnknown* control = nullptr;
  result = control_of(window, &control);
  if (FAILED(result)) return EndWith(L"The window holds no control.", result);
  SetWindowTextW(window, L"Lines of configuration 1");

  Events events(window);
  Connect(control, &events);
  IDispatch* methods = nullptr;
  control->QueryInterface(IID_PPV_ARGS(&methods));
  // Of a failure the control itself has told the user.
  const bool shown = methods && ShowControl(methods, 1);
  if (methods) methods->Release();
  control->Release();

  MSG message = {};
  while (shown && IsWindow(window) && GetMessageW(&message, nullptr, 0, 0) > 0) {
    // The control sees every message first: Tab and the arrow keys do not work in it otherwise.
    if (SendMessageW(window, kForwardMessage, 0, reinterpret_cast<LPARAM>(&message))) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  if (IsWindow(window)) DestroyWindow(window);
  OleUninitialize();
  return shown ? 0 : 3;
}
