// A container that writes down what the control asks of it, and can be made to withhold things.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "component/com/com_pointer.h"

namespace rdv::test {

// What a container offers beyond what none can do without.
struct Profile {
  bool ambients = true;      // answers for ambient properties
  bool control_site = true;  // IOleControlSite
  bool frame = true;         // a frame window in the window context
  bool user_mode = true;     // false: a form designer
  bool allows_activation = true;
  bool visible = true;  // the container's window
};

class TestContainer final : public IOleClientSite,
                            public IOleInPlaceSite,
                            public IOleInPlaceFrame,
                            public IOleControlSite,
                            public IDispatch {
 public:
  explicit TestContainer(const Profile& profile);
  ~TestContainer();

  HWND Window() const { return window_; }
  IOleClientSite* Site() { return this; }
  IDispatch* EventSink() { return this; }
  IOleInPlaceActiveObject* ActiveObject() const { return active_object_.Get(); }
  RECT place = {0, 0, 940, 400};
  bool ui_dead = false;     // the ambient property
  HWND place_in = nullptr;  // instead of the container's window

  // The calls since the last time, in their order.
  std::vector<std::string> TakeCalls() { return std::exchange(calls_, {}); }
  int Events() const { return events_; }
  std::function<void()> on_event;

  // References that the control holds.
  ULONG ReferencesLeft() const { return references_ - 1; }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override { return --references_; }

  STDMETHODIMP SaveObject() override { return Note("SaveObject"); }
  STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
  STDMETHODIMP GetContainer(IOleContainer** container) override {
    *container = nullptr;
    return E_NOINTERFACE;
  }
  STDMETHODIMP ShowObject() override { return Note("ShowObject"); }
  STDMETHODIMP OnShowWindow(BOOL) override { return Note("OnShowWindow"); }
  STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

  STDMETHODIMP CanInPlaceActivate() override;
  STDMETHODIMP OnInPlaceActivate() override { return Note("OnInPlaceActivate"); }
  STDMETHODIMP OnUIActivate() override { return Note("OnUIActivate"); }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                LPRECT rectangle, LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
  STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
  STDMETHODIMP OnUIDeactivate(BOOL) override { return Note("OnUIDeactivate"); }
  STDMETHODIMP OnInPlaceDeactivate() override { return Note("OnInPlaceDeactivate"); }
  STDMETHODIMP DiscardUndoState() override { return E_NOTIMPL; }
  STDMETHODIMP DeactivateAndUndo() override { return E_NOTIMPL; }
  STDMETHODIMP OnPosRectChange(LPCRECT) override { return Note("OnPosRectChange"); }

  STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return S_OK; }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override;
  STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
  STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
  STDMETHODIMP RemoveMenus(HMENU) override { return E_NOTIMPL; }
  STDMETHODIMP SetStatusText(LPCOLESTR) override { return S_OK; }
  STDMETHODIMP EnableModeless(BOOL enable) override {
    return Note(enable ? "EnableModeless(TRUE)" : "EnableModeless(FALSE)");
  }
  STDMETHODIMP TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

  STDMETHODIMP OnControlInfoChanged() override { return S_OK; }
  STDMETHODIMP LockInPlaceActive(BOOL) override { return E_NOTIMPL; }
  STDMETHODIMP GetExtendedControl(IDispatch**) override { return E_NOTIMPL; }
  STDMETHODIMP TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
  STDMETHODIMP TranslateAccelerator(MSG*, DWORD) override {
    Note("TranslateAccelerator");
    return S_FALSE;
  }
  STDMETHODIMP OnFocus(BOOL gained) override {
    return Note(gained ? "OnFocus(TRUE)" : "OnFocus(FALSE)");
  }
  STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }

  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result,
                      EXCEPINFO*, UINT*) override;

 private:
  HRESULT Note(const char* call) {
    calls_.emplace_back(call);
    return S_OK;
  }

  const Profile profile_;
  HWND window_;
  ULONG references_ = 1;
  int events_ = 0;
  std::vector<std::string> calls_;
  ComPointer<IOleInPlaceActiveObject> active_object_;
};

}  // namespace rdv::test
