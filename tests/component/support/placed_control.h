// A control in a test container.
#pragma once

#include <gtest/gtest.h>

#include "component/com/identifiers.h"
#include "tests/component/support/library.h"
#include "tests/component/support/test_container.h"

namespace rdv::test {

struct PlacedControl {
  explicit PlacedControl(const Profile& profile = {}) : container(profile) {
    object = library.Create<IOleObject>(IID_IOleObject);
    object->SetClientSite(container.Site());
    const auto points =
        ComPointer<IConnectionPointContainer>::From(object.Get(), IID_IConnectionPointContainer);
    points->FindConnectionPoint(kLineConfigEventsId, events.Receive());
    events->Advise(container.EventSink(), &cookie);
  }
  ~PlacedControl() { Remove(); }

  // As a host does that takes a control away.
  void Remove() {
    if (!object) return;
    events->Unadvise(cookie);
    events.Reset();
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
    object.Reset();
  }

  HRESULT Verb(LONG verb) {
    return object->DoVerb(verb, nullptr, container.Site(), 0, container.Window(), &container.place);
  }

  template <class Interface>
  ComPointer<Interface> As(REFIID iid) {
    return ComPointer<Interface>::From(object.Get(), iid);
  }

  HWND Form() {
    HWND window = nullptr;
    As<IOleInPlaceObject>(IID_IOleInPlaceObject)->GetWindow(&window);
    return window;
  }

  // A child window of the form by its identifier, at any depth.
  HWND Child(int id) {
    ChildSearch search = {id, nullptr};
    EnumChildWindows(Form(), &MatchChild, reinterpret_cast<LPARAM>(&search));
    return search.found;
  }

  struct ChildSearch {
    int id;
    HWND found;
  };

  static BOOL CALLBACK MatchChild(HWND child, LPARAM argument) {
    auto* wanted = reinterpret_cast<ChildSearch*>(argument);
    if (GetDlgCtrlID(child) != wanted->id) return TRUE;
    wanted->found = child;
    return FALSE;
  }

  Library library;
  TestContainer container;
  ComPointer<IOleObject> object;
  ComPointer<IConnectionPoint> events;
  DWORD cookie = 0;
};

}  // namespace rdv::test
