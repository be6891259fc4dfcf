// What a container asks of the control as an object: its verbs, and that it be told of its end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/component/ole_test.h"
#include "tests/component/placed_control.h"

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

TEST_F(Verbs, HideTakesTheControlOutOfTheContainer) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_UIACTIVATE);
  const HWND form = placed.Form();
  PumpMessages();
  placed.container.TakeCalls();
  EXPECT_EQ(placed.Verb(OLEIVERB_HIDE), S_OK);
  EXPECT_THAT(
      placed.container.TakeCalls(),
      testing::ElementsAre("SetActiveObject(null)", "OnUIDeactivate", "OnInPlaceDeactivate"));
  EXPECT_FALSE(IsWindowVisible(form));
  EXPECT_FALSE(IsChild(placed.container.Window(), form));
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

TEST_F(Verbs, AreListedAsTheyAreRegistered) {
  PlacedControl placed;
  ASSERT_EQ(placed.library.Register(), S_OK);
  ComPointer<IEnumOLEVERB> verbs;
  EXPECT_EQ(placed.object->EnumVerbs(verbs.Receive()), S_OK);
  if (verbs) {
    OLEVERB verb = {};
    EXPECT_EQ(verbs->Next(1, &verb, nullptr), S_OK);
    EXPECT_EQ(verb.lVerb, OLEIVERB_PRIMARY);
    EXPECT_STREQ(verb.lpszVerbName, L"&Edit");
    EXPECT_EQ(verb.grfAttribs, static_cast<DWORD>(OLEVERBATTRIB_ONCONTAINERMENU));
    CoTaskMemFree(verb.lpszVerbName);
    EXPECT_EQ(verbs->Next(1, &verb, nullptr), S_FALSE);
  }
  EXPECT_EQ(placed.library.Unregister(), S_OK);
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
