#include "rules/list_loaders.h"

#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"

namespace rdv::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Entry = std::pair<Text, int32_t>;

class Loaders : public ControlTest {
 protected:
  // The lists without the control: nothing answers a selection.
  void SetUp() override {
    ControlTest::SetUp();
    UseSite("plain");
    state.BusinessRules.ConfigID = 1;
  }

  void LoadNames() {
    ASSERT_TRUE(loaders.Load_List_of_All_Card_Types());
    ASSERT_TRUE(loaders.Load_List_of_All_Node_Names());
    ASSERT_TRUE(loaders.Load_List_of_All_mode_Names());
  }

  static std::vector<Entry> Entries(const ComboBox& list) {
    std::vector<Entry> entries;
    for (int i = 0; i < list.ListCount(); ++i) entries.emplace_back(list.List(i), list.ItemData(i));
    return entries;
  }

  static std::vector<int32_t> Codes(const ComboBox& list) {
    std::vector<int32_t> codes;
    for (int i = 0; i < list.ListCount(); ++i) codes.push_back(list.ItemData(i));
    return codes;
  }

  Text Block(TextView procedure) const {
    return u"Error Description:Invalid procedure call or argument\r\n"
           u"Error Source: TLV_RDV_Line_Config - " +
           Text(procedure);
  }

  ControlState state;
  ListLoaders loaders{form(), state};
};

TEST_F(Loaders, NameListsHoldTheEnglishNamesByCode) {
  LoadNames();
  EXPECT_EQ(state.CardTypes.Count(), 8u);
  EXPECT_EQ(state.CardTypes.Item(u"6"), u"Hybrid Line");
  EXPECT_EQ(state.NodeNames.Count(), 17u);
  EXPECT_EQ(state.NodeNames.Item(u"999"), u"None");
  EXPECT_EQ(state.ModeNames.Count(), 33u);
  EXPECT_EQ(state.ModeNames.Item(u"25"), u"Ring Count");
}

TEST_F(Loaders, CardType1IsAlwaysCalledNotInstalled) {
  LoadNames();
  EXPECT_EQ(state.CardTypes.Item(u"1"), u"Not Installed");  // "No Card" in the table
}

TEST_F(Loaders, LineType1IsCalledNotInstalledEvenWhereTheTableHasNoSuchCard) {
  CurrentSite().Execute(u"DELETE FROM SR_Card_Type_Names WHERE ID = 1");
  LoadNames();
  EXPECT_TRUE(loaders.LoadLineTypeToCombo());
  ASSERT_EQ(form().cmbLineType.ListCount(), 4);
  EXPECT_EQ(form().cmbLineType.List(0), u"Not Installed");
}

TEST_F(Loaders, NameListsAreEmptiedBeforeTheyAreFilledAgain) {
  LoadNames();
  LoadNames();
  EXPECT_EQ(state.CardTypes.Count(), 8u);
  EXPECT_EQ(state.NodeNames.Count(), 17u);
  EXPECT_EQ(state.ModeNames.Count(), 33u);
}

TEST_F(Loaders, ANullNameFailsItsNameList) {
  CurrentSite().Execute(u"UPDATE SR_Node_Type_Names SET English_Name = `n` WHERE ID = `i`",
                        {std::nullopt, u"4"});
  EXPECT_FALSE(loaders.Load_List_of_All_Node_Names());
  EXPECT_EQ(state.LoadErrorText,
            u"\r\nError Description:Invalid use of Null\r\n"
            u"Error Source: TLV_RDV_Line_Config - Load_List_of_All_Node_Names");
  EXPECT_EQ(state.NodeNames.Count(), 4u);  // 0 to 3 were there by then
}

TEST_F(Loaders, LineTypesComeInTheOrder1_6_8_5) {
  LoadNames();
  ASSERT_TRUE(loaders.LoadLineTypeToCombo());
  EXPECT_THAT(Entries(form().cmbLineType),
              ElementsAre(Entry(u"Not Installed", 1), Entry(u"Hybrid Line", 6),
                          Entry(u"MOH Line", 8), Entry(u"Impedance Line", 5)));
}

struct MissingCardTypeRow {
  TextView code;
  size_t listed_before;
};

class MissingCardType : public Loaders, public ::testing::WithParamInterface<MissingCardTypeRow> {};

TEST_P(MissingCardType, FailsTheListOfLineTypes) {
  CurrentSite().Execute(u"DELETE FROM SR_Card_Type_Names WHERE ID = `Given_ID`",
                        {Text(GetParam().code)});
  LoadNames();
  EXPECT_FALSE(loaders.LoadLineTypeToCombo());
  EXPECT_EQ(state.LoadErrorText, Block(u"LoadLineTypeToCombo"));
  EXPECT_EQ(Entries(form().cmbLineType).size(), GetParam().listed_before);
}

INSTANTIATE_TEST_SUITE_P(Codes, MissingCardType,
                         ::testing::Values(MissingCardTypeRow{u"6", 1}, MissingCardTypeRow{u"8", 2},
                                           MissingCardTypeRow{u"5", 3}));

TEST_F(Loaders, PartitionsWithoutANameOrNumbered0AreNeverOffered) {
  ASSERT_TRUE(loaders.LoadPartitionNameToCombo());
  EXPECT_THAT(Entries(form().cmbPartition),
              ElementsAre(Entry(u"Reception", 1), Entry(u"Sales", 2), Entry(u"Night service", 4)));
  EXPECT_EQ(state.PartitionList.Count(), 3u);
  EXPECT_EQ(state.PartitionList.Item(u"4"), u"Night service");
}

TEST_F(Loaders, WithPartitionsDisabledNothingAfterPartition1IsOffered) {
  state.BusinessRules.ConfigID = 2;
  ASSERT_TRUE(loaders.LoadPartitionNameToCombo());
  EXPECT_THAT(Entries(form().cmbPartition), ElementsAre(Entry(u"Only one", 1)));
  EXPECT_EQ(state.PartitionList.Count(), 1u);
}

TEST_F(Loaders, WithPartitionsDisabledANamelessPartition1EndsTheWalkToo) {
  state.BusinessRules.ConfigID = 2;
  CurrentSite().Execute(
      u"UPDATE Partition_Settings SET Name = `n` WHERE Config_ID = `c` AND PartitionID = `p`",
      {std::nullopt, u"2", u"1"});
  ASSERT_TRUE(loaders.LoadPartitionNameToCombo());
  EXPECT_THAT(Entries(form().cmbPartition), IsEmpty());
}

TEST_F(Loaders, WithoutASettingsRowPartitionsCountAsDisabled) {
  CurrentSite().Execute(u"DELETE FROM orvsettings WHERE ConfigID = `Given_ConfigID`", {u"1"});
  ASSERT_TRUE(loaders.LoadPartitionNameToCombo());
  EXPECT_THAT(Entries(form().cmbPartition), ElementsAre(Entry(u"Reception", 1)));
}

TEST_F(Loaders, OfSeveralSettingsRowsTheLastOneCounts) {
  CurrentSite().Execute(u"INSERT INTO orvsettings (ConfigID, PartitionEnabled) VALUES (`c`, `p`)",
                        {u"1", u"0"});
  ASSERT_TRUE(loaders.LoadPartitionNameToCombo());
  EXPECT_THAT(Entries(form().cmbPartition), ElementsAre(Entry(u"Reception", 1)));
}

TEST_F(Loaders, NisOptionsAreDisabledAnd1To99) {
  ASSERT_TRUE(loaders.LoadNISOptionToCombo());
  const auto entries = Entries(form().cmbNISOption);
  ASSERT_EQ(entries.size(), 100u);
  EXPECT_EQ(entries[0], Entry(u"Disabled", 0));
  for (int32_t i = 1; i <= 99; ++i) {
    EXPECT_EQ(entries[static_cast<size_t>(i)], Entry(Decimal(i), i));
  }
}

TEST_F(Loaders, ChinaIsTheLastImpedanceAndOfferedOnlyWhereImplemented) {
  ASSERT_TRUE(loaders.LoadImpedanceToCombo());
  const auto without = Entries(form().cmbImpedance);
  EXPECT_THAT(without,
              ElementsAre(Entry(u"Use Country Code", 0), Entry(u"PBX 600 ohm", 1),
                          Entry(u"North America", 2), Entry(u"Europe", 3), Entry(u"Australia", 4)));
  state.ChinaImpedanceImplemented = true;
  ASSERT_TRUE(loaders.LoadImpedanceToCombo());
  auto with = without;
  with.emplace_back(u"China", 5);
  EXPECT_EQ(Entries(form().cmbImpedance), with);
}

TEST_F(Loaders, SoftStopOffersDisabledFirst) {
  ASSERT_TRUE(loaders.LoadSoftStopToCombo());
  EXPECT_THAT(Entries(form().cmbSoftStop),
              ElementsAre(Entry(u"Disabled", 0), Entry(u"Enabled", 1)));
}

TEST_F(Loaders, ModeNumbersAre1To10WithTheFirstSelected) {
  ASSERT_TRUE(loaders.LoadModeNumberToCombo());
  const auto entries = Entries(form().cmbModeNumber);
  ASSERT_EQ(entries.size(), 10u);
  for (int32_t i = 1; i <= 10; ++i) {
    EXPECT_EQ(entries[static_cast<size_t>(i - 1)], Entry(Decimal(i), i));
  }
  EXPECT_EQ(form().cmbModeNumber.ListIndex(), 0);
}

TEST_F(Loaders, NodeNumbersAre1To999WithNothingSelected) {
  ASSERT_TRUE(loaders.LoadNodeNumberToCombo());
  const auto entries = Entries(form().cmbStartingNodeNumber);
  ASSERT_EQ(entries.size(), 999u);
  EXPECT_EQ(entries.front(), Entry(u"1", 1));
  EXPECT_EQ(entries.back(), Entry(u"999", 999));
  EXPECT_EQ(form().cmbStartingNodeNumber.ListIndex(), -1);
}

TEST_F(Loaders, StartingNodesFollowTheLineType) {
  LoadNames();
  const ComboBox& list = form().cmbStartingNodeName;
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{8}));
  EXPECT_THAT(Entries(list), ElementsAre(Entry(u"Music", 11), Entry(u"None", 999)));
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{6}));
  EXPECT_THAT(Codes(list), ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 11, 13, 15, 999));
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{5}));
  EXPECT_THAT(Codes(list), ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9, 13, 15, 999));
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{1}));
  EXPECT_THAT(Codes(list), IsEmpty());
}

TEST_F(Loaders, StartingNodesOfTheSameLineTypeKeepTheirSelection) {
  LoadNames();
  ComboBox& list = form().cmbStartingNodeName;
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{6}));
  list.SetListIndex(3);
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{6}));
  EXPECT_EQ(list.ListIndex(), 3);
}

TEST_F(Loaders, StartingNodesThatWereEmptiedAreLoadedAgain) {
  LoadNames();
  ComboBox& list = form().cmbStartingNodeName;
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{6}));
  list.Clear();
  ASSERT_TRUE(loaders.LoadStartingNodeToCombo(Code{6}));
  EXPECT_EQ(list.ListCount(), 13);
}

TEST_F(Loaders, AMissingNodeNameStopsTheListWhereItIsMissed) {
  state.NodeNames.Add(u"Message", u"0");
  EXPECT_FALSE(loaders.LoadStartingNodeToCombo(Code{6}));
  EXPECT_EQ(state.LoadErrorText, Block(u"LoadStartingNodeToCombo"));
  EXPECT_THAT(Entries(form().cmbStartingNodeName), ElementsAre(Entry(u"Message", 0)));
}

TEST_F(Loaders, VolumesOfAHybridLineAreThoseOfCardType7) {
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{6}));
  EXPECT_THAT(Entries(form().cmbVolume), ElementsAre(Entry(u"Low", 0), Entry(u"High", 128)));
  EXPECT_EQ(form().cmbVolume.ListIndex(), -1);
}

TEST_F(Loaders, VolumesOfAnImpedanceLineAreOrderedByCode) {
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{5}));
  EXPECT_THAT(Entries(form().cmbVolume),
              ElementsAre(Entry(u"Low", 0), Entry(u"3", 3), Entry(u"High", 128)));
}

TEST_F(Loaders, VolumesOfAMusicOnHoldLineBeginWith0WhichTheTableMayRepeatAsLow) {
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{8}));
  EXPECT_THAT(Entries(form().cmbVolume),
              ElementsAre(Entry(u"0", 0), Entry(u"Low", 0), Entry(u"Very low", 1), Entry(u"Low", 2),
                          Entry(u"Rather low", 3), Entry(u"Below medium", 4), Entry(u"Medium", 5),
                          Entry(u"Above medium", 6), Entry(u"Rather high", 7), Entry(u"High", 8),
                          Entry(u"Very high", 9)));
}

TEST_F(Loaders, Volume128OfAMusicOnHoldLineIsHighWhateverItsCaption) {
  UseSite("indexed");
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{8}));
  EXPECT_THAT(Entries(form().cmbVolume), ::testing::Contains(Entry(u"High", 128)));
}

TEST_F(Loaders, VolumesOfAMusicOnHoldLineBeginWith0EvenWhenTheTableHasNone) {
  CurrentSite().Execute(u"DELETE FROM SR_Card_Type_can_use_Volume WHERE Card_Type_ID = `c`",
                        {u"8"});
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{8}));
  EXPECT_THAT(Entries(form().cmbVolume), ElementsAre(Entry(u"0", 0)));
}

TEST_F(Loaders, VolumesAreEmptiedBeforeTheyAreFilledAgain) {
  LoadNames();
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{6}));
  const auto volumes = Entries(form().cmbVolume);
  ASSERT_TRUE(loaders.LoadVolumeToCombo(Code{6}));
  EXPECT_EQ(Entries(form().cmbVolume), volumes);
}

TEST_F(Loaders, ModesOfAHybridLineAreThoseOfCardType7InTheOrderOfTheTable) {
  for (const char* site : {"plain", "indexed"}) {
    UseSite(site);
    LoadNames();
    ASSERT_TRUE(loaders.LoadModeToCombo(Code{6}));
    EXPECT_THAT(Codes(form().cmbModeType), ElementsAre(1, 2, 3, 13, 24, 25, 26, 27, 32, 33))
        << site;
    ASSERT_TRUE(loaders.LoadModeToCombo(Code{8}));
    EXPECT_THAT(
        Entries(form().cmbModeType),
        ElementsAre(Entry(u"Continuous", 17), Entry(u"On Demand", 18), Entry(u"Silent", 29)))
        << site;
  }
}

TEST_F(Loaders, ModesWithoutTheirNamesFail) {
  EXPECT_FALSE(loaders.LoadModeToCombo(Code{8}));
  EXPECT_EQ(state.LoadErrorText, Block(u"LoadModeToCombo"));
}

TEST_F(Loaders, AMissingTableFailsItsLoaderOnly) {
  UseSite("broken/10-missing-table");
  EXPECT_TRUE(loaders.Load_List_of_All_Card_Types());
  EXPECT_TRUE(loaders.Load_List_of_All_Node_Names());
  EXPECT_FALSE(loaders.Load_List_of_All_mode_Names());
  EXPECT_EQ(state.ModeNames.Count(), 0u);
}

}  // namespace
}  // namespace rdv::test
