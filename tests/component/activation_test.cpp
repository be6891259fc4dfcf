// The control in containers: order of calls, place, missing parts of the container, modes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/component/support/listener.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Activation : public OleTest {};

RECT PlaceInParent(HWND window) {
  RECT place = {};
  GetWindowRect(window, &place);
  MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

TEST_F(Activation, AnswersEveryInterfaceWithOneIdentity) {
  PlacedControl placed;
  const auto identity = placed.As<IUnknown>(IID_IUnknown);
  const IID interfaces[] = {IID_IDispatch,
                            kLineConfigInterfaceId,
                            IID_IOleObject,
                            IID_IOleWindow,
                            IID_IOleInPlaceObject,
                            IID_IOleInPlaceActiveObject,
                            IID_IOleControl,
                            IID_IQuickActivate,
                            IID_IViewObject,
                            IID_IViewObject2,
                            IID_IPersist,
                            IID_IPersistStreamInit,
                            IID_IPersistPropertyBag,
                            IID_IPersistStorage,
                            IID_IObjectSafety,
                            IID_IDataObject,
                            IID_IViewObjectEx,
                            IID_ISpecifyPropertyPages,
                            IID_IConnectionPointContainer,
                            IID_IProvideClassInfo,
                            IID_IProvideClassInfo2,
                            IID_ISupportErrorInfo};
  for (const IID& iid : interfaces) {
    const auto part = placed.As<IUnknown>(iid);
    ASSERT_TRUE(part);
    EXPECT_EQ(ComPointer<IUnknown>::From(part.Get(), IID_IUnknown).Get(), identity.Get());
  }
  EXPECT_FALSE(placed.As<IUnknown>(IID_IPersistFile));
}

TEST_F(Activation, TellsTheContainerOfEachStepInOrder) {
  PlacedControl placed;
  EXPECT_EQ(placed.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("CanInPlaceActivate", "OnInPlaceActivate",
                                                        "GetWindowContext", "ShowObject"));
  const auto in_place = placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
  EXPECT_EQ(in_place->InPlaceDeactivate(), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("OnInPlaceDeactivate"));
  EXPECT_EQ(in_place->InPlaceDeactivate(), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(), IsEmpty());
}

TEST_F(Activation, TakesAndGivesBackTheKeyboard) {
  PlacedControl placed;
  EXPECT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
  auto calls = placed.container.TakeCalls();
  calls.resize(6);
  EXPECT_THAT(calls, ElementsAre("CanInPlaceActivate", "OnInPlaceActivate", "GetWindowContext",
                                 "ShowObject", "OnUIActivate", "SetActiveObject(object)"));
  EXPECT_TRUE(IsChild(placed.Form(), GetFocus()));
  PumpMessages();
  placed.container.TakeCalls();
  placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->UIDeactivate();
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("SetActiveObject(null)", "OnUIDeactivate"));
}

TEST_F(Activation, AWindowInsideThatGetsTheFocusTakesTheKeyboard) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  placed.container.TakeCalls();
  SetFocus(placed.Child(control_id::cmdOK));
  PumpMessages();
  EXPECT_THAT(placed.container.TakeCalls(),
              ElementsAre("OnUIActivate", "SetActiveObject(object)", "OnFocus(TRUE)"));
  SetFocus(placed.container.Window());
  PumpMessages();
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("OnFocus(FALSE)"));
}

TEST_F(Activation, LiesWhereTheContainerPutsIt) {
  PlacedControl placed;
  placed.container.place = {10, 20, 910, 420};
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  ASSERT_EQ(GetParent(placed.Form()), placed.container.Window());
  RECT place = PlaceInParent(placed.Form());
  EXPECT_TRUE(EqualRect(&place, &placed.container.place));
  const RECT moved = {0, 0, 1000, 500};
  placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&moved, &moved);
  place = PlaceInParent(placed.Form());
  EXPECT_TRUE(EqualRect(&place, &moved));
}

TEST_F(Activation, FramesAndGridGrowAndButtonsStayAtTheRightEdge) {
  PlacedControl placed;
  placed.container.place = {0, 0, 1000, 450};
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const RECT grid = PlaceInParent(placed.Child(control_id::LVRDVLineConfig));
  const RECT apply = PlaceInParent(placed.Child(control_id::cmdApply));
  const RECT bigger = {0, 0, 1100, 550};
  placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&bigger, &bigger);
  const RECT grid_now = PlaceInParent(placed.Child(control_id::LVRDVLineConfig));
  const RECT apply_now = PlaceInParent(placed.Child(control_id::cmdApply));
  EXPECT_EQ(grid_now.right - grid.right, 100);
  EXPECT_EQ(grid_now.bottom - grid.bottom, 100);
  EXPECT_EQ(apply_now.right - apply.right, 100);
  EXPECT_EQ(apply_now.right - apply_now.left, apply.right - apply.left);
}

BOOL CALLBACK TellOfSettings(HWND window, LPARAM container) {
  if (window != reinterpret_cast<HWND>(container)) {
    SendMessageW(window, WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
  }
  return TRUE;
}

TEST_F(Activation, FollowsTheSystemsSettingsWithoutTheContainersHelp) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const HWND button = placed.Child(control_id::cmdOK);
  const LRESULT before = SendMessageW(button, WM_GETFONT, 0, 0);
  // What the system sends to every window without a parent; the container passes nothing on.
  const auto tell = [&] {
    EnumThreadWindows(GetCurrentThreadId(), &TellOfSettings,
                      reinterpret_cast<LPARAM>(placed.container.Window()));
  };
  tell();
  EXPECT_EQ(SendMessageW(button, WM_GETFONT, 0, 0), before) << "nothing has changed";
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  NONCLIENTMETRICSW larger = metrics;
  larger.lfMessageFont.lfHeight *= 2;
  ASSERT_TRUE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof larger, &larger, 0));
  tell();
  EXPECT_NE(SendMessageW(button, WM_GETFONT, 0, 0), before);
  SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
}

TEST_F(Activation, TheListsDropDownInTheirWidths) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const TemporaryFolder nothing;
  const SiteFolder found(nothing.Path().u16string());
  const BoxAnswerer boxes;  // without a database, loading ends with a message
  VARIANT_BOOL shown = VARIANT_TRUE;
  const std::pair<int, WPARAM> widths[] = {{control_id::cmbLineType, 200},
                                           {control_id::cmbPartition, 200},
                                           {control_id::cmbStartingNodeName, 200},
                                           {control_id::cmbStartingNodeNumber, 50},
                                           {control_id::cmbVolume, 50},
                                           {control_id::cmbModeType, 200},
                                           {control_id::cmbModeNumber, 50},
                                           {control_id::cmbNISOption, 50},
                                           {control_id::cmbImpedance, 200},
                                           {control_id::cmbSoftStop, 50},
                                           {control_id::cmbRDVType, 200}};
  std::vector<int> order;
  std::vector<std::unique_ptr<Listener>> lists;
  for (const auto& each : widths) {
    const int id = each.first;
    lists.push_back(std::make_unique<Listener>(placed.Child(id)));
    lists.back()->on_message = [id, &order](UINT message) {
      if (message == CB_SETDROPPEDWIDTH) order.push_back(id);
    };
  }
  placed.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
  for (size_t index = 0; index < lists.size(); ++index) {
    const auto& [id, width] = widths[index];
    EXPECT_THAT(lists[index]->Heard(CB_SETDROPPEDWIDTH), testing::ElementsAre(width)) << id;
    EXPECT_EQ(SendMessageW(placed.Child(id), CB_GETDROPPEDWIDTH, 0, 0), static_cast<LRESULT>(width))
        << id;
    ASSERT_LT(index, order.size());
    EXPECT_EQ(order[index], id);
  }
  EXPECT_EQ(boxes.Texts().size(), 1u);
}

LONG OpenedWidth(HWND list) {
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  EXPECT_TRUE(GetComboBoxInfo(list, &parts));
  SendMessageW(list, CB_SHOWDROPDOWN, TRUE, 0);
  RECT opened = {};
  GetWindowRect(parts.hwndList, &opened);
  SendMessageW(list, CB_SHOWDROPDOWN, FALSE, 0);
  return opened.right - opened.left;
}

// Whoever sets it.
TEST_F(Activation, AListIsAsWideAsWasSetLast) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const HWND list = placed.Child(control_id::cmbRDVType);
  RECT closed = {};
  GetWindowRect(list, &closed);
  const LONG box = closed.right - closed.left;
  if (CanPaint()) {
    EXPECT_EQ(SendMessageW(list, CB_GETDROPPEDWIDTH, 0, 0), box);
    EXPECT_EQ(OpenedWidth(list), box);
  }
  for (const WPARAM width : {500u, 700u, 50u}) {
    SendMessageW(list, CB_SETDROPPEDWIDTH, width, 0);
    EXPECT_EQ(SendMessageW(list, CB_GETDROPPEDWIDTH, 0, 0), static_cast<LRESULT>(width));
    // Never narrower than its box.
    if (CanPaint()) {
      EXPECT_EQ(OpenedWidth(list), std::max(static_cast<LONG>(width), box));
    }
  }
  SendMessageW(list, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(-1), 0);  // not taken
  EXPECT_EQ(SendMessageW(list, CB_GETDROPPEDWIDTH, 0, 0), 50);
}

TEST_F(Activation, ThePartsHaveTheirCaptions) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const std::pair<int, const wchar_t*> captions[] = {
      {control_id::fraConfiguration, L"RDV Line Configuration"},
      {control_id::fraDefault, L"Default values"},
      {control_id::cmdShowDefaults, L"&Restore Default"},
      {control_id::cmdOK, L"&OK"},
      {control_id::cmdCancel, L"&Cancel"},
      {control_id::cmdApply, L"&Apply"}};
  for (const auto& [id, caption] : captions) {
    wchar_t text[64] = L"";
    GetWindowTextW(placed.Child(id), text, 64);
    EXPECT_STREQ(text, caption);
  }
}

TEST_F(Activation, SurvivesAContainerThatOffersNothing) {
  PlacedControl placed({.ambients = false, .control_site = false, .frame = false});
  EXPECT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
  PumpMessages();
  EXPECT_TRUE(IsWindowVisible(placed.Form()));
  placed.Remove();
  EXPECT_EQ(placed.container.ReferencesLeft(), 0u);
}

TEST_F(Activation, IsRefusedWithoutASite) {
  const Library library;
  const auto object = library.Create<IOleObject>(IID_IOleObject);
  EXPECT_TRUE(FAILED(object->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 0, nullptr, nullptr)));
}

TEST_F(Activation, IsRefusedWhereTheContainerDoesNotAllowIt) {
  PlacedControl placed({.allows_activation = false});
  EXPECT_TRUE(FAILED(placed.Verb(OLEIVERB_SHOW)));
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("CanInPlaceActivate"));
}

TEST_F(Activation, FailsWhereTheSystemDoesNotPutTheControlIntoTheWindow) {
  PlacedControl placed;
  for (const LONG verb : {OLEIVERB_SHOW, OLEIVERB_UIACTIVATE}) {
    ASSERT_EQ(placed.Verb(OLEIVERB_SHOW), S_OK);
    const HWND form = placed.Form();
    const HWND inside = placed.Child(control_id::cmdOK);
    placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
    ASSERT_EQ(SetParent(form, inside), nullptr);
    placed.container.TakeCalls();
    placed.container.place_in = inside;
    EXPECT_TRUE(FAILED(placed.Verb(verb)));
    EXPECT_THAT(placed.container.TakeCalls(),
                ElementsAre("CanInPlaceActivate", "OnInPlaceActivate", "GetWindowContext",
                            "OnInPlaceDeactivate"));
    EXPECT_EQ(placed.Form(), nullptr);
    EXPECT_FALSE(IsWindowVisible(form));
    placed.container.place_in = nullptr;
    EXPECT_EQ(placed.Verb(verb), S_OK);
    EXPECT_TRUE(IsWindowVisible(placed.Form()));
  }
}

TEST_F(Activation, IsNotLiveInAFormDesigner) {
  PlacedControl placed({.user_mode = false});
  EXPECT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("CanInPlaceActivate", "OnInPlaceActivate",
                                                        "GetWindowContext", "ShowObject"));
  EXPECT_FALSE(IsWindowEnabled(placed.Form()));
  VARIANT_BOOL shown = VARIANT_TRUE;
  EXPECT_EQ(placed.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown), S_OK);
  EXPECT_EQ(shown, VARIANT_FALSE);
}

TEST_F(Activation, KeepsItsWindowsBetweenTwoPlaces) {
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  const HWND form = placed.Form();
  placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
  EXPECT_TRUE(IsWindow(form));
  EXPECT_NE(GetParent(form), placed.container.Window());
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  EXPECT_EQ(placed.Form(), form);
}

TEST_F(Activation, SurvivesAContainerThatDestroysItsWindowFirst) {
  const BoxAnswerer boxes;
  PlacedControl placed;
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  DestroyWindow(placed.container.Window());
  VARIANT_BOOL shown = VARIANT_TRUE;
  const auto control = placed.As<LineConfigInterface>(kLineConfigInterfaceId);
  EXPECT_EQ(control->ShowControl(1, &shown), S_OK);
}

TEST_F(Activation, QuickActivationDoesAllInOneCall) {
  const Library library;
  TestContainer container{Profile{.ambients = false}};
  const auto quick = library.Create<IQuickActivate>(IID_IQuickActivate);
  QACONTAINER given = {};
  given.cbSize = sizeof given;
  given.pClientSite = container.Site();
  given.dwAmbientFlags = QACONTAINER_USERMODE;
  given.pUnkEventSink = container.EventSink();
  QACONTROL answer = {};
  answer.cbSize = sizeof answer;
  EXPECT_EQ(quick->QuickActivate(&given, &answer), S_OK);
  EXPECT_EQ(answer.dwMiscStatus, kMiscStatus);
  EXPECT_NE(answer.dwEventCookie, 0u);
  const auto object = ComPointer<IOleObject>::From(quick.Get(), IID_IOleObject);
  ComPointer<IOleClientSite> site;
  EXPECT_EQ(object->GetClientSite(site.Receive()), S_OK);
  EXPECT_EQ(site.Get(), container.Site());
  object->SetClientSite(nullptr);
}

TEST_F(Activation, StateLoadsAndSavesBeforeAndAfterTheSite) {
  const Library library;
  const auto state = library.Create<IPersistStreamInit>(IID_IPersistStreamInit);
  EXPECT_EQ(state->InitNew(), S_OK);
  ComPointer<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()), S_OK);
  EXPECT_EQ(state->IsDirty(), S_FALSE);
  EXPECT_EQ(state->Save(stream.Get(), TRUE), S_OK);
  STATSTG statistics = {};
  stream->Stat(&statistics, STATFLAG_NONAME);
  EXPECT_EQ(statistics.cbSize.QuadPart, 0u);
  EXPECT_EQ(state->Load(stream.Get()), S_OK);
  EXPECT_EQ(state->Load(stream.Get()), S_OK);
  CLSID class_id = {};
  EXPECT_EQ(state->GetClassID(&class_id), S_OK);
  EXPECT_EQ(class_id, kLineConfigClassId);
}

TEST_F(Activation, SizeStartsAsDesignedAndFollowsTheContainer) {
  const Library library;
  const auto object = library.Create<IOleObject>(IID_IOleObject);
  SIZEL size = {};
  EXPECT_EQ(object->GetExtent(DVASPECT_CONTENT, &size), S_OK);
  EXPECT_GT(size.cx, 20000);
  EXPECT_GT(size.cy, 8000);
  SIZEL wanted = {12345, 6789};
  EXPECT_EQ(object->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
  EXPECT_EQ(object->GetExtent(DVASPECT_CONTENT, &size), S_OK);
  EXPECT_EQ(size.cx, wanted.cx);
  EXPECT_EQ(size.cy, wanted.cy);
  EXPECT_EQ(object->SetExtent(DVASPECT_ICON, &wanted), DV_E_DVASPECT);
}

TEST_F(Activation, DrawsItselfWithoutAWindow) {
  if (!CanPaint()) GTEST_SKIP() << "nothing can be painted here";
  const Library library;
  const auto view = library.Create<IViewObject2>(IID_IViewObject2);
  const HDC screen = GetDC(nullptr);
  const HDC memory = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, 300, 150);
  SelectObject(memory, bitmap);
  PatBlt(memory, 0, 0, 300, 150, BLACKNESS);
  const RECTL bounds = {10, 10, 290, 140};
  EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, memory, &bounds, nullptr,
                       nullptr, 0),
            S_OK);
  EXPECT_EQ(GetPixel(memory, 5, 5), RGB(0, 0, 0));
  EXPECT_EQ(GetPixel(memory, 12, 12), GetSysColor(COLOR_BTNFACE));
  DeleteDC(memory);
  DeleteObject(bitmap);

  const HDC metafile = CreateEnhMetaFileW(screen, nullptr, nullptr, nullptr);
  EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, metafile, &bounds, nullptr,
                       nullptr, 0),
            S_OK);
  const HENHMETAFILE picture = CloseEnhMetaFile(metafile);
  EXPECT_GT(GetEnhMetaFileBits(picture, 0, nullptr), 1000u);
  DeleteEnhMetaFile(picture);
  ReleaseDC(nullptr, screen);
}

}  // namespace
}  // namespace rdv::test
