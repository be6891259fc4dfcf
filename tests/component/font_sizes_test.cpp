// The control in fonts of other sizes: those of containers, and that of the system when it changes.
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include "tests/component/support/listener.h"
#include "tests/component/support/loaded_control.h"
#include "tests/component/support/patched_import.h"
#include "tests/component/support/strict_host.h"

namespace rdv::test {
namespace {

SIZE Extent(HWND window, const std::wstring& text) {
  const HDC context = GetDC(window);
  SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)));
  SIZE extent = {};
  GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &extent);
  ReleaseDC(window, context);
  return extent;
}

SIZE Room(HWND window) {
  RECT area = {};
  GetClientRect(window, &area);
  return {area.right, area.bottom};
}

class FontSizes : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    if (!CanPaint()) GTEST_SKIP() << "fonts have no height here";
  }
  void TearDown() override {
    if (!host_) return;
    host_->object->Close(OLECLOSE_NOSAVE);
    host_->object->SetClientSite(nullptr);
    host_.reset();
    font_.Reset();
  }

  void PlaceInFontOf(int points) {
    OLECHAR face[] = L"Tahoma";
    FONTDESC description = {sizeof(FONTDESC), face,  {},    FW_NORMAL,
                            DEFAULT_CHARSET,  FALSE, FALSE, FALSE};
    description.cySize.int64 = points * 10000;
    ASSERT_EQ(OleCreateFontIndirect(&description, IID_IDispatch, font_.ReceiveUntyped()), S_OK);
    host_ = std::make_unique<StrictHost>(
        Offers{.interfaces = {"IOleInPlaceSite", "IOleControlSite", "IDispatch"},
               .ambients = {{DISPID_AMBIENT_USERMODE, true}, {DISPID_AMBIENT_FONT, font_.Get()}}});
    host_->container.Misbehave([](const std::string&) { return std::nullopt; });
    host_->object->SetClientSite(host_->container.Site());
    ASSERT_EQ(host_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  }

  void ExpectRoomForTheCaptions(int points) {
    for (const int id : {control_id::cmdShowDefaults, control_id::cmdOK, control_id::cmdCancel,
                         control_id::cmdApply}) {
      const HWND button = host_->Child(id);
      wchar_t text[64] = L"";
      GetWindowTextW(button, text, 64);
      const SIZE extent = Extent(button, text);
      EXPECT_GE(extent.cy, points);
      EXPECT_GT(Room(button).cy, extent.cy) << id << ", " << points << " points";
      EXPECT_GT(Room(button).cx, extent.cx) << id << ", " << points << " points";
    }
  }
  void ExpectRoomForTheTextsOfEditors(int points) {
    for (const int id :
         {control_id::cmbRDVType, control_id::cmbPartition, control_id::cmbStartingNodeNumber}) {
      COMBOBOXINFO parts = {};
      parts.cbSize = sizeof parts;
      ASSERT_TRUE(GetComboBoxInfo(host_->Child(id), &parts));
      EXPECT_GE(parts.rcItem.bottom - parts.rcItem.top, Extent(host_->Child(id), L"X").cy)
          << id << ", " << points << " points";
    }
    for (const int id : {control_id::txtLabel, control_id::txtEWTOption}) {
      EXPECT_GE(Room(host_->Child(id)).cy, Extent(host_->Child(id), L"X").cy)
          << id << ", " << points << " points";
    }
  }
  void ExpectRoomInTheGrid(int points) {
    const HWND grid = host_->Child(control_id::LVRDVLineConfig);
    const int line = Extent(grid, L"X").cy;
    const auto header = reinterpret_cast<HWND>(SendMessageW(grid, LVM_GETHEADER, 0, 0));
    EXPECT_GT(Room(header).cy, line) << points << " points";
    LVCOLUMNW column = {};
    SendMessageW(grid, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    LVITEMW item = {};
    SendMessageW(grid, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    RECT place_of_row = {LVIR_BOUNDS, 0, 0, 0};
    SendMessageW(grid, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&place_of_row));
    const LONG row = place_of_row.bottom - place_of_row.top;
    RECT editor = {};
    GetWindowRect(host_->Child(control_id::txtLabel), &editor);
    EXPECT_GT(row, editor.bottom - editor.top) << points << " points";
    // The frame's caption stands above it.
    RECT place = {};
    GetWindowRect(grid, &place);
    MapWindowPoints(nullptr, GetParent(grid), reinterpret_cast<POINT*>(&place), 2);
    EXPECT_GE(place.top, line) << points << " points";
  }

  ComPointer<IDispatch> font_;
  std::unique_ptr<StrictHost> host_;
};

TEST_F(FontSizes, OfAnyContainerCutNothing) {
  for (const int points : {8, 14, 28}) {
    ASSERT_NO_FATAL_FAILURE(PlaceInFontOf(points));
    ExpectRoomForTheCaptions(points);
    ExpectRoomForTheTextsOfEditors(points);
    ExpectRoomInTheGrid(points);
    TearDown();
  }
}

class ChangedSettings : public LoadedControl {};

// Programs announce settings of all kinds, at any time.
TEST_F(ChangedSettings, LeaveAnOpenEditorAloneWhereTheFontIsTheSame) {
  PlaceAndLoad();
  Open(control_id::cmbSoftStop);
  const HWND editor = placed_->Child(control_id::cmbSoftStop);
  const Listener heard(editor);
  SendMessageW(placed_->Form(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"intl"));
  PumpMessages();
  EXPECT_TRUE(heard.Heard(WM_SETFONT).empty());
  EXPECT_TRUE(heard.Heard(WM_WINDOWPOSCHANGING).empty());
  EXPECT_TRUE(heard.Heard(WM_SHOWWINDOW).empty());
  EXPECT_EQ(Focus(), control_id::cmbSoftStop);
}

// A user who has chosen larger texts.
using Parameters = BOOL WINAPI(UINT, UINT, PVOID, UINT);
BOOL WINAPI LargerTexts(UINT what, UINT size, PVOID value, UINT change) {
  const BOOL done = PatchedImport<Parameters>::original(what, size, value, change);
  if (done && what == SPI_GETNONCLIENTMETRICS)
    static_cast<NONCLIENTMETRICSW*>(value)->lfMessageFont.lfHeight *= 3;
  return done;
}

TEST_F(ChangedSettings, OfTheFontAreFollowed) {
  if (!CanPaint()) GTEST_SKIP() << "fonts have no height here";
  PlaceAndLoad();
  const HWND apply = placed_->Child(control_id::cmdApply);
  const SIZE before = Room(apply);
  {
    const PatchedImport<Parameters> larger("SystemParametersInfoW", &LargerTexts);
    SendMessageW(placed_->Form(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
    EXPECT_GT(Room(apply).cy, before.cy);
    EXPECT_GT(Room(apply).cy, Extent(apply, L"Apply").cy);
  }
  SendMessageW(placed_->Form(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
  EXPECT_EQ(Room(apply).cy, before.cy);
}

}  // namespace
}  // namespace rdv::test
