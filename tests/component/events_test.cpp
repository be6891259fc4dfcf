// The event, its sinks, and hosts that let go of the control while it comes.
#include <gtest/gtest.h>

#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

class Events : public OleTest {};

// Without pending changes Cancel asks to be removed at once.
void PressCancel(PlacedControl& placed) {
  SendMessageW(placed.Child(control_id::cmdCancel), BM_CLICK, 0, 0);
}

TEST_F(Events, PressingCancelRaisesTheEvent) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  PressCancel(placed);
  EXPECT_EQ(placed.container.Events(), 1);
}

TEST_F(Events, AHostMayRemoveTheControlInsideTheEvent) {
  const Library library;
  {
    PlacedControl placed;
    placed.Verb(OLEIVERB_UIACTIVATE);
    placed.container.on_event = [&] { placed.Remove(); };
    PressCancel(placed);
    EXPECT_EQ(placed.container.Events(), 1);
    EXPECT_FALSE(placed.object);
    PumpMessages();
    EXPECT_EQ(placed.container.ReferencesLeft(), 0u);
  }
  EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST_F(Events, FrozenEventsWait) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const auto control = placed.As<IOleControl>(IID_IOleControl);
  control->FreezeEvents(TRUE);
  control->FreezeEvents(TRUE);
  PressCancel(placed);
  control->FreezeEvents(FALSE);
  EXPECT_EQ(placed.container.Events(), 0);
  control->FreezeEvents(FALSE);
  EXPECT_EQ(placed.container.Events(), 1);
}

TEST_F(Events, ADisconnectedSinkHearsNothing) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  EXPECT_EQ(placed.events->Unadvise(placed.cookie), S_OK);
  EXPECT_EQ(placed.events->Unadvise(placed.cookie), CONNECT_E_NOCONNECTION);
  PressCancel(placed);
  EXPECT_EQ(placed.container.Events(), 0);
}

TEST_F(Events, TheConnectionPointsCanBeEnumeratedDefaultFirst) {
  PlacedControl placed;
  const auto points = placed.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
  ComPointer<IEnumConnectionPoints> enumeration;
  ASSERT_EQ(points->EnumConnectionPoints(enumeration.Receive()), S_OK);
  IConnectionPoint* found[3] = {};
  ULONG count = 0;
  EXPECT_EQ(enumeration->Next(3, found, &count), S_FALSE);
  ASSERT_EQ(count, 2u);
  IID iid = {};
  found[0]->GetConnectionInterface(&iid);
  EXPECT_EQ(iid, kLineConfigEventsId);
  found[1]->GetConnectionInterface(&iid);
  EXPECT_EQ(iid, IID_IPropertyNotifySink);
  found[0]->Release();
  found[1]->Release();
}

TEST_F(Events, TheConnectionsCanBeEnumerated) {
  PlacedControl placed;
  EXPECT_EQ(placed.events->EnumConnections(nullptr), E_POINTER);
  ComPointer<IEnumConnections> enumeration;
  ASSERT_EQ(placed.events->EnumConnections(enumeration.Receive()), S_OK);
  CONNECTDATA connection = {};
  ASSERT_EQ(enumeration->Next(1, &connection, nullptr), S_OK);
  EXPECT_EQ(connection.dwCookie, placed.cookie);
  connection.pUnk->Release();
  EXPECT_EQ(enumeration->Next(1, &connection, nullptr), S_FALSE);
}

TEST_F(Events, ASinkWithoutTheEventInterfaceIsRefused) {
  PlacedControl placed;
  DWORD cookie = 7;
  EXPECT_EQ(placed.events->Advise(placed.As<IPersist>(IID_IPersist).Get(), nullptr), E_POINTER);
  ComPointer<IStream> stream;
  CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive());
  EXPECT_EQ(placed.events->Advise(stream.Get(), &cookie), CONNECT_E_CANNOTCONNECT);
  EXPECT_EQ(cookie, 0u);
}

TEST_F(Events, TheClassDescriptionNamesTheEvents) {
  PlacedControl placed;
  GUID events = {};
  const auto description = placed.As<IProvideClassInfo2>(IID_IProvideClassInfo2);
  EXPECT_EQ(description->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
  EXPECT_EQ(events, kLineConfigEventsId);
  ComPointer<ITypeInfo> type;
  EXPECT_EQ(description->GetClassInfo(type.Receive()), S_OK);
}

}  // namespace
}  // namespace rdv::test
