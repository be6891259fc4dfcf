// A row, a cell or an entry that the system does not take is an error, not a gap.
#include <gtest/gtest.h>

#include "tests/component/support/loaded_control.h"
#include "tests/component/support/patched_import.h"

namespace rdv::test {
namespace {

struct Refused {
  static inline UINT message = WM_NULL;
  static inline LRESULT answer = 0;
  static inline int count = 0;
};

LRESULT WINAPI RefuseMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == Refused::message) {
    ++Refused::count;
    return Refused::answer;
  }
  return PatchedImport<decltype(RefuseMessage)>::original(window, message, wparam, lparam);
}

struct Trial {
  const char* name;
  UINT message;
  LRESULT answer;      // of the system, where there is no memory for more
  VARIANT_BOOL shown;  // True as with any failure of a single line
};

class RefusedRows : public LoadedControl, public testing::WithParamInterface<Trial> {};

TEST_P(RefusedRows, AreTold) {
  ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  ASSERT_NO_FATAL_FAILURE(Load());
  Refused::message = GetParam().message;
  Refused::answer = GetParam().answer;
  Refused::count = 0;
  const BoxAnswerer boxes;
  VARIANT_BOOL shown = VARIANT_TRUE;
  {
    const PatchedImport<decltype(RefuseMessage)> refusal("SendMessageW", &RefuseMessage);
    placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
  }
  EXPECT_GT(Refused::count, 0);
  EXPECT_EQ(shown, GetParam().shown);
  std::wstring told;
  for (const std::wstring& text : boxes.Texts()) told += text;
  EXPECT_NE(told.find(L"Out of memory"), std::wstring::npos) << told.size();
}

INSTANTIATE_TEST_SUITE_P(Messages, RefusedRows,
                         testing::Values(Trial{"Columns", LVM_INSERTCOLUMNW, -1, VARIANT_FALSE},
                                         Trial{"Rows", LVM_INSERTITEMW, -1, VARIANT_TRUE},
                                         Trial{"Cells", LVM_SETITEMTEXTW, FALSE, VARIANT_TRUE},
                                         Trial{"Entries", CB_ADDSTRING, CB_ERRSPACE,
                                               VARIANT_FALSE}),
                         [](const auto& trial) { return std::string(trial.param.name); });

}  // namespace
}  // namespace rdv::test
