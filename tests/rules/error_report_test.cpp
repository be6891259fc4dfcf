#include "rules/error_report.h"

#include <gtest/gtest.h>

namespace rdv {
namespace {

const RuntimeError kFailure(5, u"Invalid procedure call or argument", u"TLV_RDV_Line_Config");

TEST(ErrorBlock, NamesDescriptionSourceAndProcedure) {
  EXPECT_EQ(ErrorBlock(kFailure, u"cmdApply_Click"),
            u"Error Description:Invalid procedure call or argument\r\n"
            u"Error Source: TLV_RDV_Line_Config - cmdApply_Click");
}

struct ProcedureRow {
  TextView procedure;
  bool on_a_line_of_its_own;
};

class CollectedBlock : public ::testing::TestWithParam<ProcedureRow> {};

TEST_P(CollectedBlock, StartsOnALineOfItsOwnOnlyForFourProcedures) {
  ControlState state;
  state.LoadErrorText = u"before";
  AppendErrorBlock(state, kFailure, GetParam().procedure);
  EXPECT_EQ(state.LoadErrorText, u"before" + Text(GetParam().on_a_line_of_its_own ? u"\r\n" : u"") +
                                     ErrorBlock(kFailure, GetParam().procedure));
}

INSTANTIATE_TEST_SUITE_P(
    AllLoaders, CollectedBlock,
    ::testing::Values(
        ProcedureRow{u"FormatLVControl", true}, ProcedureRow{u"Load_List_of_All_Card_Types", true},
        ProcedureRow{u"Load_List_of_All_Node_Names", true},
        ProcedureRow{u"Load_List_of_All_mode_Names", true},
        ProcedureRow{u"LoadLineTypeToCombo", false}, ProcedureRow{u"LoadNISOptionToCombo", false},
        ProcedureRow{u"LoadImpedanceToCombo", false}, ProcedureRow{u"LoadSoftStopToCombo", false},
        ProcedureRow{u"LoadModeNumberToCombo", false},
        ProcedureRow{u"LoadNodeNumberToCombo", false}, ProcedureRow{u"LoadDefaultRDVType", false},
        ProcedureRow{u"LoadPartitionNameToCombo", false},
        ProcedureRow{u"LoadStartingNodeToCombo", false}, ProcedureRow{u"LoadVolumeToCombo", false},
        ProcedureRow{u"LoadModeToCombo", false}, ProcedureRow{u"LoadData", false}));

TEST(Loader, ThatFailsIsFalseAndOnRecordOnce) {
  ControlState state;
  EXPECT_FALSE(RunLoader(state, u"LoadData", [] { Raise(LanguageError::InvalidUseOfNull); }));
  EXPECT_EQ(state.LoadErrorText,
            u"Error Description:Invalid use of Null\r\n"
            u"Error Source: TLV_RDV_Line_Config - LoadData");
  EXPECT_TRUE(RunLoader(state, u"LoadData", [] {}));
}

}  // namespace
}  // namespace rdv
