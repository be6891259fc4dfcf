// The smallest host: a window that is the container itself, through the system's atl.dll.
// Build: x86_64-w64-mingw32-g++ (for 32 bits i686-w64-mingw32-g++) -std=c++20 -municode -mwindows
// -static minimal_host.cpp -lole32 -loleaut32 -luuid
#include <windows.h>
// windows.h comes first.
#include <ocidl.h>

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
  OleInitialize(nullptr);
  const HMODULE atl = LoadLibraryExW(L"atl.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const auto initialize = FunctionOf<BOOL(WINAPI*)()>(atl, "AtlAxWinInit");
  const auto control_of = FunctionOf<HRESULT(WINAPI*)(HWND, IUnknown**)>(atl, "AtlAxGetControl");
  if (!initialize || !control_of || !initialize()) return 1;

  // The text of such a window names the control that it holds.
  const HWND window =
      CreateWindowExW(0, L"AtlAxWin", kControl, WS_OVERLAPPEDWINDOW | WS_VISIBLE | WS_CLIPCHILDREN,
                      CW_USEDEFAULT, CW_USEDEFAULT, 960, 440, nullptr, nullptr, module, nullptr);
  IUnknown* control = nullptr;
  if (!window || FAILED(control_of(window, &control))) return 2;
  SetWindowTextW(window, L"Lines of configuration 1");

  Events events(window);
  Connect(control, &events);
  IDispatch* methods = nullptr;
  control->QueryInterface(IID_PPV_ARGS(&methods));
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
  OleUninitialize();
  return shown ? 0 : 3;
}
