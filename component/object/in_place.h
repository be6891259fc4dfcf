// The control inside a container's window: activation, place, focus and keys.
#pragma once

#include <memory>

#include "component/com/com_pointer.h"
#include "component/object/part.h"

namespace rdv {

// A container may call back from inside every call that it gets: it may deactivate, close or
// release the control, or activate it further. Every step is therefore looked at again after each
// call, and a step that the container has undone meanwhile ends there.
class InPlace final : public Part<IOleInPlaceObject, IOleInPlaceActiveObject> {
 public:
  using Part::Part;

  enum class Activity {
    None,
    Activating,     // the container is being asked for a place
    Visible,        // lies in the container's window
    UserInterface,  // has the container's keyboard too
  };
  // Which tab stop gets the focus when the keyboard comes to the control.
  enum class Entry { AtTheStart, AtTheEnd };

  // Raises the activity; never lowers it. No more than Visible is reached where the
  // container lets the user do nothing.
  HRESULT Activate(Activity wanted, Entry entry = Entry::AtTheStart);
  // Down to Visible, and out of sight: the window stays, and the next activation shows it.
  HRESULT Hide();
  // Down to None, telling the container of every step.
  void Deactivate();
  // When the container has destroyed its window, and ours in it, without a word.
  void LeaveDestroyedWindows();
  // The control lies in a container's window that still exists.
  bool Placed() const;

  // The focus is in the control's windows, where the user has just put it, or is not.
  void OnFocus(bool inside);
  // For a message box: the container's windows are disabled until the result goes. Containers count
  // both, so it is the same frame that is told, wherever the control lies by then.
  std::shared_ptr<void> DisableHost();

  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL enter) override;

  STDMETHODIMP InPlaceDeactivate() override;
  STDMETHODIMP UIDeactivate() override;
  STDMETHODIMP SetObjectRects(LPCRECT place, LPCRECT clip) override;
  STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }

  STDMETHODIMP TranslateAccelerator(LPMSG message) override;
  STDMETHODIMP OnFrameWindowActivate(BOOL activate) override { return OnActivate(activate); }
  STDMETHODIMP OnDocWindowActivate(BOOL activate) override { return OnActivate(activate); }
  STDMETHODIMP ResizeBorder(LPCRECT /*border*/, IOleInPlaceUIWindow* /*window*/,
                            BOOL /*frame_window*/) override {
    return S_OK;
  }
  STDMETHODIMP EnableModeless(BOOL /*enable*/) override { return S_OK; }

 private:
  struct Surroundings {
    HWND parent = nullptr;
    RECT place = {};
    RECT clip = {};
    ComPointer<IOleInPlaceFrame> frame;
    ComPointer<IOleInPlaceUIWindow> document;
  };

  HRESULT BecomeVisible();
  HRESULT AskForPlace(IOleInPlaceSite& site, Surroundings& surroundings);
  HRESULT BecomeUserInterface();
  void TakeFocus(Entry entry);
  // In a window of the same top-level window that is not the control's.
  bool HostHasFocus() const;
  HRESULT OnActivate(BOOL activate);
  void TellFocus(bool inside);
  void TellWindows(IOleInPlaceActiveObject* active_object, Activity meanwhile);

  Activity activity_ = Activity::None;
  Activity wanted_ = Activity::None;  // the most that was asked for while Activating
  bool asking_ = false;               // a call of BecomeVisible is under way
  bool leaving_ = false;              // a call of Deactivate is under way
  bool focus_told_ = false;           // the container has heard that the focus is inside
  ComPointer<IOleInPlaceSite> site_;
  ComPointer<IOleInPlaceFrame> frame_;
  ComPointer<IOleInPlaceUIWindow> document_;
};

}  // namespace rdv
