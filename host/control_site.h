// The place of one control on a window: what the control sees of its container.
#pragma once

#include <functional>

#include "host/com.h"

namespace rdvhost {

// The interfaces that a container must offer for a control to live in one of its windows, and the
// sink for the control's events. The site does not own the control; it holds its active object
// while the control has the keyboard.
class ControlSite final : public IOleClientSite,
                          public IOleInPlaceSite,
                          public IOleInPlaceFrame,
                          public IOleControlSite,
                          public IDispatch {
 public:
  // The control lies in `window`, in the rectangle that `place` answers.
  ControlSite(HWND window, std::function<RECT()> place) : window_(window), place_(place) {}

  // The control asks to be taken away. It is still at work when it asks: the handler should only
  // make a note (post a message) and let it return. May come twice.
  std::function<void()> on_remove_me;

  IOleInPlaceActiveObject* ActiveObject() const { return active_object_.Get(); }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override;

  // IOleClientSite
  STDMETHODIMP SaveObject() override { return S_OK; }
  STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
  STDMETHODIMP GetContainer(IOleContainer** container) override;
  STDMETHODIMP ShowObject() override { return S_OK; }
  STDMETHODIMP OnShowWindow(BOOL /*show*/) override { return S_OK; }
  STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

  // IOleWindow, of the site and of the frame
  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL /*enter*/) override { return E_NOTIMPL; }

  // IOleInPlaceSite
  STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
  STDMETHODIMP OnInPlaceActivate() override { return S_OK; }
  STDMETHODIMP OnUIActivate() override { return S_OK; }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                LPRECT place, LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
  STDMETHODIMP Scroll(SIZE /*distance*/) override { return E_NOTIMPL; }
  STDMETHODIMP OnUIDeactivate(BOOL /*undoable*/) override { return S_OK; }
  STDMETHODIMP OnInPlaceDeactivate() override { return S_OK; }
  STDMETHODIMP DiscardUndoState() override { return E_NOTIMPL; }
  STDMETHODIMP DeactivateAndUndo() override { return E_NOTIMPL; }
  STDMETHODIMP OnPosRectChange(LPCRECT /*place*/) override { return S_OK; }

  // IOleInPlaceUIWindow and IOleInPlaceFrame
  STDMETHODIMP GetBorder(LPRECT /*border*/) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS /*widths*/) override {
    return INPLACE_E_NOTOOLSPACE;
  }
  STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS /*widths*/) override { return S_OK; }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) override;
  STDMETHODIMP InsertMenus(HMENU /*menu*/, LPOLEMENUGROUPWIDTHS /*widths*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP SetMenu(HMENU /*menu*/, HOLEMENU /*ole_menu*/, HWND /*active*/) override {
    return S_OK;
  }
  STDMETHODIMP RemoveMenus(HMENU /*menu*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetStatusText(LPCOLESTR /*text*/) override { return S_OK; }
  STDMETHODIMP EnableModeless(BOOL /*enable*/) override { return S_OK; }
  STDMETHODIMP TranslateAccelerator(LPMSG /*message*/, WORD /*command*/) override {
    return S_FALSE;
  }

  // IOleControlSite
  STDMETHODIMP OnControlInfoChanged() override { return S_OK; }
  STDMETHODIMP LockInPlaceActive(BOOL /*lock*/) override { return E_NOTIMPL; }
  STDMETHODIMP GetExtendedControl(IDispatch** control) override;
  STDMETHODIMP TransformCoords(POINTL* himetric, POINTF* container, DWORD flags) override;
  STDMETHODIMP TranslateAccelerator(MSG* message, DWORD modifiers) override;
  STDMETHODIMP OnFocus(BOOL /*gained*/) override { return S_OK; }
  STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }

  // IDispatch: the ambient properties, by their standard numbers, and the control's events
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** information) override;
  STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags,
                      DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                      UINT* wrong_argument) override;

 private:
  ~ControlSite() = default;

  ULONG references_ = 1;
  const HWND window_;
  const std::function<RECT()> place_;
  Com<IOleInPlaceActiveObject> active_object_;
};

}  // namespace rdvhost
