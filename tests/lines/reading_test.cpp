// show, check and compare.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/lines/lines_site.h"
#include "tests/support/link_maker.h"

namespace rdv::lines::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(Show, PrintsTheGridAlignedUnderTheCaptionsOfTheControl) {
  const Outcome shown = LinesSite().Run("show", {"3"});
  EXPECT_EQ(shown.code, 0) << shown.errors;
  EXPECT_EQ(LinesOf(shown.out).size(), 12u);
  EXPECT_EQ(LinesOf(shown.out)[0], "configuration 3");
  EXPECT_EQ(
      LinesOf(shown.out)[1],
      "Line  Line Type      Partition  Starting Node  Volume        Mode          NIS Option  "
      "EWT Option  Impedance      Soft Stop  Label");
  EXPECT_EQ(
      LinesOf(shown.out)[3],
      "2     Hybrid Line    East       Menu 20        High          Tone Group=2  Disabled    "
      "Disabled    North America  Disabled   Line 2");
  EXPECT_EQ(
      LinesOf(shown.out)[6],
      "5     Not Installed  N/A        N/A            N/A           N/A           N/A         "
      "N/A         N/A            N/A");
}

TEST(Show, TakesTheDatabaseItselfForASiteAndFindsItsSettings) {
  const LinesSite site;
  EXPECT_EQ(RunWords({"show", site.Database().string(), "1"}).out, site.Run("show", {"1"}).out);
  EXPECT_THAT(site.Run("show", {"1"}).out, HasSubstr("Very high"));
}

TEST(Show, GivesCodesBesideCaptionsInJson) {
  const Outcome shown = LinesSite().Run("show", {"1", "--json"});
  const json line = json::parse(shown.out)["configurations"][0]["lines"][1];
  EXPECT_EQ(line["line"], 2);
  EXPECT_EQ(line["startingNode"], "Queue 12");
  EXPECT_EQ(line["startingNodeType"], 2);
  EXPECT_EQ(line["startingNodeNumber"], 12);
  EXPECT_EQ(line["volume"], "Low");
  EXPECT_EQ(line["volumeCode"], 0);
  EXPECT_EQ(line["label"], "Sales – group A");
}

TEST(Show, MakesNoLinesForAUnitThatHasNone) {
  const LinesSite site;
  const std::string before = site.Bytes();
  const Outcome shown = site.Run("show", {"2"});
  EXPECT_EQ(shown.code, 0);
  EXPECT_EQ(shown.out, "configuration 2\nno lines are stored\n");
  EXPECT_EQ(site.Bytes(), before);
}

TEST(Show, RefusesAConfigurationThatTheSiteDoesNotKnow) {
  const Outcome shown = LinesSite().Run("show", {"99"});
  EXPECT_EQ(shown.code, 1);
  EXPECT_EQ(shown.errors, "rdvlines show: configuration 99 is not in the site\n");
}

TEST(EveryCommand, SaysWhichFileLacksWhat) {
  const LinesSite sound;
  const LinesSite site("broken/10-missing-table", "");
  const std::string table = site.Scratch("table.csv").string();
  ASSERT_EQ(sound.Run("export", {"-o", table}).code, 0);
  const std::vector<std::vector<std::string>> commands = {
      {"show", site.Folder()},
      {"check", site.Folder()},
      {"set", site.Folder(), "3", "1", "Volume=High"},
      {"restore", site.Folder(), "3", "4 Hybrid Lines 2 MOH Lines"},
      {"export", site.Folder()},
      {"import", site.Folder(), table},
      {"compare", sound.Folder(), site.Folder()},
      {"report", site.Folder(), "-o", site.Scratch("page.html").string()}};
  for (const std::vector<std::string>& words : commands) {
    const Outcome run = RunWords(words);
    EXPECT_EQ(run.code, 3) << words[0];
    EXPECT_EQ(run.errors, "rdvlines " + words[0] + ": '" + site.Database().string() +
                              "' cannot be used: table SR_Mode_Type_Names is missing\n");
    EXPECT_EQ(run.out, "") << words[0];
  }
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(EveryCommand, SaysWhatTellsMoreOfADamagedDatabase) {
  for (const char* damaged : {"broken/07-pointer-out-of-range", "broken/09-row-offset-outside"}) {
    const LinesSite site(damaged, "");
    const Outcome shown = site.Run("show");
    EXPECT_EQ(shown.code, 3);
    EXPECT_THAT(shown.errors, HasSubstr("; rdvsite check " + site.Database().string() +
                                        " tells what is damaged\n"));
  }
}

TEST(EveryCommand, RefusesAValueForAnOptionThatTakesNone) {
  const LinesSite site;
  for (const char* value : {"5", "no", ""}) {
    EXPECT_EQ(site.Run("check", {std::string("--json=") + value}).errors,
              "rdvlines check: '--json' takes no value (see rdvlines check --help)\n");
  }
  EXPECT_EQ(site.Run("set", {"3", "1", "Volume=High", "--dry-run=no"}).code, 2);
}

#ifndef _WIN32  // There the system reads the file, and says nothing of it.

TEST(EveryCommand, TellsOnceThatTheSettingsCannotBeRead) {
  const LinesSite site("plain", "");
  const std::filesystem::path suite = site.Database().parent_path().parent_path();
  std::filesystem::create_directory(suite / "ORVANTPlus.ini");
  const std::vector<std::string> lines = LinesOf(site.Run("check").out);
  EXPECT_THAT(lines[0], StartsWith("the site: '"));
  EXPECT_THAT(lines[0], EndsWith("ORVANTPlus.ini' is no file of settings."));
  for (size_t i = 1; i < lines.size(); ++i) {
    EXPECT_THAT(lines[i], Not(HasSubstr("ORVANTPlus.ini")));
    EXPECT_THAT(lines[i], Not(HasSubstr("which is called \"\"")));
  }
  EXPECT_EQ(LinesOf(site.Run("show", {"1"}).errors), std::vector<std::string>{lines[0]});
  EXPECT_EQ(json::parse(site.Run("check", {"--json"}).out)["findings"][0]["kind"], "settings");
}

#endif

TEST(EveryCommand, KeepsAwayFromASiteThatLiesInTwoFiles) {
  const LinesSite site("broken/10-missing-table", "");
  rdv::test::LinkMaker(site.Database().u16string())
      .Make({.name = u"SR_Mode_Type_Names",
             .database = u"names.mdb",
             .foreign_name = u"SR_Mode_Type_Names",
             .connect = {}});
  const Outcome shown = site.Run("show");
  EXPECT_EQ(shown.code, 3);
  EXPECT_THAT(shown.errors,
              HasSubstr("table SR_Mode_Type_Names lies in another file, 'names.mdb'\n"));
}

TEST(EveryCommand, SaysWhichFileHasANameThatTheControlCannotRead) {
  const LinesSite site;
  site.Execute(u"UPDATE SR_Mode_Type_Names SET English_Name = NULL WHERE ID = 2");
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"show", site.Folder()},
        std::vector<std::string>{"set", site.Folder(), "3", "1", "Volume=High"}}) {
    const Outcome run = RunWords(words);
    EXPECT_EQ(run.code, 3) << words[0];
    EXPECT_THAT(run.errors, HasSubstr("'" + site.Database().string() +
                                      "' cannot be used: Error Description:Invalid use of Null"));
  }
}

TEST(EveryCommand, SaysWhichVariableLedToAFileThatCannotBeUsed) {
  const rdv::test::TemporaryFolder empty;
  rdv::test::SetEnvironment("RDV_COMMON_APPDATA", empty.Path().string());
  const Outcome shown = RunWords({"show"});
  rdv::test::SetEnvironment("RDV_COMMON_APPDATA", "");
  EXPECT_EQ(shown.code, 3);
  EXPECT_THAT(shown.errors,
              EndsWith("\nthe environment has RDV_COMMON_APPDATA=" + empty.Path().string() + "\n"));
}

TEST(Show, SaysThatThereIsNoSite) {
  const LinesSite site;
  const Outcome shown = RunWords({"show", site.Scratch("nowhere").string()});
  EXPECT_EQ(shown.code, 3);
  EXPECT_THAT(shown.errors, HasSubstr("Could not find file '" + site.Scratch("nowhere").string()));
  const std::filesystem::path scratch = site.Scratch("").parent_path();
  EXPECT_EQ(
      RunWords({"show", scratch.string()}).errors,
      "rdvlines show: '" + scratch.string() +
          "' is a folder, and no site: there is no Tolvane/ORVANT+/Database/NewDB.mdb in it\n");
  const std::filesystem::path inside = site.Database().parent_path();
  EXPECT_THAT(RunWords({"show", inside.string()}).errors,
              EndsWith(std::filesystem::path(site.Folder()).filename().string() + "'\n"));
}

TEST(Show, TellsAUnitThatTheControlCannotShow) {
  const LinesSite site;
  site.Execute(u"UPDATE Used_Lines SET Partition_ID = 77 WHERE Config_ID = 3 AND Line = 2");
  const Outcome shown = site.Run("show", {"3"});
  EXPECT_EQ(shown.code, 1);
  EXPECT_THAT(shown.out, HasSubstr("cannot be shown whole"));
}

// One finding for each thing that is odd in configuration 4, and none for what is not.
TEST(Check, FindsEverythingOddInAUnitOfOddValues) {
  const Outcome checked = LinesSite().Run("check", {"4"});
  EXPECT_EQ(checked.code, 1);
  EXPECT_THAT(
      LinesOf(checked.out),
      ElementsAre(
          "configuration 4, line 1, Mode \"0\": is outside 1 to 10",
          "configuration 4, line 1, Soft Stop \"2\": is neither 0 nor 1; the control shows "
          "\"Disabled\"",
          "configuration 4, line 2, NIS Option \"999\": is outside 0 to 99",
          "configuration 4, line 2, EWT Option \"-1\": is below 0, and only digits can be typed",
          "configuration 4, line 3, Line Type \"7\": is none of the line types 1, 5, 6 and 8; the "
          "control shows the line as one of the type of the line before it",
          "configuration 4, line 3, Starting Node \"2\": is beyond 1, the highest number of this "
          "node type in partition 1",
          "configuration 4, line 4, Mode \"28\": is no mode of lines of type \"Hybrid Line\"",
          "configuration 4, line 5, Starting Node \"3\": is beyond 1, the highest number of this "
          "node type in partition 1",
          "configuration 4, line 5, Volume \"3\": is no volume of lines of type \"Hybrid Line\"",
          "configuration 4, line 5, Impedance \"9\": is no impedance",
          "configuration 4, line 6, Mode \"16\": is outside 1 to 10",
          "configuration 4, line 6, Impedance \"9\": is no impedance",
          "configuration 4, line 6, Soft Stop \"2\": is neither 0 nor 1; the control shows "
          "\"Disabled\"",
          "configuration 4, line 12: the first half of the music-on-hold pair, line 11, is "
          "missing, "
          "so the control does not show this one"));
}

struct Fault {
  const char* name;
  TextView change;  // of configuration 3, which has only two faults
  std::string finding;
};

class CheckFinds : public testing::TestWithParam<Fault> {};

TEST_P(CheckFinds, WhatCouldNotHaveBeenChosen) {
  const LinesSite site;
  const std::vector<std::string> before = LinesOf(site.Run("check", {"3"}).out);
  ASSERT_EQ(before.size(), 2u);
  ASSERT_GT(site.Execute(GetParam().change), 0);
  const Outcome checked = site.Run("check", {"3"});
  EXPECT_EQ(checked.code, 1);
  EXPECT_THAT(LinesOf(checked.out), Contains("configuration 3" + GetParam().finding));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, CheckFinds,
    testing::Values(
        Fault{"Partition",
              u"UPDATE Used_Lines SET Partition_ID = 9 WHERE Config_ID = 3 AND Line = 1 "
              u"AND Base_Slot_No = 1",
              ", line 1, Partition \"9\": is no partition that this unit offers"},
        Fault{
            "PartitionCaption",
            u"UPDATE Used_Lines SET Partition_Name = 'South' WHERE Config_ID = 3 AND Line = 1 AND "
            u"Base_Slot_No = 1",
            ", line 1, Partition \"South\": does not belong to the code, which is called "
            "\"North\""},
        Fault{"UndefinedNodeType",
              u"UPDATE Used_Lines SET Starting_Node_Type_ID = 77 WHERE Config_ID = 3 AND Line = 1 "
              u"AND Base_Slot_No = 1",
              ", line 1, Starting Node \"77\": is no node type that is defined"},
        Fault{
            "NodeTypeOfAnotherLineType",
            u"UPDATE Used_Lines SET Starting_Node_Type_ID = 5 WHERE Config_ID = 3 AND Line = 1 AND "
            u"Base_Slot_No = 1",
            ", line 1, Starting Node \"5\": is no starting node of lines of type \"Hybrid Line\""},
        Fault{"NodeCaption",
              u"UPDATE Used_Lines SET Starting_Node_Caption = 'Menu 10' WHERE Config_ID = 3 AND "
              u"Line = 1 AND Base_Slot_No = 1",
              ", line 1, Starting Node \"Menu 10\": does not belong to the code, which is called "
              "\"Message 10\""},
        Fault{"VolumeOfMusic",
              u"UPDATE Used_Lines SET Volume_ID = 10 WHERE Config_ID = 3 AND Line = 9",
              ", line 9, Volume \"10\": is no volume of lines of type \"MOH Line\""},
        Fault{"VolumeCaption",
              u"UPDATE Used_Lines SET Volume_Name = 'Low' WHERE Config_ID = 3 AND Line = 2 AND "
              u"Base_Slot_No = 1",
              ", line 2, Volume \"Low\": does not belong to the code, which is called \"High\""},
        Fault{"UndefinedMode",
              u"UPDATE Used_Lines SET Mode_Type_ID = 99 WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Mode \"99\": is no mode that is defined"},
        Fault{"ModeOfAnotherCard",
              u"UPDATE Used_Lines SET Mode_Type_ID = 17 WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Mode \"17\": is no mode of lines of type \"Hybrid Line\""},
        Fault{"ModeNumber",
              u"UPDATE Used_Lines SET Mode_Ring_Number = 11 WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Mode \"11\": is outside 1 to 10"},
        Fault{"ModeCaption",
              u"UPDATE Used_Lines SET Mode_Caption = 'Ring=2' WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Mode \"Ring=2\": does not belong to the code, which is called "
              "\"Tone Group=2\""},
        Fault{"OptionOfMusic",
              u"UPDATE Used_Lines SET NIS_Option = 5 WHERE Config_ID = 3 AND Line = 9",
              ", line 9, NIS Option \"5\": lines of type \"MOH Line\" have none"},
        Fault{"Impedance", u"UPDATE Used_Lines SET Impedance = -1 WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Impedance \"-1\": is no impedance"},
        Fault{"NullNumber",
              u"UPDATE Used_Lines SET Mode_Type_ID = NULL WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Mode \"\": is empty, and the control cannot show a line without it"},
        Fault{"Label",
              u"UPDATE Used_Lines SET Description = \"a''b\" WHERE Config_ID = 3 AND Line = 2",
              ", line 2, Label \"a''b\": the rules make \"a'b\" of it"},
        Fault{"NotInstalled",
              u"UPDATE Used_Lines SET Volume_ID = 128 WHERE Config_ID = 3 AND Line = 5",
              ", line 5, Volume \"128\": a line that is not installed has \"0\" here"},
        Fault{"SecondHalfMissing", u"DELETE FROM Used_Lines WHERE Config_ID = 3 AND Line = 10",
              ", line 9: the second half of the music-on-hold pair, line 10, is missing"},
        Fault{"FirstHalfMissing", u"DELETE FROM Used_Lines WHERE Config_ID = 3 AND Line = 11",
              ", line 12: the first half of the music-on-hold pair, line 11, is missing, so the "
              "control does not show this one"},
        Fault{"HalvesDiffer",
              u"UPDATE Used_Lines SET Volume_ID = 5 WHERE Config_ID = 3 AND Line = 10",
              ", line 10, Volume \"5\": differs from \"6\" in the first half of the pair, line 9"},
        Fault{"LabelsOfHalvesDiffer",
              u"UPDATE Used_Lines SET Description = 'zz' WHERE Config_ID = 3 AND Line = 10",
              ", line 10, Label \"zz\": differs from \"\" in the first half of the pair, line 9, "
              "and no box shows it"}),
    [](const auto& fault) { return std::string(fault.param.name); });

// Without a highest number of its own a node type keeps the number that the line had before.
TEST(Check, HoldsANodeNumberWithoutAMaximumAgainstAllListsOfTheUnit) {
  const LinesSite site;
  site.Execute(u"UPDATE Node_Type_Max SET Max_Number = 20 WHERE Config_ID = 3");
  site.Execute(u"DELETE FROM Node_Type_Max WHERE Config_ID = 3 AND NodeType_ID = 1");
  const auto found_with = [&](const Text& number) {
    site.Execute(u"UPDATE Used_Lines SET Starting_Node_Number = " + number +
                 u", Starting_Node_Caption = 'Menu " + number +
                 u"' WHERE Config_ID = 3 AND Line = 2 AND Base_Slot_No = 1 AND Slot_Offset = 1");
    return LinesOf(site.Run("check", {"3"}).out);
  };
  EXPECT_THAT(found_with(u"20"), Not(Contains(HasSubstr("line 2"))));
  EXPECT_THAT(found_with(u"21"),
              Contains("configuration 3, line 2, Starting Node \"21\": is beyond 20, the highest "
                       "number of any list of this unit"));
  site.Execute(u"UPDATE Node_Type_Max SET Max_Number = 1 WHERE Config_ID = 3");
  EXPECT_THAT(found_with(u"2"), Not(Contains(HasSubstr("line 2"))));
}

TEST(Check, SaysThatAUnitCannotBeShownAndWhichLineKeepsItFromIt) {
  const LinesSite site;
  site.Execute(u"UPDATE Used_Lines SET Partition_ID = 9 WHERE Config_ID = 3 AND Line = 1");
  const std::vector<std::string> lines = LinesOf(site.Run("check", {"3"}).out);
  EXPECT_THAT(lines[0], StartsWith("configuration 3: the control cannot show the unit: "));
  EXPECT_THAT(lines, Contains("configuration 3, line 1, Partition \"9\": is no partition that this "
                              "unit offers"));
}

TEST(Check, FindsALineThatALoadLeavesOut) {
  const LinesSite site;
  // A line that is not installed is keyed by its number, the others by how many there were before.
  site.Execute(u"DELETE FROM Used_Lines WHERE Config_ID = 3 AND Line = 3");
  site.Execute(u"UPDATE Used_Lines SET LineType = 6 WHERE Config_ID = 3 AND Line = 6");
  const std::string found = site.Run("check", {"3"}).out;
  EXPECT_THAT(LinesOf(found),
              Contains("configuration 3, line 6: the control does not show this line"));
}

TEST(Check, FindsANumberThatNoLineOfAUnitHas) {
  for (const char16_t* number : {u"0", u"-3", u"13"}) {
    const LinesSite site;
    site.Execute(Text(u"UPDATE Used_Lines SET Line = ") + number +
                 u" WHERE Config_ID = 3 AND Line = 1 AND Base_Slot_No = 1");
    const std::string shown = ToUtf8(number);
    EXPECT_THAT(
        site.Run("check", {"3"}).out,
        HasSubstr(", Line \"" + shown + "\": is no line of a unit, which has lines 1 to 12\n"));
  }
}

TEST(Check, FindsANumberThatNoUnitHas) {
  const LinesSite site;
  site.Execute(u"UPDATE Used_Lines SET Config_ID = -4 WHERE Config_ID = 3 AND Base_Slot_No = 1");
  EXPECT_THAT(LinesOf(site.Run("check").out),
              Contains("configuration -4: is no number of a unit, which are 1 to 32767"));
}

// A choice for several selected lines goes into those of this type, too, whose own row opens no
// list for it.
TEST(Check, FindsNothingInAnImpedanceThatWasChosenForSeveralLinesAtOnce) {
  const LinesSite site;
  const std::string before = site.Run("check", {"1"}).out;
  site.Execute(
      u"UPDATE Used_Lines SET Impedance = 3, SoftStop = 1 WHERE Config_ID = 1 AND Line = 6 AND "
      u"Base_Slot_No = 1 AND Slot_Offset = 1");
  EXPECT_EQ(site.Run("check", {"1"}).out, before);
}

TEST(Check, GivesEachFindingOneLineWhateverItsLabelHolds) {
  const LinesSite site;
  site.Execute(
      u"UPDATE Used_Lines SET Description = 'a \"b\"\nc\x1B[31m\u202Ed' "
      u"WHERE Config_ID = 3 AND Line = 1 AND Base_Slot_No = 1");
  const Outcome check = site.Run("check", {"3"});
  for (const std::string& line : LinesOf(check.out))
    EXPECT_THAT(line, StartsWith("configuration 3"));
  EXPECT_THAT(check.out, HasSubstr("the rules make"));
  EXPECT_THAT(check.out, Not(HasSubstr("\x1B")));
  EXPECT_THAT(check.out, Not(HasSubstr("\u202E")));
}

TEST(Compare, TellsOfNoLineThatOnlyOneHasWhereAUnitIsNotShownWhole) {
  const LinesSite sound;
  const LinesSite odd;
  odd.Execute(u"UPDATE Used_Lines SET Mode_Type_ID = 999 WHERE Config_ID = 3 AND Line = 1");
  const Outcome compared = sound.Run("compare", {odd.Folder()});
  EXPECT_EQ(compared.code, 1);
  EXPECT_THAT(compared.out, Not(HasSubstr("only in the")));
  EXPECT_THAT(compared.errors, HasSubstr("configuration 3 cannot be shown whole"));
}

TEST(Check, OffersChinaOnlyWhereTheSettingsSaySo) {
  EXPECT_THAT(LinesSite("plain", "ini-china").Run("check", {"1"}).out, Not(HasSubstr("China")));
  EXPECT_THAT(LinesSite("plain", "ini-nochina").Run("check", {"1"}).out,
              HasSubstr("configuration 1, line 4, Impedance \"5\": China is not offered at this "
                        "site"));
}

TEST(Check, FindsNothingInAUnitWhoseCellsWereChosen) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "2", "Starting Node=Menu 10"}).code, 0);
  ASSERT_EQ(site.Run("set", {"3", "3", "Starting Node=Queue 1"}).code, 0);
  const Outcome checked = site.Run("check", {"3"});
  EXPECT_EQ(checked.code, 0);
  EXPECT_EQ(checked.out, "");
}

TEST(Check, GivesFindingsInJson) {
  const json document = json::parse(LinesSite().Run("check", {"1", "4", "--json"}).out);
  EXPECT_EQ(document["configurations"], 2);
  const json& finding = document["findings"][1];
  EXPECT_EQ(finding["configuration"], 1);
  EXPECT_EQ(finding["line"], 6);
  EXPECT_EQ(finding["column"], "Volume");
  EXPECT_EQ(finding["kind"], "volume");
  EXPECT_EQ(finding["value"], "3");
}

TEST(Check, ChangesNothing) {
  const LinesSite site;
  const std::string before = site.Bytes();
  site.Run("check");
  EXPECT_EQ(site.Bytes(), before);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Compare, FindsNothingBetweenASiteAndItsCopy) {
  const LinesSite left;
  const LinesSite right;
  const Outcome compared = RunWords({"compare", left.Folder(), right.Folder()});
  EXPECT_EQ(compared.code, 0) << compared.out;
  EXPECT_EQ(compared.out, "");
}

TEST(Compare, TellsCellsLinesAndUnitsApart) {
  const LinesSite left;
  const LinesSite right;
  right.Execute(
      u"UPDATE Used_Lines SET NIS_Option = 7 WHERE Config_ID = 1 AND Line = 2 AND "
      u"Base_Slot_No = 1 AND Slot_Offset = 1");
  right.Execute(u"DELETE FROM Used_Lines WHERE Config_ID = 1 AND Line = 8");
  right.Execute(u"DELETE FROM Used_Lines WHERE Config_ID = 3 AND Base_Slot_No = 1");
  // Two partitions of one name: what is seen is the same, what is stored is not.
  for (const LinesSite* site : {&left, &right}) {
    site->Execute(
        u"UPDATE Partition_Settings SET Name = 'Ward A' WHERE Config_ID = 4 AND "
        u"PartitionID = 3");
  }
  right.Execute(u"UPDATE Used_Lines SET Partition_ID = 3 WHERE Config_ID = 4 AND Line = 1");
  const Outcome compared = RunWords({"compare", left.Folder(), right.Folder()});
  EXPECT_EQ(compared.code, 1);
  EXPECT_THAT(LinesOf(compared.out),
              ElementsAre("configuration 1, line 2, NIS Option: \"5\" | \"7\"",
                          "configuration 1, line 8: only in the first site",
                          "configuration 3: only in the first site",
                          "configuration 4, line 1, Partition: \"Ward A (1)\" | \"Ward A (3)\""));
  const json document =
      json::parse(RunWords({"compare", left.Folder(), right.Folder(), "--json"}).out);
  EXPECT_EQ(document["differences"][0]["second"], "7");
  EXPECT_EQ(document["differences"][2]["in"], "first");
}

}  // namespace
}  // namespace rdv::lines::test
