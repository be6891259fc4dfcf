// The container as the control sees it. Every part of it may be missing.
#pragma once

#include "component/com/com_pointer.h"
#include "widgets/win32/form_window.h"

namespace rdv {

class Container {
 public:
  // Calls the container; what it sets from inside that call is the newer site.
  void SetSite(IOleClientSite* site);
  // References of the caller's own: the container may take its site away during a call to it.
  ComPointer<IOleClientSite> Site() const { return site_; }
  template <class Interface>
  ComPointer<Interface> SiteAs(REFIID iid) const {
    return ComPointer<Interface>::From(site_.Get(), iid);
  }

  // False in a form designer. True where the container does not say.
  bool UserMode() const;
  // The user may act on the control: not in a form designer, and not while the container holds all
  // controls still, as one does whose program is halted by its debugger.
  bool TakesInput() const;
  // Font and colours that the container proposes.
  win32::Appearance Appearance() const;

  void TellFocus(bool gained) const;
  // What GetControlInfo answers is another thing now.
  void TellControlInfoChanged() const;
  // True when the container has used the key that the control does not want.
  bool OfferKey(MSG* message) const;

  // What a container has told in one call instead of being asked.
  void SetQuickAmbients(const QACONTAINER& ambients);

 private:
  bool GetAmbient(DISPID property, VARTYPE type, VARIANT& value) const;
  bool GetTruth(DISPID property, bool otherwise) const;
  void TakeFont(IFont* font, win32::Appearance& appearance) const;

  int site_changes_ = 0;
  ComPointer<IOleClientSite> site_;
  ComPointer<IDispatch> ambients_;
  ComPointer<IOleControlSite> control_site_;
  std::optional<bool> quick_user_mode_;
  bool quick_ui_dead_ = false;
  ComPointer<IFont> quick_font_;
  std::optional<OLE_COLOR> quick_background_;
  std::optional<OLE_COLOR> quick_text_color_;
};

}  // namespace rdv
