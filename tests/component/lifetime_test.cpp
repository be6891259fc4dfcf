// References, windows and memory: nothing stays behind.
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <psapi.h>
// clang-format on

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "tests/component/support/bare_windows.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

// How many objects of a kind can be made until the system refuses: what is in use is missing from
// it. Wine does not count the objects of a process, so that this is the way to see one that stays.
template <class Object, class Make, class Destroy>
int Room(Make make, Destroy destroy) {
  std::vector<Object> made;
  made.reserve(1 << 17);
  while (made.size() < made.capacity()) {
    const Object object = make();
    if (!object) break;
    made.push_back(object);
  }
  for (const Object object : made) destroy(object);
  return static_cast<int>(made.size());
}

// Where there are no device contexts the system does not take all objects back: nothing to count.
int RoomForGdiObjects() {
  if (!CanPaint()) return 0;
  // None of them may be shared with another: each is a region of its own.
  return Room<HRGN>([] { return CreateRectRgn(0, 0, 1, 1); }, DeleteObject);
}

int RoomForUserObjects() {
  ACCEL key = {FVIRTKEY, VK_F1, 1};
  return Room<HACCEL>([&] { return CreateAcceleratorTableW(&key, 1); }, DestroyAcceleratorTable);
}

// The system gives the lowest handle that is free.
int HandlesInUse() {
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  CloseHandle(event);
  return static_cast<int>(reinterpret_cast<INT_PTR>(event) / 4);
}

// In use in all heaps of the process: those of the control, of the platform's controls and of OLE.
// Exact, where the memory that the system counts for a process moves in steps.
SIZE_T HeapBytes() {
  HANDLE heaps[64] = {};
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  SIZE_T total = 0;
  for (DWORD index = 0; index < count; ++index) {
    HeapLock(heaps[index]);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heaps[index], &entry)) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) total += entry.cbData;
    }
    HeapUnlock(heaps[index]);
  }
  return total;
}

SIZE_T PrivateBytes() {
  PROCESS_MEMORY_COUNTERS memory = {};
  memory.cb = sizeof memory;
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
  return memory.PagefileUsage;
}

struct Usage {
  int room_for_gdi_objects;
  int room_for_user_objects;
  int handles;
  SIZE_T private_bytes;

  static Usage Now() {
    const int gdi = RoomForGdiObjects();
    const int user = RoomForUserObjects();
    return {gdi, user, HandlesInUse(), PrivateBytes()};
  }
};

BOOL CALLBACK CountChild(HWND, LPARAM total) {
  ++*reinterpret_cast<int*>(total);
  return TRUE;
}

BOOL CALLBACK CountWithChildren(HWND window, LPARAM total) {
  ++*reinterpret_cast<int*>(total);
  EnumChildWindows(window, &CountChild, total);
  return TRUE;
}

int WindowsOfThread() {
  int count = 0;
  EnumThreadWindows(GetCurrentThreadId(), &CountWithChildren, reinterpret_cast<LPARAM>(&count));
  return count;
}

class Lifetime : public OleTest {};

// Painting takes most of a round's time where the container is visible, and makes objects of its
// own: some rounds are.
void CreateShowDestroy(bool visible) {
  PlacedControl placed({.visible = visible});
  EXPECT_EQ(placed.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  VARIANT_BOOL shown = VARIANT_FALSE;
  EXPECT_EQ(placed.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown), S_OK);
  EXPECT_EQ(shown, VARIANT_TRUE);
  EXPECT_GT(SendMessageW(placed.Child(control_id::LVRDVLineConfig), LVM_GETITEMCOUNT, 0, 0), 0);
  // What is posted for later is handled, as in a program that waits for its user, and nothing of it
  // gathers.
  PumpMessages();
  placed.Remove();
  PumpMessages();
  EXPECT_EQ(placed.container.ReferencesLeft(), 0u);
}

// The windows of a control that shows a site's lines.
BareWindows LookAtWindows() {
  PlacedControl placed({.visible = false});
  EXPECT_EQ(placed.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  VARIANT_BOOL shown = VARIANT_FALSE;
  EXPECT_EQ(placed.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown), S_OK);
  return BareWindows(placed.Form());
}

constexpr int kVisibleEvery = 10;

// By how much the heaps have more in use after them.
int64_t Growth(int rounds, const std::function<void(bool visible)>& round) {
  const auto before = static_cast<int64_t>(HeapBytes());
  for (int index = 0; index < rounds; ++index) round(index % kVisibleEvery == 0);
  return static_cast<int64_t>(HeapBytes()) - before;
}

// A thousand, or as many as RDV_ROUNDS says.
int Rounds() {
  const char* rounds = std::getenv("RDV_ROUNDS");
  return rounds ? std::atoi(rounds) : 1000;
}

// A count that sees nothing would prove nothing.
TEST_F(Lifetime, TheCountsSeeWhatStays) {
  const Usage before = Usage::Now();
  const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
  const HMENU menu = CreatePopupMenu();
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  constexpr SIZE_T kBlock = 1 << 10;
  const SIZE_T heap_before = HeapBytes();
  const std::vector<std::vector<char>> blocks(4, std::vector<char>(kBlock));
  EXPECT_GE(HeapBytes(), heap_before + 4 * kBlock);
  const Usage with = Usage::Now();
  if (CanPaint()) {
    EXPECT_EQ(with.room_for_gdi_objects, before.room_for_gdi_objects - 1);
  }
  EXPECT_LT(with.room_for_user_objects, before.room_for_user_objects);
  EXPECT_GT(with.handles, before.handles);
  DeleteObject(brush);
  DestroyMenu(menu);
  CloseHandle(event);
}

TEST_F(Lifetime, AThousandRoundsLeaveNothingBehind) {
  const int rounds = Rounds();
  // Until then the platform's own stores (of painted surfaces, of fonts) still grow.
  constexpr int kWarmUp = 60;
  // Far less than one object a round. Wine's table of USER objects is that of the whole session.
  const int allowed_objects = 4 + rounds / 20;
  // Beyond what the platform's heaps keep of the same windows without a control.
  constexpr int64_t kAllowedHeapGrowth = 64 << 10;
  // What lies in no heap (pages of the system's own) is seen in the process's total alone, and that
  // moves in steps: only a leak of many pages is told from them.
  const SIZE_T allowed_growth = (SIZE_T{4} << 20) + static_cast<SIZE_T>(rounds) * (6 << 10);
  const SiteFiles files("plain");
  const SiteFolder found(files.Folder().u16string());
  const Library library;
  const BareWindows windows = LookAtWindows();
  for (int round = 0; round < kWarmUp; ++round) {
    CreateShowDestroy(true);
    windows.MakeAndDestroy(true);
  }
  const SIZE_T private_before_bare = PrivateBytes();
  const int64_t platforms_growth =
      Growth(rounds, [&](bool visible) { windows.MakeAndDestroy(visible); });
  const Usage before = Usage::Now();
  const SIZE_T platforms_pages =
      std::max(before.private_bytes, private_before_bare) - private_before_bare;
  const int windows_before = WindowsOfThread();
  const int64_t growth = Growth(rounds, CreateShowDestroy);
  const Usage after = Usage::Now();
  std::printf(
      "after %d rounds: room for GDI objects %d -> %d, for USER objects %d -> %d, handles %d -> "
      "%d, "
      "private KB %lu -> %lu (bare windows: %+ld), heap bytes %+ld (bare windows: %+ld), windows "
      "%d -> %d\n",
      rounds, before.room_for_gdi_objects, after.room_for_gdi_objects, before.room_for_user_objects,
      after.room_for_user_objects, before.handles, after.handles,
      static_cast<unsigned long>(before.private_bytes / 1024),
      static_cast<unsigned long>(after.private_bytes / 1024),
      static_cast<long>(platforms_pages / 1024), static_cast<long>(growth),
      static_cast<long>(platforms_growth), windows_before, WindowsOfThread());
  // Far less than one object a round.
  EXPECT_GE(after.room_for_gdi_objects, before.room_for_gdi_objects - allowed_objects);
  EXPECT_GE(after.room_for_user_objects, before.room_for_user_objects - allowed_objects);
  EXPECT_LE(after.handles, before.handles + allowed_objects);
  // Where the platform itself leaves something of bare windows, it leaves more of painted ones.
  const int64_t platforms_noise = platforms_growth > 0 ? int64_t{rounds} * (2 << 10) : 0;
  EXPECT_LE(growth, std::max<int64_t>(platforms_growth, 0) + platforms_noise + kAllowedHeapGrowth);
  EXPECT_LE(after.private_bytes, before.private_bytes + platforms_pages + allowed_growth);
  EXPECT_EQ(WindowsOfThread(), windows_before);
  EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST_F(Lifetime, TheLibraryCanBeUnloadedAfterTheLastRelease) {
  {
    const Library library;
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
    {
      PlacedControl placed;
      placed.Verb(OLEIVERB_INPLACEACTIVATE);
      EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
  }
  EXPECT_EQ(GetModuleHandleW(L"TLV_RDV_Line_Config.dll"), nullptr);
}

TEST_F(Lifetime, TheLibraryWorksAgainAfterItWasUnloaded) {
  for (int time = 0; time < 2; ++time) {
    PlacedControl placed;
    EXPECT_EQ(placed.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    EXPECT_TRUE(IsWindow(placed.Child(control_id::LVRDVLineConfig)));
  }
}

TEST_F(Lifetime, AFactoryLockKeepsTheLibrary) {
  const Library library;
  ComPointer<IClassFactory> factory;
  ASSERT_EQ(library.GetClassObject(kLineConfigClassId, IID_IClassFactory, factory.ReceiveUntyped()),
            S_OK);
  factory->LockServer(TRUE);
  factory.Reset();
  EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
  library.GetClassObject(kLineConfigClassId, IID_IClassFactory, factory.ReceiveUntyped());
  factory->LockServer(FALSE);
  factory.Reset();
  EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST_F(Lifetime, TheControlCanBeAggregated) {
  const Library library;
  TestContainer outer{Profile{}};
  ComPointer<IClassFactory> factory;
  ASSERT_EQ(library.GetClassObject(kLineConfigClassId, IID_IClassFactory, factory.ReceiveUntyped()),
            S_OK);
  ComPointer<IUnknown> inner;
  EXPECT_EQ(factory->CreateInstance(outer.Site(), IID_IOleObject, inner.ReceiveUntyped()),
            CLASS_E_NOAGGREGATION);
  ASSERT_EQ(factory->CreateInstance(outer.Site(), IID_IUnknown, inner.ReceiveUntyped()), S_OK);
  {
    const auto part = ComPointer<IOleObject>::From(inner.Get(), IID_IOleObject);
    ASSERT_TRUE(part);
    EXPECT_EQ(outer.ReferencesLeft(), 1u);
  }
  EXPECT_EQ(outer.ReferencesLeft(), 0u);
}

TEST_F(Lifetime, OtherClassesAreNotMade) {
  const Library library;
  ComPointer<IClassFactory> factory;
  EXPECT_EQ(library.GetClassObject(CLSID_NULL, IID_IClassFactory, factory.ReceiveUntyped()),
            CLASS_E_CLASSNOTAVAILABLE);
}

}  // namespace
}  // namespace rdv::test
