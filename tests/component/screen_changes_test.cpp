// The control on a screen that changes under it: its resolution, its colours, its theme.
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <string>

#include "tests/component/support/listener.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/component/support/strict_host.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

constexpr int kUsual = 96;
constexpr int kLarge = 144;

// Plays screens of any resolution: as long as it lives, all windows of the process are told the
// one that was set. One screen cannot be given another resolution while programs run.
class Screens {
 public:
  Screens() : function_(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")) {
    dots_ = kUsual;
    auto* code = reinterpret_cast<BYTE*>(reinterpret_cast<INT_PTR>(function_));
    if (!code) return;
    // The function's beginning becomes: rax (eax) = Answer; jump there.
    std::array<BYTE, 12> jump = {};
    size_t size = 0;
    if (sizeof(void*) == 8) jump[size++] = 0x48;
    jump[size++] = 0xB8;
    const auto answer = reinterpret_cast<INT_PTR>(&Answer);
    std::memcpy(&jump[size], &answer, sizeof answer);
    size += sizeof answer;
    jump[size++] = 0xFF;
    jump[size++] = 0xE0;
    std::memcpy(before_.data(), code, before_.size());
    Write(code, jump.data(), size);
  }
  Screens(const Screens&) = delete;
  Screens& operator=(const Screens&) = delete;
  ~Screens() {
    auto* code = reinterpret_cast<BYTE*>(reinterpret_cast<INT_PTR>(function_));
    if (code) Write(code, before_.data(), before_.size());
  }
  bool Played() const { return function_ != nullptr; }
  void Set(int dots) { dots_ = static_cast<UINT>(dots); }

 private:
  static UINT WINAPI Answer(HWND) { return dots_; }
  static void Write(BYTE* code, const BYTE* bytes, size_t size) {
    DWORD protection = 0;
    ASSERT_TRUE(VirtualProtect(code, size, PAGE_EXECUTE_READWRITE, &protection));
    std::memcpy(code, bytes, size);
    VirtualProtect(code, size, protection, &protection);
    FlushInstructionCache(GetCurrentProcess(), code, size);
  }

  static inline UINT dots_ = kUsual;
  const FARPROC function_;
  std::array<BYTE, 12> before_ = {};
};

// What grows with the resolution, in pixels.
std::map<std::string, int> Measures(PlacedControl& placed) {
  std::map<std::string, int> measures;
  const std::array<std::pair<int, const char*>, 7> windows = {
      {{control_id::fraConfiguration, "frame of the lines"},
       {control_id::LVRDVLineConfig, "grid"},
       {control_id::fraDefault, "frame of the defaults"},
       {control_id::cmdShowDefaults, "Restore"},
       {control_id::cmdOK, "OK"},
       {control_id::cmdCancel, "Cancel"},
       {control_id::cmdApply, "Apply"}}};
  for (const auto& [id, name] : windows) {
    RECT place = {};
    GetWindowRect(placed.Child(id), &place);
    MapWindowPoints(nullptr, placed.Form(), reinterpret_cast<POINT*>(&place), 2);
    measures[std::string(name) + ": left"] = place.left;
    measures[std::string(name) + ": top"] = place.top;
    measures[std::string(name) + ": right"] = place.right;
    measures[std::string(name) + ": bottom"] = place.bottom;
  }
  const HWND grid = placed.Child(control_id::LVRDVLineConfig);
  const HWND header = reinterpret_cast<HWND>(SendMessageW(grid, LVM_GETHEADER, 0, 0));
  const auto columns = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  for (int column = 0; column < columns; ++column) {
    measures["column " + std::to_string(column)] =
        static_cast<int>(SendMessageW(grid, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0));
  }
  RECT row = {};
  row.left = LVIR_BOUNDS;
  SendMessageW(grid, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
  measures["row"] = row.bottom - row.top;
  for (const auto& [id, name] : {std::pair{control_id::cmbRDVType, "list of the unit types"},
                                 std::pair{control_id::cmbVolume, "list of the volumes"}}) {
    measures[name] = static_cast<int>(SendMessageW(placed.Child(id), CB_GETDROPPEDWIDTH, 0, 0));
  }
  // Without device contexts the system's font is of no resolution.
  if (!CanPaint()) return measures;
  for (const auto& [id, name] : {std::pair{control_id::cmdOK, "font of the buttons"},
                                 std::pair{control_id::LVRDVLineConfig, "font of the grid"},
                                 std::pair{control_id::cmbRDVType, "font of the unit type"}}) {
    LOGFONTW font = {};
    const auto handle = reinterpret_cast<HFONT>(SendMessageW(placed.Child(id), WM_GETFONT, 0, 0));
    EXPECT_NE(GetObjectW(handle, sizeof font, &font), 0) << name;
    measures[name] = std::abs(font.lfHeight);
  }
  return measures;
}

class Resolution : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    if (!screens_.Played()) GTEST_SKIP() << "this system knows one resolution for all windows";
    files_ = std::make_unique<SiteFiles>("plain");
    found_ = std::make_unique<SiteFolder>(files_->Folder().u16string());
    placed_ = std::make_unique<PlacedControl>();
    placed_->container.place = At(kUsual);
    ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    VARIANT_BOOL shown = VARIANT_FALSE;
    placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
    ASSERT_EQ(shown, VARIANT_TRUE);
    usual_ = Measures(*placed_);
  }
  void TearDown() override {
    placed_.reset();
    found_.reset();
    files_.reset();
  }

  static RECT At(int dots) { return {0, 0, 980 * dots / kUsual, 420 * dots / kUsual}; }

  void MoveTo(const RECT& place) {
    placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&place, &place);
  }

  void ExpectLarge() {
    const auto large = Measures(*placed_);
    ASSERT_EQ(large.size(), usual_.size());
    for (const auto& [name, pixels] : large) {
      const double expected = 1.0 * usual_[name] * kLarge / kUsual;
      EXPECT_NEAR(pixels, expected, 1) << name;
    }
  }

  Screens screens_;
  std::unique_ptr<SiteFiles> files_;
  std::unique_ptr<SiteFolder> found_;
  std::unique_ptr<PlacedControl> placed_;
  std::map<std::string, int> usual_;
};

TEST_F(Resolution, MayHaveChangedBetweenTwoActivations) {
  placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
  screens_.Set(kLarge);
  placed_->container.place = At(kLarge);
  ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  ExpectLarge();
}

TEST_F(Resolution, MayChangeWithTheSizeAndNothingElseSaid) {
  screens_.Set(kLarge);
  MoveTo(At(kLarge));
  ExpectLarge();
}

TEST_F(Resolution, MayChangeBeforeTheSizeDoes) {
  screens_.Set(kLarge);
  SendMessageW(placed_->Form(), WM_DPICHANGED_AFTERPARENT, 0, 0);
  EXPECT_NEAR(Measures(*placed_)["row"], 1.5 * usual_["row"], 1);
  MoveTo(At(kLarge));
  ExpectLarge();
}

// Typed text stands in the middle of its box, whatever is left above and below a line of it.
TEST_F(Resolution, LeavesTypedTextInTheMiddle) {
  if (!CanPaint()) GTEST_SKIP() << "fonts have no height here";
  for (const int dots : {kUsual, 120, kLarge, 192}) {
    screens_.Set(dots);
    MoveTo(At(dots));
    COMBOBOXINFO parts = {};
    parts.cbSize = sizeof parts;
    const HWND box = placed_->Child(control_id::cmbRDVType);
    ASSERT_TRUE(GetComboBoxInfo(box, &parts));
    RECT text = {};
    GetWindowRect(parts.hwndItem, &text);
    MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&text), 2);
    const LONG above = text.top - parts.rcItem.top;
    const LONG below = parts.rcItem.bottom - text.bottom;
    EXPECT_GE(above, 0) << dots;
    EXPECT_GE(below, above) << dots;
    EXPECT_LE(below, above + 1) << dots;
    const HDC context = GetDC(parts.hwndItem);
    SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(parts.hwndItem, WM_GETFONT, 0, 0)));
    TEXTMETRICW metrics = {};
    GetTextMetricsW(context, &metrics);
    ReleaseDC(parts.hwndItem, context);
    EXPECT_EQ(text.bottom - text.top, metrics.tmHeight) << dots;
  }
}

// The text part is lower than its box: nobody else paints the strips above and below it.
TEST_F(Resolution, LeavesNoGapsAroundTypedText) {
  if (!CanPaint()) GTEST_SKIP() << "nothing is painted here";
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  const HWND box = placed_->Child(control_id::cmbRDVType);
  ASSERT_TRUE(GetComboBoxInfo(box, &parts));
  const RECT& area = parts.rcItem;
  RECT text = {};
  GetWindowRect(parts.hwndItem, &text);
  MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&text), 2);
  ASSERT_LT(area.top, text.top);
  const HDC context = GetDC(box);
  PatBlt(context, area.left, area.top, area.right - area.left, area.bottom - area.top, BLACKNESS);
  RedrawWindow(box, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
  int gaps = 0;
  for (int y = area.top; y < area.bottom; ++y) {
    if (y >= text.top && y < text.bottom) continue;
    for (int x = area.left; x < area.right; ++x) {
      if (GetPixel(context, x, y) != GetSysColor(COLOR_WINDOW)) ++gaps;
    }
  }
  ReleaseDC(box, context);
  EXPECT_EQ(gaps, 0);
}

TEST_F(Resolution, LeavesNoTraceWhenItComesBack) {
  for (const int dots : {kLarge, 120, 192, kUsual}) {
    screens_.Set(dots);
    MoveTo(At(dots));
  }
  EXPECT_EQ(Measures(*placed_), usual_);
}

class Colours : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    placed_ = std::make_unique<PlacedControl>();
    ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    grid_ = placed_->Child(control_id::LVRDVLineConfig);
    header_ = reinterpret_cast<HWND>(SendMessageW(grid_, LVM_GETHEADER, 0, 0));
  }
  void TearDown() override { placed_.reset(); }

  COLORREF OfGrid(UINT message) const {
    return static_cast<COLORREF>(SendMessageW(grid_, message, 0, 0));
  }

  std::unique_ptr<PlacedControl> placed_;
  HWND grid_ = nullptr;
  HWND header_ = nullptr;
};

// A contrast theme, as long as it lives.
class SystemColors {
 public:
  explicit SystemColors(const std::map<int, COLORREF>& colors) {
    for (const auto& [element, color] : colors) before_[element] = GetSysColor(element);
    Set(colors);
  }
  SystemColors(const SystemColors&) = delete;
  SystemColors& operator=(const SystemColors&) = delete;
  ~SystemColors() { Set(before_); }

 private:
  static void Set(const std::map<int, COLORREF>& colors) {
    for (const auto& [element, color] : colors) SetSysColors(1, &element, &color);
  }

  std::map<int, COLORREF> before_;
};

TEST_F(Colours, OfTheSystemAreFollowedWithoutTheContainersHelp) {
  const COLORREF before = GetSysColor(COLOR_WINDOW);
  ASSERT_EQ(OfGrid(LVM_GETBKCOLOR), before);
  {
    const SystemColors contrast(
        {{COLOR_WINDOW, RGB(1, 2, 3)}, {COLOR_WINDOWTEXT, RGB(250, 251, 252)}});
    PumpMessages();
    ASSERT_EQ(GetSysColor(COLOR_WINDOW), RGB(1, 2, 3));
    EXPECT_EQ(OfGrid(LVM_GETBKCOLOR), RGB(1, 2, 3));
    EXPECT_EQ(OfGrid(LVM_GETTEXTBKCOLOR), RGB(1, 2, 3));
    EXPECT_EQ(OfGrid(LVM_GETTEXTCOLOR), RGB(250, 251, 252));
  }
  PumpMessages();
  EXPECT_EQ(OfGrid(LVM_GETBKCOLOR), before);
}

// A container that proposes colours, as forms designers do: an OLE colour with the highest bit set
// names one of the system's.
class ProposedColours : public OleTest {
 protected:
  static constexpr OLE_COLOR kSystem = 0x80000000;

  void Place(OLE_COLOR background, OLE_COLOR text) {
    host_ = std::make_unique<StrictHost>(
        Offers{.interfaces = {"IOleInPlaceSite", "IOleControlSite", "IDispatch"},
               .ambients = {{DISPID_AMBIENT_USERMODE, true},
                            {DISPID_AMBIENT_BACKCOLOR, static_cast<LONG>(background)},
                            {DISPID_AMBIENT_FORECOLOR, static_cast<LONG>(text)}}});
    host_->container.Misbehave([](const std::string&) { return std::nullopt; });
    host_->object->SetClientSite(host_->container.Site());
    ASSERT_EQ(host_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  }
  void TearDown() override {
    if (!host_) return;
    host_->object->Close(OLECLOSE_NOSAVE);
    host_->object->SetClientSite(nullptr);
    host_.reset();
  }

  COLORREF Background() const {
    const auto brush = reinterpret_cast<HBRUSH>(SendMessageW(host_->Form(), WM_CTLCOLORBTN, 0, 0));
    LOGBRUSH description = {};
    EXPECT_NE(GetObjectW(brush, sizeof description, &description), 0);
    return description.lbColor;
  }

  // In the picture of the frame around the lines, caption and all.
  bool FrameShows(COLORREF color) const {
    const HWND frame = host_->Child(control_id::fraConfiguration);
    RECT area = {};
    GetClientRect(frame, &area);
    const HDC screen = GetDC(nullptr);
    const HDC context = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, area.right, kCaptionHeight);
    const HGDIOBJ before = SelectObject(context, bitmap);
    PatBlt(context, 0, 0, area.right, kCaptionHeight, WHITENESS);
    SendMessageW(frame, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(context), PRF_CLIENT);
    bool shows = false;
    for (int x = 0; x < area.right && !shows; ++x) {
      for (int y = 0; y < kCaptionHeight && !shows; ++y) shows = GetPixel(context, x, y) == color;
    }
    SelectObject(context, before);
    DeleteObject(bitmap);
    DeleteDC(context);
    ReleaseDC(nullptr, screen);
    return shows;
  }

  std::unique_ptr<StrictHost> host_;

 private:
  static constexpr int kCaptionHeight = 16;
};

TEST_F(ProposedColours, OfTheSystemAreFollowed) {
  ASSERT_NO_FATAL_FAILURE(Place(kSystem | COLOR_INFOBK, kSystem | COLOR_INFOTEXT));
  const COLORREF before = GetSysColor(COLOR_INFOBK);
  EXPECT_EQ(Background(), before);
  {
    const SystemColors contrast({{COLOR_INFOBK, RGB(1, 2, 3)}, {COLOR_INFOTEXT, RGB(250, 9, 250)}});
    PumpMessages();
    EXPECT_EQ(Background(), RGB(1, 2, 3));
    if (CanPaint()) {
      EXPECT_TRUE(FrameShows(RGB(250, 9, 250)));
    }
  }
  PumpMessages();
  EXPECT_EQ(Background(), before);
  if (CanPaint()) {
    EXPECT_FALSE(FrameShows(RGB(250, 9, 250)));
  }
}

TEST_F(ProposedColours, ThatAreFixedStay) {
  ASSERT_NO_FATAL_FAILURE(Place(RGB(10, 20, 30), RGB(200, 9, 200)));
  const SystemColors contrast({{COLOR_BTNFACE, RGB(1, 2, 3)}, {COLOR_BTNTEXT, RGB(250, 9, 250)}});
  PumpMessages();
  EXPECT_EQ(Background(), RGB(10, 20, 30));
  if (CanPaint()) {
    EXPECT_TRUE(FrameShows(RGB(200, 9, 200)));
  }
}

TEST_F(ProposedColours, ThatDoNotExistAreTheSystemsOwn) {
  ASSERT_NO_FATAL_FAILURE(Place(kSystem | 0xEE, kSystem | 0xEE));
  EXPECT_EQ(Background(), GetSysColor(COLOR_BTNFACE));
}

// Common controls hear of colours from their parents only.
TEST_F(Colours, AreAnnouncedToGridAndHeader) {
  const Listener grid(grid_);
  const Listener header(header_);
  SendMessageW(placed_->Form(), WM_SYSCOLORCHANGE, 0, 0);
  EXPECT_FALSE(grid.Heard(WM_SYSCOLORCHANGE).empty());
  EXPECT_FALSE(header.Heard(WM_SYSCOLORCHANGE).empty());
  SendMessageW(placed_->Form(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
  EXPECT_FALSE(grid.Heard(WM_SETTINGCHANGE).empty());
  EXPECT_FALSE(header.Heard(WM_SETTINGCHANGE).empty());
}

// The system tells each window of a new theme itself; a list view takes the theme's colours then.
TEST_F(Colours, AreSetAnewWithATheme) {
  SendMessageW(grid_, LVM_SETBKCOLOR, 0, RGB(9, 9, 9));
  SendMessageW(grid_, LVM_SETTEXTCOLOR, 0, RGB(8, 8, 8));
  for (const HWND window : {placed_->Form(), placed_->Child(control_id::fraConfiguration),
                            placed_->Child(control_id::fraDefault), grid_}) {
    ValidateRect(window, nullptr);
  }
  SendMessageW(placed_->Form(), WM_THEMECHANGED, 0, 0);
  EXPECT_EQ(OfGrid(LVM_GETBKCOLOR), GetSysColor(COLOR_WINDOW));
  EXPECT_EQ(OfGrid(LVM_GETTEXTCOLOR), GetSysColor(COLOR_WINDOWTEXT));
  if (!CanPaint()) return;
  for (const HWND window : {placed_->Form(), placed_->Child(control_id::fraConfiguration),
                            placed_->Child(control_id::fraDefault), grid_}) {
    EXPECT_TRUE(GetUpdateRect(window, nullptr, FALSE)) << GetDlgCtrlID(window);
  }
}

}  // namespace
}  // namespace rdv::test
