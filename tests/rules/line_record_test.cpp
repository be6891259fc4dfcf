#include "rules/line_record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rules/line_templates.h"

namespace rdv {
namespace {

RowCells NumberedCells() {
  RowCells cells;
  for (int column = 1; column <= kColumnCount; ++column) cells[column] = u"c" + Decimal(column);
  return cells;
}

TEST(LineRecord, TakesCodesFromHiddenColumnsAndNamesFromCaptionsInTheOrderOfTheParameters) {
  const LineArguments arguments = LineArgumentsOf(NumberedCells(), 321, u"7");
  EXPECT_THAT(arguments,
              ::testing::ElementsAre(u"c12", u"c2", u"c13", u"c3", u"c4", u"c14", u"c5", u"c15",
                                     u"c6", u"c7", u"c20", u"c16", u"c17", u"7", u"c1", u"c8",
                                     u"c9", u"0", u"0", u"0", u"321", u"1", u"1", u"c10"));
}

TEST(LineRecord, HoldsAnArgumentForEveryParameterOfBothLineCommands) {
  EXPECT_EQ(DefinitionOf(Command::Update_All_Lines).parameters.size(),
            std::tuple_size_v<LineArguments>);
  EXPECT_EQ(DefinitionOf(Command::Insert_All_Lines).parameters.size(),
            std::tuple_size_v<LineArguments>);
}

struct OptionRow {
  TextView shown;
  TextView stored;
};

class StoredOption : public ::testing::TestWithParam<OptionRow> {};

TEST_P(StoredOption, IsZeroForDisabledAndNotApplicableInAnyCase) {
  RowCells cells = NumberedCells();
  cells[column::kNISOption] = GetParam().shown;
  cells[column::kEWTOption] = GetParam().shown;
  const LineArguments arguments = LineArgumentsOf(cells, 1, u"0");
  EXPECT_EQ(arguments[11], GetParam().stored);
  EXPECT_EQ(arguments[12], GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(Captions, StoredOption,
                         ::testing::Values(OptionRow{u"Disabled", u"0"},
                                           OptionRow{u"DISABLED", u"0"},
                                           OptionRow{u"disabled", u"0"}, OptionRow{u"N/A", u"0"},
                                           OptionRow{u"n/a", u"0"}, OptionRow{u"15", u"15"},
                                           OptionRow{u"007", u"007"}, OptionRow{u"", u""},
                                           OptionRow{u"-1", u"-1"}));

TEST(NotInstalledLine, HasNodeType999AndNodeNumberMinus1AndNothingElseToShow) {
  const RowCells cells = NotInstalledCells(u"5");
  const std::array<TextView, kColumnCount> expected = {
      u"1",   u"1",   u"999", u"-1",  u"0",   u"1",   u"1",   u"0",   u"0", u"5", u"Not Installed",
      u"N/A", u"N/A", u"N/A", u"N/A", u"N/A", u"N/A", u"N/A", u"N/A", u""};
  for (int column = 1; column <= kColumnCount; ++column) {
    EXPECT_EQ(cells[column], expected[static_cast<size_t>(column - 1)]) << "column " << column;
  }
}

}  // namespace
}  // namespace rdv
