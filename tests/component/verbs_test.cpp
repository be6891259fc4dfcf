// What a container asks of the control as an object: its verbs, and that it be told of its end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"

namespace rdv::test {
namespace {

class Verbs : public OleTest {};

bool HasTheKeyboard(PlacedControl& placed) {
  return IsChild(placed.Form(), GetFocus()) != FALSE;
}

TEST_F(Verbs, PrimaryTakesTheKeyboard) {
  PlacedControl placed;
  EXPECT_EQ(placed.Verb(OLEIVERB_PRIMARY), S_OK);
  EXPECT_TRUE(IsWindowVisible(placed.Form()));
  EXPECT_TRUE(HasTheKeyboard(placed));
}

TEST_F(Verbs, ShowPlacesTheControlAndLeavesTheKeyboardWhereItIs) {
  PlacedControl placed;
  SetFocus(placed.container.Window());
  EXPECT_EQ(placed.Verb(OLEIVERB_SHOW), S_OK);
  EXPECT_TRUE(IsWindowVisible(placed.Form()));
  EXPECT_FALSE(HasTheKeyboard(placed));
}

TEST_F(Verbs, HideTakesTheControlOutOfSightAndLeavesItInTheContainer) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_UIACTIVATE);
  const HWND form = placed.Form();
  PumpMessages();
  placed.container.TakeCalls();
  EXPECT_EQ(placed.Verb(OLEIVERB_HIDE), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(),
              testing::ElementsAre("SetActiveObject(null)", "OnUIDeactivate", "OnFocus(FALSE)"));
  EXPECT_FALSE(IsWindowVisible(form));
  EXPECT_TRUE(IsChild(placed.container.Window(), form));
  EXPECT_EQ(placed.Verb(OLEIVERB_HIDE), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(), testing::IsEmpty());
  EXPECT_EQ(placed.Verb(OLEIVERB_SHOW), S_OK);
  EXPECT_TRUE(IsWindowVisible(form));
}

TEST_F(Verbs, ThoseThatTheControlHasNoUseForDoNothing) {
  PlacedControl placed;
  constexpr LONG kProperties = -7;
  constexpr LONG kOfNoOne = -100;
  for (const LONG verb :
       {LONG{OLEIVERB_OPEN}, LONG{OLEIVERB_DISCARDUNDOSTATE}, kProperties, kOfNoOne}) {
    EXPECT_EQ(placed.Verb(verb), E_NOTIMPL) << verb;
  }
  EXPECT_THAT(placed.container.TakeCalls(), testing::IsEmpty());
}

TEST_F(Verbs, AnUnknownOneOfTheControlsOwnRunsTheFirst) {
  PlacedControl placed;
  EXPECT_EQ(placed.Verb(1), OLEOBJ_S_INVALIDVERB);
  EXPECT_TRUE(HasTheKeyboard(placed));
}

struct Listed {
  LONG number;
  std::wstring name;
  DWORD flags;
  DWORD attributes;
  bool operator==(const Listed&) const = default;
};

std::vector<Listed> All(IEnumOLEVERB& verbs) {
  std::vector<Listed> all;
  for (OLEVERB verb = {}; verbs.Next(1, &verb, nullptr) == S_OK;) {
    EXPECT_NE(verb.lpszVerbName, nullptr);
    all.push_back({verb.lVerb, verb.lpszVerbName, verb.fuFlags, verb.grfAttribs});
    CoTaskMemFree(verb.lpszVerbName);
  }
  return all;
}

const std::vector<Listed> kOwnVerbs = {
    {OLEIVERB_PRIMARY, L"&Edit", MF_STRING, OLEVERBATTRIB_ONCONTAINERMENU}};

TEST_F(Verbs, AreListedAsTheyAreRegistered) {
  PlacedControl placed;
  ASSERT_EQ(placed.library.Register(), S_OK);
  ComPointer<IEnumOLEVERB> registered;
  EXPECT_EQ(OleRegEnumVerbs(kLineConfigClassId, registered.Receive()), S_OK);
  if (registered) {
    EXPECT_EQ(All(*registered.Get()), kOwnVerbs);
  }
  ComPointer<IEnumOLEVERB> verbs;
  EXPECT_EQ(placed.object->EnumVerbs(verbs.Receive()), S_OK);
  if (verbs) {
    EXPECT_EQ(All(*verbs.Get()), kOwnVerbs);
  }
  EXPECT_EQ(placed.library.Unregister(), S_OK);
}

TEST_F(Verbs, AreListedWithoutRegistration) {
  PlacedControl placed;
  placed.library.Unregister();
  ComPointer<IEnumOLEVERB> verbs;
  ASSERT_EQ(placed.object->EnumVerbs(verbs.Receive()), S_OK);
  ComPointer<IEnumOLEVERB> copy;
  ASSERT_EQ(verbs->Clone(copy.Receive()), S_OK);
  EXPECT_EQ(All(*verbs.Get()), kOwnVerbs);
  EXPECT_EQ(All(*verbs.Get()), std::vector<Listed>());
  EXPECT_EQ(verbs->Reset(), S_OK);
  EXPECT_EQ(verbs->Skip(1), S_OK);
  EXPECT_EQ(verbs->Skip(1), S_FALSE);
  placed.Remove();
  EXPECT_EQ(All(*copy.Get()), kOwnVerbs);
}

class AdviseSink final : public IAdviseSink {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IAdviseSink;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
  STDMETHODIMP_(ULONG) Release() override { return --references; }
  STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {}
  STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override {}
  STDMETHODIMP_(void) OnRename(IMoniker*) override {}
  STDMETHODIMP_(void) OnSave() override {}
  STDMETHODIMP_(void) OnClose() override { ++closed; }

  ULONG references = 1;
  int closed = 0;
};

TEST_F(Verbs, ClosingIsToldToThoseWhoAsked) {
  AdviseSink told;
  AdviseSink left;
  PlacedControl placed;
  placed.Verb(OLEIVERB_SHOW);
  DWORD connection = 0;
  DWORD other = 0;
  EXPECT_EQ(placed.object->Advise(&told, &connection), S_OK);
  EXPECT_EQ(placed.object->Advise(&left, &other), S_OK);
  EXPECT_EQ(placed.object->Unadvise(other), S_OK);
  EXPECT_EQ(left.references, 1u);
  EXPECT_EQ(placed.object->Close(OLECLOSE_NOSAVE), S_OK);
  EXPECT_EQ(told.closed, 1);
  EXPECT_EQ(left.closed, 0);
  placed.Remove();
  EXPECT_EQ(told.references, 1u);
}

TEST_F(Verbs, WithoutAnAskerThereIsNothingToUndo) {
  PlacedControl placed;
  EXPECT_EQ(placed.object->Unadvise(1), OLE_E_NOCONNECTION);
  EXPECT_EQ(placed.object->Advise(nullptr, nullptr), E_POINTER);
}

}  // namespace
}  // namespace rdv::test
