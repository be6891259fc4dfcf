// What a screen reader speaks for the control's windows: told by the system's naming service, which
// this system may not have, so that one of the test's stands in for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <initguid.h>
#include <oleacc.h>
// clang-format on

#include <map>
#include <set>
#include <string>

#include "rules/grid_columns.h"
#include "tests/component/support/grid_text.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

// The naming service of the process, as long as it lives.
class NamingService final : public IClassFactory, public IAccPropServices {
 public:
  NamingService() {
    EXPECT_EQ(CoRegisterClassObject(CLSID_AccPropServices, static_cast<IClassFactory*>(this),
                                    CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registered_),
              S_OK);
  }
  NamingService(const NamingService&) = delete;
  NamingService& operator=(const NamingService&) = delete;
  ~NamingService() {
    EXPECT_EQ(CoRevokeClassObject(registered_), S_OK);
    EXPECT_EQ(references_, 1u);
  }

  std::wstring Name(HWND window) const { return Find(names_, window); }
  std::wstring Shortcut(HWND window) const { return Find(shortcuts_, window); }
  // Windows of which something is known.
  size_t Known() const { return names_.size() + shortcuts_.size() + items_.size(); }
  // Of an item of a list, counted from 1.
  std::wstring ItemName(HWND list, DWORD item) const {
    const auto found = items_.find({list, item});
    return found == items_.end() ? std::wstring() : found->second;
  }
  size_t KnownItems() const { return items_.size(); }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (iid == IID_IClassFactory || iid == IID_IUnknown) {
      *object = static_cast<IClassFactory*>(this);
    }
    if (iid == IID_IAccPropServices) *object = static_cast<IAccPropServices*>(this);
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override { return --references_; }
  STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** object) override {
    return QueryInterface(iid, object);
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  STDMETHODIMP SetHwndPropStr(HWND window, DWORD object, DWORD child, MSAAPROPID property,
                              LPCWSTR text) override {
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(object, static_cast<DWORD>(OBJID_CLIENT));
    if (child != static_cast<DWORD>(CHILDID_SELF)) {
      EXPECT_EQ(property, PROPID_ACC_NAME);
      items_[{window, child}] = text;
      return S_OK;
    }
    if (property == PROPID_ACC_NAME) names_[window] = text;
    if (property == PROPID_ACC_KEYBOARDSHORTCUT) shortcuts_[window] = text;
    return S_OK;
  }
  STDMETHODIMP ClearHwndProps(HWND window, DWORD, DWORD child, const MSAAPROPID* properties,
                              int count) override {
    EXPECT_TRUE(IsWindow(window));
    if (child != static_cast<DWORD>(CHILDID_SELF)) {
      items_.erase({window, child});
      return S_OK;
    }
    for (int index = 0; index < count; ++index) {
      if (properties[index] == PROPID_ACC_NAME) names_.erase(window);
      if (properties[index] == PROPID_ACC_KEYBOARDSHORTCUT) shortcuts_.erase(window);
    }
    return S_OK;
  }

  STDMETHODIMP SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                             AnnoScope) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
  STDMETHODIMP SetHwndProp(HWND, DWORD, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                 AnnoScope) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
  STDMETHODIMP SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                  AnnoScope) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
  STDMETHODIMP ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
    return E_NOTIMPL;
  }

 private:
  using Texts = std::map<HWND, std::wstring>;
  static std::wstring Find(const Texts& texts, HWND window) {
    const auto found = texts.find(window);
    return found == texts.end() ? std::wstring() : found->second;
  }

  Texts names_;
  Texts shortcuts_;
  std::map<std::pair<HWND, DWORD>, std::wstring> items_;
  DWORD registered_ = 0;
  ULONG references_ = 1;
};

class AccessibleNames : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    service_ = std::make_unique<NamingService>();
    placed_ = std::make_unique<PlacedControl>();
    placed_->container.place = {0, 0, 1300, 500};  // all columns in sight
    ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  }
  void TearDown() override {
    placed_.reset();
    service_.reset();
  }

  // What the service was told, else the window's own text, which the system speaks by itself
  // without the mark of a mnemonic.
  std::wstring Spoken(HWND window) const {
    const std::wstring told = service_->Name(window);
    if (!told.empty()) return told;
    wchar_t text[64] = L"";
    GetWindowTextW(window, text, 64);
    std::wstring own = text;
    std::erase(own, L'&');
    return own;
  }
  std::wstring Spoken(int id) const { return Spoken(placed_->Child(id)); }
  // Where the keyboard is in a list that is typed into.
  HWND TextPart(int id) const {
    return FindWindowExW(placed_->Child(id), nullptr, L"EDIT", nullptr);
  }

  std::unique_ptr<NamingService> service_;
  std::unique_ptr<PlacedControl> placed_;
};

const std::map<int, const wchar_t*> kNames = {
    {control_id::fraConfiguration, L"RDV Line Configuration"},
    {control_id::LVRDVLineConfig, L"Lines"},
    {control_id::cmbPartition, L"Partition"},
    {control_id::cmbStartingNodeName, L"Starting Node"},
    {control_id::cmbStartingNodeNumber, L"Starting Node Number"},
    {control_id::cmbVolume, L"Volume"},
    {control_id::cmbModeType, L"Mode"},
    {control_id::cmbModeNumber, L"Mode Number"},
    {control_id::cmbNISOption, L"NIS Option"},
    {control_id::txtEWTOption, L"EWT Option"},
    {control_id::cmbLineType, L"Line Type"},
    {control_id::cmbImpedance, L"Impedance"},
    {control_id::cmbSoftStop, L"Soft Stop"},
    {control_id::txtLabel, L"Label"},
    {control_id::fraDefault, L"Default values"},
    {control_id::cmbRDVType, L"Unit Type"},
    {control_id::cmdShowDefaults, L"Restore Default"},
    {control_id::cmdOK, L"OK"},
    {control_id::cmdCancel, L"Cancel"},
    {control_id::cmdApply, L"Apply"}};

TEST_F(AccessibleNames, AreThereForEveryWidget) {
  for (const auto& [id, name] : kNames) EXPECT_EQ(Spoken(id), name) << id;
  for (const int id :
       {control_id::cmbStartingNodeNumber, control_id::cmbModeNumber, control_id::cmbRDVType}) {
    ASSERT_NE(TextPart(id), nullptr) << id;
    EXPECT_EQ(Spoken(TextPart(id)), kNames.at(id)) << id;
  }
}

BOOL CALLBACK AddWindow(HWND window, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

// Whatever lies in the form, at any depth: nothing that takes the keyboard may be added unnamed.
TEST_F(AccessibleNames, AreThereForEveryWindowThatTakesTheKeyboard) {
  std::vector<HWND> windows;
  EnumChildWindows(placed_->Form(), &AddWindow, reinterpret_cast<LPARAM>(&windows));
  EXPECT_GE(windows.size(), kNames.size());
  for (const HWND window : windows) {
    wchar_t name[32] = L"";
    GetClassNameW(window, name, 32);
    if (lstrcmpiW(name, WC_HEADERW) == 0) continue;  // its columns have texts of their own
    EXPECT_NE(Spoken(window), L"") << GetDlgCtrlID(window);
  }
}

TEST_F(AccessibleNames, OfButtonsComeWithTheKeysThatPressThem) {
  for (const int id : {control_id::cmdShowDefaults, control_id::cmdCancel, control_id::cmdApply}) {
    EXPECT_THAT(service_->Shortcut(placed_->Child(id)), testing::StartsWith(L"Alt+")) << id;
  }
}

TEST_F(AccessibleNames, AreForgottenBeforeTheWindowsGo) {
  EXPECT_GT(service_->Known(), 0u);
  placed_.reset();
  EXPECT_EQ(service_->Known(), 0u);
}

TEST_F(AccessibleNames, AreForgottenWithTheWindowsOfTheContainer) {
  EXPECT_GT(service_->Known(), 0u);
  DestroyWindow(placed_->container.Window());
  EXPECT_EQ(service_->Known(), 0u);
}

class AccessibleLines : public AccessibleNames {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(AccessibleNames::SetUp());
    const BoxAnswerer boxes;  // a stored label has two quotes in a row
    ASSERT_NO_FATAL_FAILURE(Show(1));
  }

  void Show(SHORT configuration) {
    VARIANT_BOOL shown = VARIANT_FALSE;
    placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(configuration, &shown);
    ASSERT_EQ(shown, VARIANT_TRUE);
  }
  HWND Grid() const { return placed_->Child(control_id::LVRDVLineConfig); }
  int Rows() const { return static_cast<int>(SendMessageW(Grid(), LVM_GETITEMCOUNT, 0, 0)); }
  std::wstring Cell(int row, int column) const { return GridText(Grid(), row, column); }
  // As the row is seen.
  std::wstring NameOfRow(int row) const {
    const std::wstring label = Cell(row, column::kLabel);
    return L"Line " + Cell(row, column::kLine) + (label.empty() ? L"" : L", " + label);
  }
  // The row that the window lies over, from 1.
  int RowUnder(HWND window) const {
    RECT place = {};
    GetWindowRect(window, &place);
    LVHITTESTINFO hit = {};
    hit.pt = {place.left + 1, (place.top + place.bottom) / 2};
    ScreenToClient(Grid(), &hit.pt);
    SendMessageW(Grid(), LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return hit.iItem + 1;
  }

  const SiteFiles files_{"plain"};
  const SiteFolder found_{files_.Folder().u16string()};
};

TEST_F(AccessibleLines, OfRowsSayTheLineAndItsLabel) {
  ASSERT_GT(Rows(), 5);
  for (int row = 1; row <= Rows(); ++row)
    EXPECT_EQ(service_->ItemName(Grid(), static_cast<DWORD>(row)), NameOfRow(row));
  EXPECT_EQ(service_->KnownItems(), static_cast<size_t>(Rows()));
}

TEST_F(AccessibleLines, OfRowsComeBackWithTheWindows) {
  placed_->object->Close(OLECLOSE_NOSAVE);
  EXPECT_EQ(service_->KnownItems(), 0u);
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  for (int row = 1; row <= Rows(); ++row)
    EXPECT_EQ(service_->ItemName(Grid(), static_cast<DWORD>(row)), NameOfRow(row));
}

TEST_F(AccessibleLines, OfRowsGoWithThem) {
  const BoxAnswerer boxes;  // there are no partitions to name
  VARIANT_BOOL shown = VARIANT_FALSE;
  placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(99, &shown);
  EXPECT_EQ(service_->KnownItems(), static_cast<size_t>(Rows()));
  EXPECT_EQ(Rows(), 0);
}

TEST_F(AccessibleLines, OfAnEditorSayTheLineThatItLiesOver) {
  if (!CanPaint()) GTEST_SKIP() << "rows have no height here";
  SetFocus(Grid());
  const auto press = [&](WPARAM key) {
    MSG event = {};
    event.hwnd = GetFocus();
    event.message = WM_KEYDOWN;
    event.wParam = key;
    return placed_->As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)
        ->TranslateAccelerator(&event);
  };
  ASSERT_EQ(press(VK_DOWN), S_OK);
  ASSERT_EQ(press(VK_F2), S_OK);
  std::vector<std::wstring> spoken;
  for (int cell = 0; cell < 200 && GetFocus() != placed_->Child(control_id::LVRDVLineConfig);
       ++cell) {
    spoken.push_back(Spoken(GetFocus()));
    const int row = RowUnder(GetFocus());
    ASSERT_GT(row, 0) << spoken.back();
    EXPECT_THAT(spoken.back(), testing::StartsWith(L"Line " + Cell(row, column::kLine) + L", "));
    ASSERT_EQ(press(VK_TAB), S_OK);
  }
  for (const wchar_t* name :
       {L"Line 1, Partition", L"Line 1, Starting Node", L"Line 1, Volume", L"Line 1, Mode",
        L"Line 1, Label", L"Line 2, Partition", L"Line 9, Volume"}) {
    EXPECT_THAT(spoken, testing::Contains(name));
  }
  EXPECT_THAT(spoken, testing::Each(testing::StartsWith(L"Line ")));
}

}  // namespace
}  // namespace rdv::test
