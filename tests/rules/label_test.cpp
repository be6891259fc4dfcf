#include <gtest/gtest.h>

#include "rules/label_validator.h"
#include "rules/text_fields.h"

namespace rdv {
namespace {

struct LabelRow {
  TextView typed;
  bool acceptable;
  TextView cleaned;
};

class LabelTable : public ::testing::TestWithParam<LabelRow> {};

TEST_P(LabelTable, IsJudgedAndCleaned) {
  const LabelRow& row = GetParam();
  EXPECT_EQ(MakeBuiltInLabelValidator()->IsAcceptable(row.typed), row.acceptable);
  EXPECT_EQ(CleanLabel(row.typed), row.cleaned);
  EXPECT_TRUE(MakeBuiltInLabelValidator()->IsAcceptable(CleanLabel(row.typed)));
}

INSTANTIATE_TEST_SUITE_P(
    Labels, LabelTable,
    ::testing::Values(LabelRow{u"", true, u""}, LabelRow{u"Front desk", true, u"Front desk"},
                      LabelRow{u"O'Brien", true, u"O'Brien"}, LabelRow{u"a'b'c", true, u"a'b'c"},
                      LabelRow{u"the \"word\" stays", false, u"the word stays"},
                      LabelRow{u"a''b", false, u"a'b"},  // two become one
                      LabelRow{u"''''", false, u"'"},    // so does any run
                      LabelRow{u"'\"'", false, u"'"},    // a double quote interrupts no run
                      LabelRow{u"''a''", false, u"'a'"}, LabelRow{u"\"\"", false, u""},
                      LabelRow{u"Линия ''受付''", false, u"Линия '受付'"}));

}  // namespace
}  // namespace rdv
