// A control in a strict container, and the steps that a container goes through with it.
#pragma once

#include <gtest/gtest.h>

#include "component/com/identifiers.h"
#include "tests/component/support/library.h"
#include "tests/component/support/strict_container.h"

namespace rdv::test {

class StrictHost {
 public:
  explicit StrictHost(Offers offers) : container(std::move(offers)) {
    object = library.Create<IOleObject>(IID_IOleObject);
  }

  template <class Interface>
  ComPointer<Interface> As(REFIID iid) const {
    return ComPointer<Interface>::From(object.Get(), iid);
  }
  ComPointer<IOleInPlaceObject> InPlace() const {
    return As<IOleInPlaceObject>(IID_IOleInPlaceObject);
  }
  ComPointer<IOleControl> Control() const { return As<IOleControl>(IID_IOleControl); }
  ComPointer<IConnectionPoint> Point(REFIID iid) const {
    ComPointer<IConnectionPoint> point;
    const auto points = As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    if (points) points->FindConnectionPoint(iid, point.Receive());
    return point;
  }

  HRESULT Verb(LONG verb, MSG* message = nullptr) const {
    return object->DoVerb(verb, message, nullptr, 0, container.Window(),
                          &container.Offered().place);
  }
  // Of the control's form, while it is placed.
  HWND Form() const {
    HWND form = nullptr;
    if (const auto place = InPlace()) place->GetWindow(&form);
    return form;
  }
  HWND Child(int id) const {
    Search search = {id, nullptr};
    EnumChildWindows(Form(), &Match, reinterpret_cast<LPARAM>(&search));
    return search.found;
  }
  HRESULT Press(WPARAM key) const {
    MSG event = {};
    event.hwnd = GetFocus();
    event.message = WM_KEYDOWN;
    event.wParam = key;
    return As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)->TranslateAccelerator(&event);
  }

  struct Search {
    int id;
    HWND found;
  };
  static BOOL CALLBACK Match(HWND child, LPARAM argument) {
    auto* wanted = reinterpret_cast<Search*>(argument);
    if (GetDlgCtrlID(child) == wanted->id) wanted->found = child;
    return wanted->found == nullptr;
  }

  Library library;
  StrictContainer container;
  ComPointer<IOleObject> object;
  DWORD event_cookie = 0;
  DWORD property_cookie = 0;
};

struct Step {
  const char* what;
  std::function<void(StrictHost&)> act;
  std::vector<std::string> calls;      // that the container gets, in this order
  std::vector<std::string> questions;  // that it is asked, at least once each
};

// Ends at the first step that fails.
inline void Walk(StrictHost& host, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, step.what);
    host.container.Announce(step.calls, step.questions);
    step.act(host);
    PumpMessages();
    host.container.CheckAllCame();
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace rdv::test
