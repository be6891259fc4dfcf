// What containers of other times and kinds ask and pass.
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <objsafe.h>
// clang-format on

#include <cstddef>
#include <cstring>

#include "tests/component/support/bare_windows.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/patched_import.h"
#include "tests/component/support/placed_control.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

class OlderContainers : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    placed_ = std::make_unique<PlacedControl>();
  }
  void TearDown() override { placed_.reset(); }

  std::unique_ptr<PlacedControl> placed_;
};

TEST_F(OlderContainers, ActivateQuicklyWithTheShorterStructures) {
  const auto quick = placed_->As<IQuickActivate>(IID_IQuickActivate);
  QACONTAINER container = {};
  container.cbSize = offsetof(QACONTAINER, pBindHost) + sizeof container.pBindHost;
  container.pClientSite = placed_->container.Site();
  container.dwAmbientFlags = QACONTAINER_USERMODE;
  QACONTROL control;
  std::memset(&control, 0x55, sizeof control);
  control.cbSize = offsetof(QACONTROL, dwPropNotifyCookie) + sizeof control.dwPropNotifyCookie;
  const ULONG size = control.cbSize;
  ASSERT_EQ(quick->QuickActivate(&container, &control), S_OK);
  EXPECT_EQ(control.cbSize, size);
  EXPECT_NE(control.dwMiscStatus, 0u);
  // What the caller has not room for is not written.
  EXPECT_EQ(control.dwPointerActivationPolicy, 0x55555555u);
  control.cbSize = size - 1;
  EXPECT_EQ(quick->QuickActivate(&container, &control), E_INVALIDARG);
  control.cbSize = size;
  container.cbSize -= 1;
  EXPECT_EQ(quick->QuickActivate(&container, &control), E_INVALIDARG);
}

TEST_F(OlderContainers, AreToldThatUntrustedDataIsSafeAndNothingElse) {
  const auto safety = placed_->As<IObjectSafety>(IID_IObjectSafety);
  ASSERT_TRUE(safety);
  DWORD supported = 0;
  DWORD enabled = 0;
  for (const IID& iid : {IID_IPersistStreamInit, IID_IPersistPropertyBag}) {
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(iid, &supported, &enabled), S_OK);
    EXPECT_EQ(supported, static_cast<DWORD>(INTERFACESAFE_FOR_UNTRUSTED_DATA));
    EXPECT_EQ(enabled, supported);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(iid, INTERFACESAFE_FOR_UNTRUSTED_DATA,
                                                INTERFACESAFE_FOR_UNTRUSTED_DATA),
              S_OK);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(iid, INTERFACESAFE_FOR_UNTRUSTED_CALLER,
                                                INTERFACESAFE_FOR_UNTRUSTED_CALLER),
              E_FAIL);
  }
  for (const IID& iid : {IID_IDispatch, kLineConfigInterfaceId}) {
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(iid, &supported, &enabled), S_OK);
    EXPECT_EQ(supported, 0u);
    for (const DWORD option : std::initializer_list<DWORD>{INTERFACESAFE_FOR_UNTRUSTED_CALLER,
                                                           INTERFACESAFE_FOR_UNTRUSTED_DATA})
      EXPECT_EQ(safety->SetInterfaceSafetyOptions(iid, option, option), E_FAIL);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(iid, INTERFACESAFE_FOR_UNTRUSTED_CALLER, 0), S_OK);
  }
  EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IStorage, &supported, &enabled), E_NOINTERFACE);
  EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IStorage, 0, 0), E_NOINTERFACE);
}

// Documents and worksheets embed what `OleCreate` makes: with a storage, and a picture of it.
TEST_F(OlderContainers, KeepAPictureOfTheControlInAStorage) {
  const auto storage = placed_->As<IPersistStorage>(IID_IPersistStorage);
  ASSERT_TRUE(storage);
  ComPointer<IStorage> place;
  ComPointer<ILockBytes> bytes;
  ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Receive()), S_OK);
  ASSERT_EQ(
      StgCreateDocfileOnILockBytes(bytes.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                                   0, place.Receive()),
      S_OK);
  EXPECT_EQ(storage->InitNew(place.Get()), S_OK);
  EXPECT_EQ(storage->IsDirty(), S_FALSE);
  EXPECT_EQ(storage->Save(place.Get(), TRUE), S_OK);
  EXPECT_EQ(storage->SaveCompleted(nullptr), S_OK);
  EXPECT_EQ(storage->HandsOffStorage(), S_OK);
  EXPECT_EQ(storage->Load(place.Get()), S_OK);
  EXPECT_EQ(storage->Load(static_cast<IStorage*>(nullptr)), E_POINTER);

  const auto data = placed_->As<IDataObject>(IID_IDataObject);
  ASSERT_TRUE(data);
  ComPointer<IEnumFORMATETC> formats;
  ASSERT_EQ(data->EnumFormatEtc(DATADIR_GET, formats.Receive()), S_OK);
  FORMATETC format = {};
  int given = 0;
  while (formats->Next(1, &format, nullptr) == S_OK) {
    EXPECT_EQ(data->QueryGetData(&format), S_OK);
    if (!CanPaint()) continue;
    STGMEDIUM medium = {};
    EXPECT_EQ(data->GetData(&format, &medium), S_OK) << format.cfFormat;
    EXPECT_EQ(medium.tymed, format.tymed);
    EXPECT_NE(medium.hGlobal, nullptr);
    ReleaseStgMedium(&medium);
    ++given;
  }
  EXPECT_EQ(given, CanPaint() ? 3 : 0);
  format.cfFormat = CF_TEXT;
  STGMEDIUM none = {};
  EXPECT_EQ(data->GetData(&format, &none), DV_E_FORMATETC);
}

int WINAPI ResolveTwice(HDC context, int index) {
  const int value = PatchedImport<decltype(ResolveTwice)>::original(context, index);
  return index == LOGPIXELSX || index == LOGPIXELSY ? 2 * value : value;
}

// The system's resolution need not be that of the screen's millimetres, which measure the frame.
TEST_F(OlderContainers, GetAMetafileThatFillsItsFrameWhateverTheResolution) {
  if (!CanPaint()) GTEST_SKIP() << "nothing can be painted here";
  const auto data = placed_->As<IDataObject>(IID_IDataObject);
  FORMATETC format = {CF_ENHMETAFILE, nullptr, DVASPECT_CONTENT, -1, TYMED_ENHMF};
  STGMEDIUM medium = {};
  {
    const PatchedImport<decltype(ResolveTwice)> resolution("GetDeviceCaps", &ResolveTwice);
    ASSERT_EQ(data->GetData(&format, &medium), S_OK);
  }
  ENHMETAHEADER header = {};
  ASSERT_NE(GetEnhMetaFileHeader(medium.hEnhMetaFile, sizeof header, &header), 0u);
  ReleaseStgMedium(&medium);
  const RECTL& frame = header.rclFrame;
  EXPECT_NEAR(header.rclBounds.right - header.rclBounds.left,
              MulDiv(frame.right - frame.left, header.szlDevice.cx, 100 * header.szlMillimeters.cx),
              3);
  EXPECT_NEAR(header.rclBounds.bottom - header.rclBounds.top,
              MulDiv(frame.bottom - frame.top, header.szlDevice.cy, 100 * header.szlMillimeters.cy),
              3);
}

TEST_F(OlderContainers, AreToldThatThereAreNoPropertyPagesAndThatThePictureHidesWhatIsBehind) {
  const auto pages = placed_->As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
  ASSERT_TRUE(pages);
  CAUUID list = {7, nullptr};
  EXPECT_EQ(pages->GetPages(&list), S_OK);
  EXPECT_EQ(list.cElems, 0u);
  EXPECT_EQ(list.pElems, nullptr);
  const auto view = placed_->As<IViewObjectEx>(IID_IViewObjectEx);
  ASSERT_TRUE(view);
  DWORD status = 0;
  EXPECT_EQ(view->GetViewStatus(&status), S_OK);
  EXPECT_EQ(status, static_cast<DWORD>(VIEWSTATUS_OPAQUE));
  const RECT bounds = {10, 10, 20, 20};
  DWORD hit = 0;
  EXPECT_EQ(view->QueryHitPoint(DVASPECT_CONTENT, &bounds, {15, 15}, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_HIT));
  EXPECT_EQ(view->QueryHitPoint(DVASPECT_CONTENT, &bounds, {25, 15}, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_OUTSIDE));
}

// The events' interface, and the object's own dispatch interface beside it.
class Sink final : public IDispatch {
 public:
  explicit Sink(IDispatch* own) : own_(own) {}
  virtual ~Sink() = default;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (iid == IID_IDispatch) {
      *object = own_;
    } else if (iid == IID_IUnknown || iid == kLineConfigEventsId) {
      *object = static_cast<IDispatch*>(this);
    }
    return *object ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    ++events;
    return S_OK;
  }

  int events = 0;

 private:
  IDispatch* const own_;
};

TEST_F(OlderContainers, GetEventsOnTheInterfaceThatTheyWereConnectedBy) {
  Sink own(nullptr);
  Sink sink(&own);
  DWORD cookie = 0;
  ASSERT_EQ(placed_->events->Advise(static_cast<IDispatch*>(&sink), &cookie), S_OK);
  placed_->Verb(OLEIVERB_UIACTIVATE);
  SendMessageW(placed_->Child(control_id::cmdCancel), BM_CLICK, 0, 0);
  EXPECT_EQ(sink.events, 1);
  EXPECT_EQ(own.events, 0);
  placed_->events->Unadvise(cookie);
}

}  // namespace
}  // namespace rdv::test
