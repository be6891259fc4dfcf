// References, windows and memory: nothing stays behind.
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on

#include <cstdio>
#include <cstdlib>

#include "tests/component/ole_test.h"
#include "tests/component/placed_control.h"
#include "widgets/win32/control_ids.h"

namespace rdv::test {
namespace {

struct Usage {
  DWORD gdi_objects;
  DWORD user_objects;
  DWORD handles;
  SIZE_T private_bytes;

  static Usage Now() {
    PROCESS_MEMORY_COUNTERS memory = {};
    memory.cb = sizeof memory;
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS),
            GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS), handles, memory.PagefileUsage};
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

void CreateShowDestroy() {
  // The window stays hidden: some desktops take seconds to show one.
  PlacedControl placed({.visible = false});
  placed.Verb(OLEIVERB_INPLACEACTIVATE);
  VARIANT_BOOL shown = VARIANT_FALSE;
  placed.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
  placed.Remove();
  EXPECT_EQ(placed.container.ReferencesLeft(), 0u);
}

// A thousand, or as many as RDV_ROUNDS says.
int Rounds() {
  const char* rounds = std::getenv("RDV_ROUNDS");
  return rounds ? std::atoi(rounds) : 1000;
}

TEST_F(Lifetime, AThousandRoundsLeaveNothingBehind) {
  const int rounds = Rounds();
  constexpr int kWarmUp = 20;
  constexpr SIZE_T kAllowedGrowth = 4 << 20;  // of the process's heaps, that keep what is freed
  const BoxAnswerer boxes;
  const Library library;
  for (int round = 0; round < kWarmUp; ++round) CreateShowDestroy();
  const Usage before = Usage::Now();
  const int windows_before = WindowsOfThread();
  for (int round = 0; round < rounds; ++round) CreateShowDestroy();
  const Usage after = Usage::Now();
  std::printf(
      "after %d rounds: GDI objects %lu -> %lu, USER objects %lu -> %lu, handles %lu -> %lu, "
      "private KB %lu -> %lu, windows %d -> %d\n",
      rounds, before.gdi_objects, after.gdi_objects, before.user_objects, after.user_objects,
      before.handles, after.handles, static_cast<unsigned long>(before.private_bytes / 1024),
      static_cast<unsigned long>(after.private_bytes / 1024), windows_before, WindowsOfThread());
  EXPECT_LE(after.gdi_objects, before.gdi_objects + 2);
  EXPECT_LE(after.user_objects, before.user_objects + 2);
  EXPECT_LE(after.handles, before.handles + 2);
  EXPECT_LE(after.private_bytes, before.private_bytes + kAllowedGrowth);
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
