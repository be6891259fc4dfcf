// What the user has not saved belongs to the control: its windows may go and come back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/component/support/bare_windows.h"
#include "tests/component/support/interception.h"
#include "tests/component/support/loaded_control.h"
#include "tests/component/support/patched_import.h"

namespace rdv::test {
namespace {

class LastingWindows : public LoadedControl {
 protected:
  // As the user leaves them in the middle of his work.
  void Change() {
    SetText(2, column::kLabel, L"not saved");
    SelectRow(2);
    EnableWindow(placed_->Child(control_id::cmdApply), TRUE);
    types_ = SendMessageW(UnitTypes(), CB_GETCOUNT, 0, 0);
    ASSERT_GT(types_, 0);
    SendMessageW(UnitTypes(), CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(first_type_));
    texts_ = AllTexts();
    ASSERT_FALSE(texts_.empty());
  }
  void ExpectAllIsThere() {
    EXPECT_EQ(AllTexts(), texts_);
    EXPECT_EQ(SendMessageW(Grid(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED), 1);
    EXPECT_TRUE(IsWindowEnabled(placed_->Child(control_id::cmdApply)));
    EXPECT_EQ(SendMessageW(UnitTypes(), CB_GETCOUNT, 0, 0), types_);
    wchar_t first[128] = L"";
    SendMessageW(UnitTypes(), CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(first));
    EXPECT_STREQ(first, first_type_);
    // A line's own editor still has its entries and changes the line.
    Open(control_id::cmbSoftStop);
    const std::wstring before = Text(row_, column::kSoftStop);
    Press(before == L"Disabled" ? VK_DOWN : VK_UP);
    EXPECT_NE(Text(row_, column::kSoftStop), before);
  }
  HWND UnitTypes() { return placed_->Child(control_id::cmbRDVType); }
  HWND Header() { return reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0)); }

  std::vector<std::wstring> texts_;
  LRESULT types_ = 0;
  wchar_t first_type_[128] = L"";
};

TEST_F(LastingWindows, AreDestroyedByCloseAndComeBackWithAllThatTheUserHasDone) {
  PlaceAndLoad();
  Change();
  const HWND form = placed_->Form();
  ASSERT_EQ(placed_->object->Close(OLECLOSE_NOSAVE), S_OK);
  EXPECT_FALSE(IsWindow(form));
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  ExpectAllIsThere();
}

TEST_F(LastingWindows, ComeBackScrolledAsTheyWere) {
  if (!CanPaint()) GTEST_SKIP() << "rows have no height here";
  placed_->container.place = {0, 0, 800, 330};
  PlaceAndLoad();
  // As the user has drawn it.
  HDITEMW wide = {};
  wide.mask = HDI_WIDTH;
  wide.cxy = 900;
  SendMessageW(reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0)), HDM_SETITEMW,
               column::kLabel - 1, reinterpret_cast<LPARAM>(&wide));
  RECT row = {LVIR_BOUNDS, 0, 0, 0};
  SendMessageW(Grid(), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
  SendMessageW(Grid(), LVM_SCROLL, 40, 3 * (row.bottom - row.top));
  const LRESULT top = SendMessageW(Grid(), LVM_GETTOPINDEX, 0, 0);
  const int left = GetScrollPos(Grid(), SB_HORZ);
  ASSERT_EQ(top, 3);
  ASSERT_GT(left, 0);
  ASSERT_EQ(placed_->object->Close(OLECLOSE_NOSAVE), S_OK);
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  EXPECT_EQ(SendMessageW(Grid(), LVM_GETTOPINDEX, 0, 0), top);
  EXPECT_EQ(GetScrollPos(Grid(), SB_HORZ), left);
}

TEST_F(LastingWindows, ComeBackWhereTheContainerHasDestroyedThemWithItsOwn) {
  placed_->container.place_in =
      CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 1300, 500,
                      placed_->container.Window(), nullptr, nullptr, nullptr);
  PlaceAndLoad();
  Change();
  DestroyWindow(placed_->container.place_in);
  placed_->container.place_in = nullptr;
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  ExpectAllIsThere();
}

HWND destroyed_by_the_box = nullptr;

int WINAPI AnswerYesInDestroyedWindows(HWND, LPCWSTR, LPCWSTR, UINT) {
  DestroyWindow(destroyed_by_the_box);
  return IDYES;
}

// Saving begins when the box is closed; it must find what the user was asked about.
TEST_F(LastingWindows, ThatTheContainerDestroysDuringTheQuestionWhetherToSaveAreSavedAllTheSame) {
  placed_->container.place_in = destroyed_by_the_box =
      CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 1300, 500,
                      placed_->container.Window(), nullptr, nullptr, nullptr);
  PlaceAndLoad();
  Change();
  const HWND cancel = placed_->Child(control_id::cmdCancel);
  {
    const PatchedImport<decltype(AnswerYesInDestroyedWindows)> yes("MessageBoxW",
                                                                   &AnswerYesInDestroyedWindows);
    SendMessageW(GetParent(cancel), WM_COMMAND, MAKEWPARAM(control_id::cmdCancel, BN_CLICKED),
                 reinterpret_cast<LPARAM>(cancel));
  }
  placed_->container.place_in = nullptr;
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  EXPECT_EQ(AllTexts(), texts_);
  EXPECT_FALSE(IsWindowEnabled(placed_->Child(control_id::cmdApply)));
  // As it is stored.
  ASSERT_NO_FATAL_FAILURE(Load());
  EXPECT_EQ(Text(2, column::kLabel), L"not saved");
}

IOleInPlaceObject* deactivated_by_the_box = nullptr;

int WINAPI DeactivateMeanwhile(HWND, LPCWSTR, LPCWSTR, UINT) {
  deactivated_by_the_box->InPlaceDeactivate();
  return IDNO;
}

// Containers count: one that was disabled once more than enabled stays dead.
TEST_F(LastingWindows, GiveBackTheContainerThatABoxHasDisabledAlsoWhenItDeactivatesThemMeanwhile) {
  PlaceAndLoad();
  Change();
  const auto object = placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject);
  deactivated_by_the_box = object.Get();
  const HWND cancel = placed_->Child(control_id::cmdCancel);
  placed_->container.TakeCalls();
  {
    const PatchedImport<decltype(DeactivateMeanwhile)> box("MessageBoxW", &DeactivateMeanwhile);
    SendMessageW(GetParent(cancel), WM_COMMAND, MAKEWPARAM(control_id::cmdCancel, BN_CLICKED),
                 reinterpret_cast<LPARAM>(cancel));
  }
  const auto calls = placed_->container.TakeCalls();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "EnableModeless(FALSE)"), 1);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "OnInPlaceDeactivate"), 1);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "EnableModeless(TRUE)"), 1);
}

int left_calls = 0;

LRESULT CALLBACK LeftProcedure(HWND, UINT, WPARAM, LPARAM) {
  ++left_calls;
  return 0;
}

// Some containers put a procedure of their own before that of the control's window and leave it
// there.
TEST_F(LastingWindows, TakeALeftProcedureWithThem) {
  PlaceAndLoad();
  left_calls = 0;
  const HWND form = placed_->Form();
  const auto own =
      SetWindowLongPtrW(form, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&LeftProcedure));
  SetWindowLongPtrW(form, GWLP_WNDPROC, own);
  placed_->object->Close(OLECLOSE_NOSAVE);
  placed_->object->SetClientSite(nullptr);
  EXPECT_FALSE(IsWindow(form));
  PumpMessages();
  EXPECT_EQ(left_calls, 0);
}

// A program that follows all windows (a speech program, a theme) puts procedures of its own before
// theirs.
TEST_F(LastingWindows, KeepTheProceduresOfOthersToTheEnd) {
  for (const bool closes : {true, false}) {
    SCOPED_TRACE(closes ? "closed" : "let go of");
    PlaceAndLoad();
    const std::vector<HWND> windows = {Grid(), Header(), UnitTypes(),
                                       placed_->Child(control_id::cmbSoftStop)};
    std::vector<HWND> ended;
    std::vector<std::unique_ptr<Interception>> others;
    for (const HWND window : windows) {
      others.push_back(std::make_unique<Interception>(
          window, [&ended, window](UINT message, WPARAM, LPARAM, const auto& pass_on) {
            if (message == WM_NCDESTROY) ended.push_back(window);
            return pass_on();
          }));
    }
    if (closes) {
      placed_->object->Close(OLECLOSE_NOSAVE);
    } else {
      placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
      placed_->object->SetClientSite(nullptr);
      placed_->events->Unadvise(placed_->cookie);
      placed_->events.Reset();
      placed_->object.Reset();
    }
    EXPECT_THAT(ended, testing::UnorderedElementsAreArray(windows));
  }
}

// The system gives the handle of a window that is gone to another window.
TEST_F(LastingWindows, AHandleThatWasOneOfThemMeansNothingAnyMore) {
  PlaceAndLoad();
  const auto press_cancel = [this](HWND button) {
    SendMessageW(placed_->Form(), WM_COMMAND, MAKEWPARAM(control_id::cmdCancel, BN_CLICKED),
                 reinterpret_cast<LPARAM>(button));
    PumpMessages();
    return placed_->container.Events();
  };
  const HWND before = placed_->Child(control_id::cmdCancel);
  placed_->object->Close(OLECLOSE_NOSAVE);
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  ASSERT_FALSE(IsWindow(before));
  EXPECT_EQ(press_cancel(before), 0);
  EXPECT_EQ(press_cancel(placed_->Child(control_id::cmdCancel)), 1);
}

// What the library makes, by class, and in which activation context.
struct WatchedClasses {
  static inline std::map<std::wstring, int> made;
  static inline std::vector<std::wstring> without_context;
};

HWND WINAPI WatchContext(DWORD extended, LPCWSTR name, LPCWSTR text, DWORD style, int x, int y,
                         int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                         LPVOID parameter) {
  if (!IS_INTRESOURCE(name)) {
    ++WatchedClasses::made[name];
    HANDLE context = nullptr;
    if (!GetCurrentActCtx(&context) || !context) WatchedClasses::without_context.push_back(name);
    if (context) ReleaseActCtx(context);
  }
  return PatchedImport<decltype(WatchContext)>::original(extended, name, text, style, x, y, width,
                                                         height, parent, menu, instance, parameter);
}

// This program has no manifest that asks for them.
TEST_F(LastingWindows, AreOfTheCurrentCommonControlsEachTimeTheyAreMade) {
  const PatchedImport<decltype(WatchContext)> watch("CreateWindowExW", &WatchContext);
  WatchedClasses::made.clear();
  WatchedClasses::without_context.clear();
  auto& made = WatchedClasses::made;
  Load();  // before there is a place for them
  EXPECT_EQ(made[WC_LISTVIEWW], 1);
  PlaceAndLoad();
  placed_->object->Close(OLECLOSE_NOSAVE);
  Load();  // after they went
  EXPECT_EQ(made[WC_LISTVIEWW], 2);
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  placed_->object->Close(OLECLOSE_NOSAVE);
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  EXPECT_EQ(made[WC_LISTVIEWW], 3);
  EXPECT_EQ(made[L"BUTTON"], 3 * 4);
  EXPECT_GT(made[L"COMBOBOX"], 0);
  EXPECT_GT(made[L"EDIT"], 0);
  if (CanPaint()) {
    SendMessageW(Header(), WM_MOUSEMOVE, 0, MAKELPARAM(2, 2));
    EXPECT_EQ(made[TOOLTIPS_CLASSW], 1) << "long after all others, when the mouse is there";
  }
  EXPECT_THAT(WatchedClasses::without_context, testing::IsEmpty());
  HANDLE left = nullptr;
  EXPECT_TRUE(GetCurrentActCtx(&left));
  EXPECT_EQ(left, nullptr) << "the host's own windows are made as before";
}

using Context = DPI_AWARENESS_CONTEXT;

// As documented: a window never changes its awareness, and none gets a parent of another.
HWND WINAPI RefuseMixedParents(HWND child, HWND parent) {
  if (!AreDpiAwarenessContextsEqual(GetWindowDpiAwarenessContext(child),
                                    GetWindowDpiAwarenessContext(parent))) {
    SetLastError(ERROR_INVALID_STATE);
    return nullptr;
  }
  return PatchedImport<decltype(RefuseMixedParents)>::original(child, parent);
}

TEST_F(LastingWindows, AreMadeAnewUnderTheAwarenessOfTheParentThatTheyComeTo) {
  const PatchedImport<decltype(RefuseMixedParents)> refusal("SetParent", &RefuseMixedParents);
  const Context before = SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE);
  // The windows are made before there is a parent.
  ASSERT_NO_FATAL_FAILURE(Load());
  SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_SYSTEM_AWARE);
  const HWND aware = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 1300, 500,
                                     nullptr, nullptr, nullptr, nullptr);
  SetThreadDpiAwarenessContext(before);
  placed_->container.place_in = aware;
  ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_TRUE(AreDpiAwarenessContextsEqual(GetWindowDpiAwarenessContext(placed_->Form()),
                                           GetWindowDpiAwarenessContext(aware)));
  EXPECT_EQ(GetParent(placed_->Form()), aware);
  EXPECT_GT(Rows(), 0);
  EXPECT_EQ(Text(1, column::kLine), L"1");
  placed_->Remove();
  DestroyWindow(aware);
}

}  // namespace
}  // namespace rdv::test
