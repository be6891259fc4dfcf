// The control inside a container's window: activation, place, focus and keys.
#pragma once

#include "component/com_pointer.h"
#include "component/part.h"

namespace rdv {

class InPlace final : public Part<IOleInPlaceObject, IOleInPlaceActiveObject> {
 public:
  using Part::Part;

  enum class Activity {
    None,
    Visible,        // lies in the container's window
    UserInterface,  // has the container's keyboard too
  };

  // Raises the activity; never lowers it. In a form designer no more than Visible is reached.
  HRESULT Activate(Activity wanted);
  // Down to None, telling the container of every step.
  void Deactivate();
  Activity Current() const { return activity_; }

  // The focus has come into the control's windows or left them.
  void OnFocusChange(bool inside);
  // Around a message box: the container disables or enables its own windows.
  void OnModal(bool modal);

  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL enter) override;

  STDMETHODIMP InPlaceDeactivate() override;
  STDMETHODIMP UIDeactivate() override;
  STDMETHODIMP SetObjectRects(LPCRECT place, LPCRECT clip) override;
  STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }

  STDMETHODIMP TranslateAccelerator(LPMSG message) override;
  STDMETHODIMP OnFrameWindowActivate(BOOL /*activate*/) override { return S_OK; }
  STDMETHODIMP OnDocWindowActivate(BOOL /*activate*/) override { return S_OK; }
  STDMETHODIMP ResizeBorder(LPCRECT /*border*/, IOleInPlaceUIWindow* /*window*/,
                            BOOL /*frame_window*/) override {
    return S_OK;
  }
  STDMETHODIMP EnableModeless(BOOL /*enable*/) override { return S_OK; }

 private:
  HRESULT BecomeVisible();
  HRESULT BecomeUserInterface(bool take_focus);

  Activity activity_ = Activity::None;
  ComPointer<IOleInPlaceSite> site_;
  ComPointer<IOleInPlaceFrame> frame_;
  ComPointer<IOleInPlaceUIWindow> document_;
};

}  // namespace rdv
